/* A severe message ends the run: what the program displayed, the call chain, the message with its
 * closing line, and SIGABRT. Its data were given no value: blanks are no packed decimal. */
#include "lvd4.h"

#include <string.h>

static uint8_t total[4]; /* S9(7) PACKED-DECIMAL */

static void display(const char *text) {
    DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = (uint32_t)strlen(text), .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "FAILURE",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    _zorPgmInit(&pcb);
    memset(total, ' ', sizeof total);
    display("ADD 1 TO TOTAL");
    _zorcBCD_ADD_Pckd_Int4(total, 7, 1);
    display("not reached");
    _zorPgmTerm(&pcb);
    return 0;
}

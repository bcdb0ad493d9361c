/* Messages from generated code: a text for the program itself, severities changed by flags, data
 * that the library finds fault with, and the warning that ERRCOUNT does not allow any more. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "MSGS",
                  .namelen = 4,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    char text[80];
    uint8_t packed[3];

    _zorPgmInit(&pcb);
    /* The text alone, without number and severity; nothing is written, counted or ended. */
    _zorWriteERRmsg(96, MESSAGE_RETURN_TEXT, text, (uint32_t)sizeof text, "PAYROLL");
    printf("returned: %s\n", text);
    fflush(stdout);

    /* Severity 2 in the catalogue, here information: the run goes on. */
    _zorWriteERRmsg(39, MESSAGE_INFORMATIONAL);

    /* A warning of the library's: a separate sign that is none. */
    _zorcBCD_CONV_ZndTS_To_Pckd((const uint8_t *)"123 ", packed, 3, 3);
    printf("it counts as positive: %02X%02X\n", packed[0], packed[1]);
    fflush(stdout);

    /* The second warning under ERRCOUNT=2 ends the run. */
    _zorcBCD_CONV_ZndTS_To_Pckd((const uint8_t *)"123 ", packed, 3, 3);
    printf("not reached\n");
    return 0;
}

/* A program that has nothing but the installed library. */
#include "lvd4.h"

#include <stdio.h>

int main(void) {
    static const uint8_t one[] = {0x1C};
    static IPCB ipcb[1];
    static PCB pcb = {.level = {5, 1, 1},
                      .ipcb = ipcb,
                      .name = "CONSUMER",
                      .namelen = 8,
                      .century = PCB_NO_CENTURY_WINDOW};
    uint8_t sum[1];
    _zorPgmInit(&pcb);
    _zorcBCD_ADD_Pckd(one, one, sum, 1, 1, 1);
    printf("%02X\n", sum[0]);
    _zorWriteERRmsg(40, MESSAGE_INFORMATIONAL); /* its text is found from the library's place */
    _zorPgmTerm(&pcb);
    return 0;
}

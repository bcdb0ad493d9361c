/* ACCEPT: records and lines from SYSIN, the end of the file, and the date registers. accept.env
 * asks for lines; settings.md shows what the records of ACCEPT=OLD would be. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

/* ACCEPT item: 1, or 0 at the end of the file. The library leaves the item as it was when nothing
 * was read: a value put there ahead, which no line holds, tells. An empty line reads nothing too,
 * but does not stand at the end of the stream. */
static int acceptLine(char *item, int32_t length) {
    _zorcMoveFigConst(item, length, "\xFF", 1);
    _zorcAccept(ACCEPT_FROM_SYSIN, length, item);
    if (item[0] != '\xFF')
        return 1;
    if (feof(_zorProccom->sysin))
        return 0;
    _zorcMoveFigConst(item, length, " ", 1);
    return 1;
}

static void registers(void) {
    static const struct {
        const char *name;
        uint32_t flags;
        int32_t length;
    } registers[] = {
        {"DATE", ACCEPT_DATE, 6}, {"DATE YYYYMMDD", ACCEPT_DATE | ACCEPT_FOUR_DIGIT_YEAR, 8},
        {"DAY", ACCEPT_DAY, 5},   {"DAY YYYYDDD", ACCEPT_DAY | ACCEPT_FOUR_DIGIT_YEAR, 7},
        {"TIME", ACCEPT_TIME, 8}, {"DAY-OF-WEEK", ACCEPT_DAY_OF_WEEK, 1},
    };
    for (unsigned i = 0; i < sizeof registers / sizeof *registers; i++) {
        char item[10];
        _zorcAccept(registers[i].flags, sizeof item, item);
        for (int32_t at = 0; at < registers[i].length; at++)
            item[at] = item[at] >= '0' && item[at] <= '9' ? '9' : '?';
        printf("%-14s [%.10s]\n", registers[i].name, item);
    }
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "ACCEPTS",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    char item[5];
    _zorPgmInit(&pcb);
    while (acceptLine(item, sizeof item))
        printf("[%.5s]\n", item);
    printf("end of file\n");
    registers();
    _zorPgmTerm(&pcb);
    return 0;
}

/* SORT of a table, and SORT of a file with an INPUT and an OUTPUT PROCEDURE.
 *
 *     SD  RANKING.                                01  TEAMS.
 *     01  RANKED.                                     05  TEAM OCCURS 5.
 *         05  R-POINTS  PIC S9(5) PACKED-DECIMAL.         10  T-NAME    PIC X(6).
 *         05  R-NAME    PIC X(6).                         10  T-POINTS  PIC S9(3) PACKED-DECIMAL.
 */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "TEAMS",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

/* ---- SORT TEAM ON DESCENDING KEY T-POINTS ASCENDING KEY T-NAME */

static struct {
    char name[6];
    uint8_t points[2];
} teams[5] = {{"LIONS ", {0x01, 0x2C}},
              {"EAGLES", {0x00, 0x5D}},
              {"BEARS ", {0x01, 0x2C}},
              {"WOLVES", {0x12, 0x3C}},
              {"FOXES ", {0x00, 0x0D}}};

static void sortTable(void) {
    static const SortKey points = {.offset = 6, .length = 2, .type = SORT_KEY_PACKED};
    static const SortKey name = {.length = 6, .type = SORT_KEY_TEXT, .order = SORT_ASCENDING};
    _zorcTSort(0, teams, sizeof teams[0], 5, pcb.collatingWeights, 2, &points, &name);
    for (int i = 0; i < 5; i++)
        printf("%.6s %02X%02X\n", teams[i].name, teams[i].points[0], teams[i].points[1]);
}

/* ---- SORT RANKING ON DESCENDING KEY R-POINTS ASCENDING KEY R-NAME
 *          INPUT PROCEDURE DOUBLE-POINTS OUTPUT PROCEDURE LIST-TEAMS */

struct Ranked {
    uint8_t points[3];
    char name[6];
};

static int16_t sortReturn;
static const RecordDesc ranked = {.length = sizeof(struct Ranked)};
static const FileList procedure = {0, 0};
/* checked: the program tests SORT-RETURN. */
static SortControl control = {.sortreturn = &sortReturn, .checked = 1, .msgarg = 1, .ipcb = &ipcb};
static const char keys[] = "dp0+3s;at3+6 "; /* the blank ends it */

static void doublePoints(void) {
    for (int i = 0; i < 5; i++) {
        struct Ranked record;
        _zorcBCD_ADD_Pckd(teams[i].points, teams[i].points, record.points, 5, 3, 3);
        memcpy(record.name, teams[i].name, sizeof record.name);
        _zorRelease(sizeof record, &record, &sortReturn);
    }
}

static void listTeams(void) {
    struct Ranked record;
    uint32_t length;
    int16_t atEnd = 0;
    for (_zorReturn(&length, &record, &atEnd); !atEnd; _zorReturn(&length, &record, &atEnd))
        printf("%.6s %02X%02X%02X\n", record.name, record.points[0], record.points[1],
               record.points[2]);
}

static void sortFile(void) {
    _zorSortMerge(SORT_FILES, &control, &ranked, 2, keys, &procedure, &procedure, &ranked);
    if (sortReturn == 0)
        doublePoints();
    _zorSortMerge(sortReturn == 0 ? SORT_INPUT_DONE : SORT_FAILED, &control, 0, 0, 0, 0, 0, 0);
    if (sortReturn == 0)
        listTeams();
    printf("SORT-RETURN %d\n", sortReturn);
}

int main(void) {
    _zorPgmInit(&pcb);
    int stop = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (stop == 0) {
        sortTable();
        sortFile();
    }
    _zorPgmTerm(&pcb);
    return stop == 255 ? 0 : stop;
}

/* RECORDER as a compiler emits it: recorder.cbl beside this file is its source. */
#include "journal.h"

void RECORDER(const char *code);

static struct {
    FCB *file;
    char reserved[28];
    char count;
    char code;
} record;
static void *recordArea = &record;
static char recordStatus[2];
static char *recordStatusItem = recordStatus;
static FileDescription recordFile = {.index = 2,
                                     .fscode = "rsd",
                                     .access = FILE_SEQUENTIAL,
                                     .assign = FILE_ENVIRONMENT | FILE_OPTIONAL,
                                     .maxrec = 2,
                                     .filename = "RECORD-FILE",
                                     .assignlen = 7,
                                     .recordptr = &recordArea,
                                     .assignname = "RECORDS",
                                     .statusbase = (uint8_t **)&recordStatusItem};

static FCB recordBlock;
static FCB *files[] = {&noFile, &recordBlock};
static FileDescription *descriptions[] = {&journalFile, &recordFile};
static char count;

static IPCB ipcb = {.entry = (void *)RECORDER, .fcbs = files, .nfcbs = 2};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "RECORDER",
                  .namelen = 8,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

void RECORDER(const char *code) {
    _zorPgmInit(&pcb);
    if (!(ipcb.status & (uint32_t)IPCB_STATUS_RUN_UNIT)) {
        count = '0';
        ipcb.status |= (uint32_t)IPCB_STATUS_RUN_UNIT;
    }
    count += 1;
    if (count == '1') {
        recordBlock.openmode = FCB_EXTEND;
        recordBlock.open(&recordBlock, &ipcb);
        display("OPEN ", recordStatus, sizeof recordStatus);
    }
    record.count = count;
    record.code = *code;
    recordBlock.verbopts = 0;
    recordBlock.write(&recordBlock, &ipcb);
    display("RECORD ", recordStatus, sizeof recordStatus);
    char text[] = "RECORDER  ";
    text[sizeof text - 2] = *code;
    writeJournal(files[0], &ipcb, text);
    if (*code == 'S')
        _zorRunUnitTerm(7);
    _zorPgmTerm(&pcb);
}

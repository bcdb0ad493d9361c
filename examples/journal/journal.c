/* JOURNAL as a compiler emits it: journal.cbl beside this file is its source. */
#include "journal.h"

#include "call.h"

int main(void);

static FCB *files[] = {&noFile};
static FileDescription *descriptions[] = {&journalFile};

static IPCB ipcb = {.entry = (void *)main, .fcbs = files, .nfcbs = 1};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "JOURNAL",
                  .namelen = 7,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

static void callRecorder(const char *code) {
    int32_t exception = 0;
    const FunctionDescriptor *found = _zorDynLd(0, 8, "RECORDER", &pcb, 0, &exception);
    ((void (*)(const char *))found->entry)(code);
}

static void procedureDivision(void) {
    files[0]->openmode = FCB_OUTPUT;
    files[0]->open(files[0], &ipcb);
    writeJournal(files[0], &ipcb, "FIRST");
    callRecorder("A");
    callRecorder("B");
    _zorCancel(0, 8, "RECORDER", &pcb); /* closes its own file, not the EXTERNAL one */
    writeJournal(files[0], &ipcb, "CANCELLED");
    callRecorder("C");
    int32_t exception = 1; /* CALL "ARCHIVER" has ON EXCEPTION */
    if (_zorDynLd(0, 8, "ARCHIVER", &pcb, 0, &exception) == 0)
        writeJournal(files[0], &ipcb, "NO ARCHIVER");
    callRecorder("S"); /* STOP RUN, with all files open */
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}

/* CALL by name, ON EXCEPTION, CANCEL and EXTERNAL items, as far as one file can show them: programs
 * of other files stand in examples/billing. */
#include "lvd4.h"

#include <stdio.h>

/* The bit of IPCB.status by which a program knows that WORKING-STORAGE has its initial values. */
#define INITIALIZED ((uint32_t)IPCB_STATUS_RUN_UNIT)

/* ---- 01 BALANCE PIC S9(9) BINARY IS EXTERNAL, in both programs: length, and name of 32 bytes */

static const struct {
    int32_t count;
    uint32_t reserved4[8];
    ExternalDataItem items[1];
} externals = {.count = 1, .items = {{.length = 4, .name = "BALANCE"}}};

static void initExternals(void **addresses) {
    _zorExtVarInit((const ExternalDataTable *)&externals, addresses);
}

/* ---- PROGRAM-ID. DEPOSIT, linked to the main program */

static int32_t deposit(int32_t amount);

static IPCB depositIpcb = {.entry = (void *)deposit};
static PCB depositPcb = {.level = {5, 1, 1},
                         .ipcb = &depositIpcb,
                         .name = "DEPOSIT",
                         .namelen = 7,
                         .flags = PCB_ENTRY_LOCKED,
                         .century = PCB_NO_CENTURY_WINDOW};
static int32_t deposits; /* WORKING-STORAGE, VALUE 0 */

static int32_t deposit(int32_t amount) {
    void *balance;
    _zorPgmInit(&depositPcb);
    if (!(depositIpcb.status & INITIALIZED)) {
        deposits = 0;
        depositIpcb.status |= INITIALIZED;
    }
    _zorPgmEnterUnlock();
    initExternals(&balance);
    *(int32_t *)balance += amount;
    deposits += 1;
    _zorPgmTerm(&depositPcb);
    return deposits;
}

/* ---- PROGRAM-ID. BANK with the nested PROGRAM-ID. REPORT */

int main(void);
static int32_t report(int32_t line);

static IPCB ipcbs[] = {{.entry = (void *)main, .nested = 1}, {.entry = (void *)report}};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = ipcbs,
                  .name = "BANK",
                  .namelen = 4,
                  .flags = PCB_UPPER_CASE_NAMES,
                  .century = PCB_NO_CENTURY_WINDOW};

/* The programs that BANK may call by name without a search, and beside them their entries. */
static const struct {
    uint32_t count;
    NestedProgram programs[1];
    char names[6];
} nested = {1, {{.index = 2, .namelen = 6, .nameoffset = 0}}, {'R', 'E', 'P', 'O', 'R', 'T'}};
static FunctionDescriptor entries[] = {{(void *)report, 0}};

static int32_t *balance;

static int32_t report(int32_t line) {
    IPCB *ipcb = &ipcbs[1];
    _zorPgmEnterLock(ipcb);
    _zorPgmEnterUnlock();
    printf("line %d: balance %d\n", (int)line, (int)*balance);
    /* CANCEL of a program that is active leaves it alone. */
    printf("CANCEL of REPORT gives %d\n",
           (int)_zorCancel((const NestedProgramTable *)&nested, 6, "REPORT", &pcb));
    _zorPgmExit(ipcb);
    return 0;
}

/* CALL name USING BY VALUE argument ON EXCEPTION: 1 and the result, or 0 for the exception. */
static int call(const char *name, int32_t length, int32_t argument, int32_t *result) {
    int32_t exception = 1; /* there is an ON EXCEPTION */
    FunctionDescriptor *target =
        _zorDynLd((const NestedProgramTable *)&nested, length, name, &pcb, entries, &exception);
    if (target == NULL) {
        printf("ON EXCEPTION %.*s, exception is %d\n", (int)length, name, (int)exception);
        return 0;
    }
    *result = ((int32_t(*)(int32_t))target->entry)(argument);
    return 1;
}

static void procedureDivision(void) {
    static const char item[] = "deposit     "; /* PIC X(12), folded and trimmed */
    int32_t result = 0;
    initExternals((void **)&balance);
    printf("balance begins as %d\n", (int)*balance);
    printf("deposit %d\n", (int)deposit(100)); /* a static call; now its name is known as well */
    if (call(item, 12, 50, &result))
        printf("deposit %d\n", (int)result);
    printf("CANCEL of DEPOSIT gives %d\n", (int)_zorCancel(NULL, 12, item, &pcb));
    if (call("DEPOSIT", 7, 25, &result))
        printf("deposit %d\n", (int)result);
    call("REPORT", 6, 1, &result);
    call("NOSUCH", 6, 0, &result);
    call("      ", 6, 0, &result);
    printf("CANCEL of NOSUCH gives %d\n", (int)_zorCancel(NULL, 6, "NOSUCH", &pcb));
}

/* A run unit of its own: EXTERNAL items and WORKING-STORAGE begin anew. */
static void runUnit(void) {
    _zorPgmInit(&pcb);
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
}

int main(void) {
    runUnit();
    _zor_cpm_enable(); /* programs loaded from now on stay loaded between the run units */
    printf("cache %d\n", (int)_zorProccom->cache);
    runUnit();
    return 0;
}

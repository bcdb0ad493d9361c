/* BILLING as a compiler emits it: billing.cbl beside this file is its source. */
#include "billing.h"
#include "call.h"

/* ---- working storage */

static struct BillingTotals *totals; /* the EXTERNAL item's storage belongs to the run unit */

static struct {
    char customer[kNameLength];
    char customerClass;
    uint8_t units[kUnitsDigits];
} orderLines[3] = {{"MILLER    ", 'A', {'0', '0', '1', '2', '0'}},
                   {"SMITH     ", 'B', {'0', '0', '0', '3', '5'}},
                   {"TAYLOR    ", 'C', {'0', '1', '4', '0', '0'}}};
static char programName[8] = "INVOICE ";
static uint8_t price[PACKED(kPrice)];
static struct {
    char invoices[3];
    char filler[10];
    char revenue[10];
} totalLine = {.filler = " INVOICES,"};

static const NumericEditDescriptor editCount = {3, '.', '$', EDIT_SIGN_NONE, "ZZ9"};
static const NumericEditDescriptor editRevenue = {10, '.', '$', EDIT_FLOAT_CURRENCY, "$$$,$$9.99"};
static const uint8_t packedZero[] = {0x0C};

/* ---- control blocks */

int main(void);

static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "BILLING",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

/* ---- the procedure division */

typedef void (*TariffEntry)(const char *customerClass, uint8_t *price);
typedef void (*InvoiceEntry)(const char *customer, const uint8_t *units, const uint8_t *price);

/* CALL without ON EXCEPTION: a program that cannot be had ends the run. */
static void *entryOf(const char *name, int32_t length) {
    int32_t exception = 0;
    return _zorDynLd(NULL, length, name, &pcb, NULL, &exception)->entry;
}

static void billMonth(void) {
    for (int i = 0; i < 3; i++) {
        ((TariffEntry)entryOf("TARIFF", 6))(&orderLines[i].customerClass, price);
        ((InvoiceEntry)entryOf(programName, sizeof programName))(orderLines[i].customer,
                                                                 orderLines[i].units, price);
    }
    _zorCancel(NULL, sizeof programName, programName, &pcb);
}

static void procedureDivision(void) {
    _zorcBCD_Cpy_Pckd(packedZero, totals->invoices, kCount, 1);
    _zorcBCD_Cpy_Pckd(packedZero, totals->revenue, kAmount, 1);
    billMonth();
    billMonth();
    int32_t exception = 1; /* CALL "ARCHIVE" has ON EXCEPTION */
    FunctionDescriptor *archive = _zorDynLd(NULL, 7, "ARCHIVE", &pcb, NULL, &exception);
    if (archive != NULL)
        ((void (*)(void))archive->entry)();
    else
        display("ARCHIVE IS NOT INSTALLED", 24);
    moveEdited(totals->invoices, kCount, totalLine.invoices, &editCount, 3);
    moveEdited(totals->revenue, kAmount, totalLine.revenue, &editRevenue, 7);
    display(&totalLine, sizeof totalLine);
    _zorRunUnitTerm(0);
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0) {
        _zorExtVarInit((const ExternalDataTable *)&externals, (void **)&totals);
        procedureDivision();
    }
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}

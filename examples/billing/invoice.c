/* INVOICE as a compiler emits it: invoice.cbl beside this file is its source. */
#include "billing.h"

void INVOICE(const char *customer, const uint8_t *units, const uint8_t *price);

static struct BillingTotals *totals;
static uint8_t invoiceNumber[PACKED(kCount)];
static uint8_t amount[PACKED(kAmount)];
static struct {
    char number[3];
    char filler;
    char customer[kNameLength];
    char amount[10];
} line;

static const NumericEditDescriptor editNumber = {3, '.', '$', EDIT_SIGN_NONE, "ZZ9"};
static const NumericEditDescriptor editAmount = {10, '.', '$', EDIT_SIGN_NONE, "ZZZ,ZZ9.99"};
static const uint8_t packedZero[] = {0x0C};

static IPCB ipcb = {.entry = (void *)INVOICE};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "INVOICE",
                  .namelen = 7,
                  .flags = PCB_ENTRY_LOCKED,
                  .century = PCB_NO_CENTURY_WINDOW};

void INVOICE(const char *customer, const uint8_t *units, const uint8_t *price) {
    uint8_t packedUnits[PACKED(kUnitsDigits)];
    _zorPgmInit(&pcb);
    if (!(ipcb.status & INITIALIZED)) {
        _zorcBCD_Cpy_Pckd(packedZero, invoiceNumber, kCount, 1);
        line.filler = ' ';
        ipcb.status |= INITIALIZED;
    }
    _zorPgmEnterUnlock();
    _zorExtVarInit((const ExternalDataTable *)&externals, (void **)&totals);

    _zorcBCD_ADD_Pckd_Int4(invoiceNumber, kCount, 1);
    _zorcBCD_ADD_Pckd_Int4(totals->invoices, kCount, 1);
    _zorcBCD_CONV_ZndUS_To_Pckd(units, packedUnits, kUnitsDigits, kUnitsDigits);
    _zorcBCD_MPY_Pckd(packedUnits, price, amount, kAmount, kPrice, kUnitsDigits);
    _zorcBCD_ADD_Pckd(totals->revenue, amount, totals->revenue, kAmount, kAmount, kAmount);
    moveEdited(invoiceNumber, kCount, line.number, &editNumber, 3);
    memcpy(line.customer, customer, sizeof line.customer);
    moveEdited(amount, kAmount, line.amount, &editAmount, 8);
    display(&line, sizeof line);

    _zorPgmTerm(&pcb);
}

/* What the compiler emits alike in the three programs. */
#ifndef BILLING_H
#define BILLING_H

#include "decimal.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "external_data.h"
#include "pcb.h"

#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

/* Digits of packed items; prices and amounts have 2 decimals. */
enum { kCount = 5, kPrice = 5, kAmount = 11 };

enum { kNameLength = 10, kUnitsDigits = 5 };

/* 01 BILLING-TOTALS IS EXTERNAL. Zero bytes at first, which is no packed number yet. */
struct BillingTotals {
    uint8_t invoices[PACKED(kCount)];
    uint8_t revenue[PACKED(kAmount)];
};

/* The table of a program's EXTERNAL items, with the one that both programs have. */
struct BillingExternals {
    int32_t count;
    uint32_t reserved4[8];
    struct ExternalDataItem totals;
};
_Static_assert(offsetof(struct BillingExternals, totals) == sizeof(struct ExternalDataTable),
               "the items come behind the head of the table");
static const struct BillingExternals externals = {
    .count = 1, .totals = {.length = sizeof(struct BillingTotals), .name = "BILLING-TOTALS"}};

/* The bit of IPCB.status by which a program knows that its working storage has its initial values:
 * CANCEL and the end of the run unit clear it. */
#define INITIALIZED ((uint32_t)IPCB_STATUS_RUN_UNIT)

/* MOVE packed TO edited. */
static inline void moveEdited(const uint8_t *packed, int32_t digits, char *receiver,
                              const NumericEditDescriptor *descriptor, int32_t pictureDigits) {
    uint8_t stream[1 + kAmount];
    _zorcBCD_CONV_Pckd_To_ZndLS(packed, stream, pictureDigits, digits);
    _zorcMoveNumToNumEdit(descriptor, stream, receiver);
}

static inline void display(const void *text, uint32_t length) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = length, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

#endif

/* TARIFF as a compiler emits it: tariff.cbl beside this file is its source. The entry is the one
 * symbol of the shared object, and has the program's name. */
#include "billing.h"

void TARIFF(const char *customerClass, uint8_t *price);

static int32_t calls;

static const uint8_t priceOfA[] = {0x01, 0x25, 0x0C};
static const uint8_t priceOfB[] = {0x01, 0x42, 0x5C};
static const uint8_t priceOfOthers[] = {0x00, 0x99, 0x9C};
static const uint8_t rebate[] = {0x5C}; /* 0.05 */

static IPCB ipcb = {.entry = (void *)TARIFF};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "TARIFF",
                  .namelen = 6,
                  .flags = PCB_ENTRY_LOCKED,
                  .century = PCB_NO_CENTURY_WINDOW};

void TARIFF(const char *customerClass, uint8_t *price) {
    _zorPgmInit(&pcb); /* holds the entry lock for the entry code */
    if (!(ipcb.status & INITIALIZED)) {
        calls = 0;
        ipcb.status |= INITIALIZED;
    }
    _zorPgmEnterUnlock();

    calls += 1;
    memcpy(price,
           *customerClass == 'A'   ? priceOfA
           : *customerClass == 'B' ? priceOfB
                                   : priceOfOthers,
           PACKED(kPrice));
    if (calls > 3)
        _zorcBCD_SUB_Pckd(price, rebate, price, kPrice, 1, kPrice);

    _zorPgmTerm(&pcb);
}

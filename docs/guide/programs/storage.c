/* What each USAGE looks like in storage: +123 and -123 in every form, as the library stores them.
 */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

static void show(const char *declaration, const void *item, int bytes) {
    printf("%-44s", declaration);
    for (int i = 0; i < bytes; i++)
        printf(" %02X", ((const uint8_t *)item)[i]);
    printf("\n");
}

/* A packed literal becomes each of the forms by one call. */
static void showForms(const uint8_t *packed, int32_t digits) {
    uint8_t item[16];
    show("PIC S9(3) PACKED-DECIMAL   Pckd", _zorcBCD_Cpy_Pckd(packed, item, 3, digits), 3 / 2 + 1);
    show("PIC S9(4) PACKED-DECIMAL   Pckd", _zorcBCD_Cpy_Pckd(packed, item, 4, digits), 4 / 2 + 1);
    show("PIC 9(3)  PACKED-DECIMAL   Pckd", _zorcBCD_ABS_Pckd(packed, item, 3, digits), 3 / 2 + 1);
    show("PIC S9(3)                  ZndTO", _zorcBCD_CONV_Pckd_To_ZndTO(packed, item, 3, digits),
         3);
    show("PIC S9(3) LEADING          ZndLO", _zorcBCD_CONV_Pckd_To_ZndLO(packed, item, 3, digits),
         3);
    show("PIC S9(3) TRAILING SEPARATE ZndTS", _zorcBCD_CONV_Pckd_To_ZndTS(packed, item, 3, digits),
         3 + 1);
    show("PIC S9(3) LEADING SEPARATE ZndLS", _zorcBCD_CONV_Pckd_To_ZndLS(packed, item, 3, digits),
         3 + 1);
    show("PIC 9(3)                   ZndUS", _zorcBCD_CONV_Pckd_To_ZndUS(packed, item, 3, digits),
         3);
}

static void showBinaries(const uint8_t *packed, int32_t digits) {
    int16_t half = (int16_t)_zorcBCD_CONV_Pckd_To_Int2(packed, digits);
    int32_t word = _zorcBCD_CONV_Pckd_To_Int4(packed, digits);
    int64_t twice = _zorcBCD_CONV_Pckd_To_Int8(packed, digits);
    uint16_t unsignedHalf = (uint16_t)_zorcBCD_CONV_Pckd_To_Uns2(packed, digits);
    float single = _zorcBCD_CONV_Pckd_To_SFlt(packed, digits, 0);
    double real = _zorcBCD_CONV_Pckd_To_LFlt(packed, digits, 0);
    show("PIC S9(4)  BINARY          Int2", &half, sizeof half);
    show("PIC S9(9)  BINARY          Int4", &word, sizeof word);
    show("PIC S9(18) BINARY          Int8", &twice, sizeof twice);
    show("PIC 9(4)   BINARY          Uns2", &unsignedHalf, sizeof unsignedHalf);
    show("COMP-1                     SFlt, BFlt32", &single, sizeof single);
    show("COMP-2                     LFlt, BFlt64", &real, sizeof real);
}

/* The scale is the compiler's alone: 12.30 in S9(3)V99 and 1230 in S9(5) are the same bytes. */
static void showScales(void) {
    static const uint8_t literal[] = {0x12, 0x3C}; /* 123 */
    uint8_t item[16];
    show("PIC S9(3)V99 PACKED-DECIMAL, 12.30", _zorcBCD_SHFD_Pckd_Left(literal, item, 5, 3, 1),
         5 / 2 + 1);
    show("PIC S9(3)PP  PACKED-DECIMAL, 12300", literal, sizeof literal);
    show("PIC SVPP9(3) PACKED-DECIMAL, .00123", literal, sizeof literal);
}

int main(void) {
    static const uint8_t plus[] = {0x12, 0x3C}, minus[] = {0x12, 0x3D};
    static IPCB ipcb = {.entry = (void *)main};
    static PCB pcb = {.level = {5, 1, 1},
                      .ipcb = &ipcb,
                      .name = "STORAGE",
                      .namelen = 7,
                      .century = PCB_NO_CENTURY_WINDOW};
    _zorPgmInit(&pcb);
    printf("+123\n");
    showForms(plus, 3);
    showBinaries(plus, 3);
    printf("-123\n");
    showForms(minus, 3);
    showBinaries(minus, 3);
    printf("digits and scale\n");
    showScales();
    _zorPgmTerm(&pcb);
    return 0;
}

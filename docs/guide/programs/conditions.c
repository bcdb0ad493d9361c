/* IF: relation, sign, zero and class conditions on items of each usage. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

static void say(const char *condition, int holds) {
    printf("%-44s %s\n", condition, holds ? "true" : "false");
}

static const uint8_t packed[] = {0x01, 0x23, 0x4C};       /* S9(3)V9, 123.4 in 4 digits */
static const uint8_t scaled[] = {0x00, 0x12, 0x34, 0x0D}; /* S9(4)V99, -123.40: 6 digits */
static const uint8_t zoned[] = "0123t";                   /* S9(4)V9, -123.4 */
static const uint8_t leading[] = "p123";                  /* S9(4) LEADING, -123 */
static const uint8_t minusZero[] = {0x00, 0x0D};
static const uint8_t hundred[] = {0x10, 0x0C}; /* literals are packed constants */

static void relations(void) {
    uint8_t left[PACKED(9)], right[PACKED(9)];
    int32_t binary = 123;

    /* The same form and decimals: one call, whatever the digits. */
    say("packed 123.4 > packed 10.0", _zorcBCD_GRT_Pckd(packed, hundred, 3, 4));
    say("-0 = 0", _zorcBCD_EQU_Pckd(minusZero, (const uint8_t *)"\x0C", 1, 3));

    /* Otherwise both sides become packed with the same decimals. */
    _zorcBCD_SHFD_Pckd_Left(packed, left, 9, 4, 1);
    say("123.4 > -123.40", _zorcBCD_GRT_Pckd(left, scaled, 6, 9));
    _zorcBCD_CONV_ZndTO_To_Pckd(zoned, right, 9, 5);
    _zorcBCD_SHFD_Pckd_Left(right, right, 9, 9, 1);
    say("-123.40 = zoned -123.4", _zorcBCD_EQU_Pckd(scaled, right, 9, 6));
    _zorcBCD_CONV_ZndLO_To_Pckd(leading, left, 9, 4);
    _zorcBCD_CONV_Int4_To_Pckd(binary, right, 9);
    say("zoned leading -123 < binary 123", _zorcBCD_LES_Pckd(left, right, 9, 9));
}

static void signs(void) {
    static const uint8_t zero[] = {0x0C};
    say("packed IS ZERO", _zorcBCD_NOT_Pckd(packed, 4));
    say("-0 IS ZERO", _zorcBCD_NOT_Pckd(minusZero, 3));
    say("packed IS POSITIVE", _zorcBCD_GRT_Pckd(packed, zero, 1, 4));
    say("zoned IS NEGATIVE", _zorcBCD_LES_Znd(zoned, (const uint8_t *)"0", 1, 5));
}

/* ---- class conditions: a compiler emits the test for the item's form */

static int digitsAre(const char *bytes, int count) {
    for (int i = 0; i < count; i++)
        if (bytes[i] < '0' || bytes[i] > '9')
            return 0;
    return 1;
}

static int numericZnd(const char *item, int digits) {
    char last = item[digits - 1];
    return digitsAre(item, digits - 1) &&
           ((last >= '0' && last <= '9') || (last >= 'p' && last <= 'y'));
}

static int numericZndTS(const char *item, int digits) {
    return digitsAre(item, digits) && (item[digits] == '+' || item[digits] == '-');
}

static int numericPckd(const uint8_t *item, int digits) {
    int bytes = PACKED(digits);
    if (digits % 2 == 0 && item[0] >> 4 != 0)
        return 0; /* the pad of an even count */
    for (int i = 0; i < bytes; i++)
        if (item[i] >> 4 > 9 || (i < bytes - 1 && (item[i] & 0xF) > 9))
            return 0;
    return (item[bytes - 1] & 0xF) >= 0xA;
}

static void classes(void) {
    say("\"123\" of 9(3) IS NUMERIC", digitsAre("123", 3));
    say("\"12 \" of 9(3) IS NUMERIC", digitsAre("12 ", 3));
    say("\"12s\" of S9(3) IS NUMERIC", numericZnd("12s", 3));
    say("\"123-\" of S9(3) SEPARATE IS NUMERIC", numericZndTS("123-", 3));
    say("X\"12345C\" IS NUMERIC", numericPckd((const uint8_t *)"\x12\x34\x5C", 5));
    say("blanks of S9(5) PACKED-DECIMAL IS NUMERIC", numericPckd((const uint8_t *)"   ", 5));
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "CONDS",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    _zorPgmInit(&pcb);
    relations();
    signs();
    classes();
    _zorPgmTerm(&pcb);
    return 0;
}

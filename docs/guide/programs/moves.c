/* MOVE between all usages: the value -123.45 goes from an item of each usage to one of each other.
 * Both items have 5 digits and 2 decimals here; statements.md says how decimal points are aligned.
 */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

enum { kDigits = 5, kDecimals = 2, kRoom = 24 };

/* ---- decimal to decimal: one call, named by the two forms */

typedef uint8_t *Move(const uint8_t *source, uint8_t *target, int32_t targetDigits,
                      int32_t sourceDigits);

#define FORMS(X) X(Pckd) X(ZndTO) X(ZndTS) X(ZndLO) X(ZndLS) X(ZndUS)
enum { Pckd, ZndTO, ZndTS, ZndLO, ZndLS, ZndUS, kForms };

#define NAME(form) #form,
static const char *const formNames[] = {FORMS(NAME)};

#define _zorcBCD_CONV_Pckd_To_Pckd _zorcBCD_Cpy_Pckd
#define TO(from, to) [to] = _zorcBCD_CONV_##from##_To_##to,
#define ROW(from)                                                                                  \
    [from] = {TO(from, Pckd) TO(from, ZndTO) TO(from, ZndTS) TO(from, ZndLO) TO(from, ZndLS)       \
                  TO(from, ZndUS)},
static Move *const moves[kForms][kForms] = {FORMS(ROW)};

static uint8_t items[kForms][kRoom]; /* -123.45 in each form; ZndUS holds the magnitude */

static int bytesOf(int form, int32_t digits) {
    return form == Pckd ? digits / 2 + 1 : digits + (form == ZndTS || form == ZndLS);
}

static void show(int form, const uint8_t *item) {
    char text[kRoom] = "";
    for (int i = 0; i < bytesOf(form, kDigits); i++) {
        if (form == Pckd)
            sprintf(text + 2 * i, "%02X", item[i]);
        else
            text[i] = (char)item[i];
    }
    printf(" %-7s", text);
}

static void decimalToDecimal(void) {
    printf("from, to  ");
    for (int to = 0; to < kForms; to++)
        printf(" %-7s", formNames[to]);
    for (int from = 0; from < kForms; from++) {
        printf("\n%-10s", formNames[from]);
        for (int to = 0; to < kForms; to++) {
            uint8_t target[kRoom];
            show(to, moves[from][to](items[from], target, kDigits, kDigits));
        }
    }
    printf("\n");
}

/* ---- binary integers: of S9(3)V99 they hold -12345 */

static void binaries(void) {
    const uint8_t *packed = items[Pckd], *zoned = items[ZndTO];
    uint8_t target[kRoom], unsignedTarget[kRoom];

    /* BINARY keeps the digits of its PICTURE: cut to them ahead. COMP-5 takes the value whole. */
    int16_t binary =
        (int16_t)_zorcBCD_CONV_Pckd_To_Int2(_zorcBCD_Cpy_Pckd(packed, target, 4, 5), 4);
    int16_t comp5 = (int16_t)_zorcBCD_CONV_Pckd_To_Int2(packed, kDigits);
    printf("Pckd to S9(4) BINARY %d, COMP-5 %d\n", binary, comp5);
    printf("Pckd to Int4 %d, Uns4 %u, Int8 %lld\n", _zorcBCD_CONV_Pckd_To_Int4(packed, kDigits),
           _zorcBCD_CONV_Pckd_To_Uns4(packed, kDigits),
           (long long)_zorcBCD_CONV_Pckd_To_Int8(packed, kDigits));
    printf("ZndTO to Int4 %d, UInt8 %llu\n", _zorcBCD_CONV_Znd_To_Int4(zoned, kDigits),
           (unsigned long long)_zorcBCD_CONV_Znd_To_UInt8(zoned, kDigits));

    printf("Int2 to Pckd");
    show(Pckd, _zorcBCD_CONV_Int2_To_Pckd(comp5, target, kDigits));
    printf(" Int4 to ZndTO");
    show(ZndTO, _zorcBCD_CONV_Int4_To_Znd(comp5, target, kDigits));
    /* There is no call from binary to the other zoned forms: through ZndTO. */
    printf(" to ZndUS");
    show(ZndUS, _zorcBCD_CONV_ZndTO_To_ZndUS(target, unsignedTarget, kDigits, kDigits));
    printf("\n");
}

/* ---- floating point: the call is told the decimals of the decimal item */

static void floats(void) {
    const uint8_t *packed = items[Pckd], *zoned = items[ZndTO];
    uint8_t target[kRoom];
    double real = _zorcBCD_CONV_Pckd_To_LFlt(packed, kDigits, kDecimals);
    printf("Pckd to COMP-1 %g, to COMP-2 %g, ZndTO to COMP-2 %g\n",
           (double)_zorcBCD_CONV_Pckd_To_SFlt(packed, kDigits, kDecimals), real,
           _zorcBCD_CONV_Znd_To_BFlt64(zoned, kDigits, kDecimals));
    printf("COMP-2 to Pckd, 2 decimals");
    show(Pckd, _zorcBCD_CONV_LFlt_To_Pckd(real, target, kDigits, kDecimals));
    printf(" 1 decimal");
    show(Pckd, _zorcBCD_CONV_LFlt_To_Pckd(real, target, kDigits, 1));
    printf(" 1 decimal, ROUNDED");
    show(Pckd, _zorcBCD_CONV_LFlt_To_PckdRnd(real, target, kDigits, 1));
    printf("\n");
    int64_t whole = _zorcBCD_CONV_Pckd_To_Int8(_zorcBCD_CONV_LFlt_To_Pckd(real, target, 18, 0),
                                               18); /* to binary: through Pckd */
    printf("COMP-2 to Int8 %lld\n", (long long)whole);
}

/* ---- edited and alphanumeric items */

static void characters(void) {
    static const NumericEditDescriptor edit = {9, '.', '$', EDIT_FLOAT_SIGN_IF_MINUS, "--,--9.99"};
    static const DeEditDescriptor deEdit = {9, "--,--9.99"};
    uint8_t stream[1 + 7], sign[7 + 1], target[kRoom];
    char edited[9], text[7];

    /* The digit stream is ZndLS with as many digits as the picture takes: here 6, 4 and 2. */
    _zorcBCD_CONV_Pckd_To_ZndLS(items[Pckd], stream, 6, kDigits);
    _zorcMoveNumToNumEdit(&edit, stream, edited);
    printf("Pckd to edited [%.9s]\n", edited);

    /* De-editing gives ZndTS with the same 6 digits. */
    int32_t fails = _zorcMoveNumEditToNum(&deEdit, edited, sign);
    printf("edited to Pckd %d", fails);
    show(Pckd, _zorcBCD_CONV_ZndTS_To_Pckd(sign, target, kDigits, 6));

    /* To alphanumeric goes the magnitude of an integer; from alphanumeric come digits. */
    uint8_t digits[kDigits];
    _zorcBCD_CONV_Pckd_To_ZndUS(items[Pckd], digits, kDigits, kDigits);
    _zorcMoveVarLenOverlap(text, sizeof text, digits, kDigits);
    printf(" Pckd to X(7) [%.7s]", text);
    _zorcMoveVarLenOverlap(text, -(int32_t)sizeof text, digits, kDigits);
    printf(" JUSTIFIED [%.7s]", text);
    printf(" X(5) to Pckd");
    show(Pckd, _zorcBCD_CONV_ZndUS_To_Pckd((const uint8_t *)"00042", target, kDigits, 5));
    printf("\n");
    _zorcMoveFigConst(text, sizeof text, "AB", 2);
    printf("MOVE ALL \"AB\" [%.7s]\n", text);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "MOVES",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    static const uint8_t literal[] = {0x12, 0x34, 0x5D};
    _zorPgmInit(&pcb);
    for (int form = 0; form < kForms; form++)
        moves[Pckd][form](literal, items[form], kDigits, kDigits);
    decimalToDecimal();
    binaries();
    floats();
    characters();
    _zorPgmTerm(&pcb);
    return 0;
}

/* Intrinsic functions as a compiler calls them: arguments converted to a form first, results moved
 * out of it. */
#include "lvd4.h"

#include <stdio.h>

int main(void);

static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "FUNCTION",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

static void show(const char *name, double value) {
    printf("%-32s %.12g\n", name, value);
}

static void showPacked(const char *name, const uint8_t *item, uint32_t bytes) {
    printf("%-32s ", name);
    for (uint32_t i = 0; i < bytes; i++)
        printf("%02X", item[i]);
    printf("\n");
}

/* COMPUTE R = FUNCTION SQRT(A), with A PIC S9(4)V9(4) and R PIC S9(5)V9(20), both packed: more
 * digits than 64-bit binary has, so the call is the one of decimal128. */
static void decimalForm(void) {
    static const uint8_t a[] = {0x00, 0x00, 0x20, 0x00, 0x0C}; /* +2.0000 */
    uint8_t r[13];
    ZorDecimal128 value = _zorcBCD_CONV_Pckd_To_DFlt128(a, 8, 4);
    _zorcBCD_CONV_DFlt_To_Pckd(_Tvq_sqrt_decfloat16(value), r, 25, 20);
    showPacked("SQRT(2), 20 decimals", r, sizeof r);
}

/* COMPUTE R ROUNDED = FUNCTION REM(A, 0.5) with A PIC S9(30)V9: in 128-bit binary. */
static void binaryForm(void) {
    static const uint8_t a[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x56,
                                0x78, 0x90, 0x12, 0x34, 0x56, 0x78, 0x90, 0x1C};
    uint8_t r[3];
    ZorBinary128 value = _zorcBCD_CONV_Pckd_To_EFlt(a, 31, 1);
    _zorcBCD_CONV_EFlt_To_PckdRnd(_zorRemFloat16Float16(value, 0.5), r, 5, 2);
    showPacked("REM of 31 digits by 0.5", r, sizeof r);
}

int main(void) {
    double list[] = {2, 4, 4, 4, 5, 5, 7, 9};
    const double payments[] = {0.1, 110, 121};
    double result;
    char text[9] = "";
    ZorFactorial factorial;

    _zorPgmInit(&pcb);
    show("ACOS(-1)", _zorAcosFloat8(-1));
    show("LOG10(1000)", _zorLog10Float8(1000));
    show("INTEGER(-1.5)", _zorInteger(-1.5));
    show("INTEGER-PART(-1.5)", _zorIntegerPart(-1.5));
    show("REM(-7, 2)", _zorRemFloat8Float8(-7, 2));
    decimalForm();
    binaryForm();

    show("RANDOM", _zorRandom());
    show("RANDOM(0)", _zorRandomInt8(0));
    factorial = _Tvq_factorial(25);
    showPacked("FACTORIAL(25)", factorial.digits, sizeof factorial.digits);

    /* VARIANCE and the rest ahead of MEDIAN, which reorders its list */
    show("VARIANCE", *_zorcVariance(8, &result, 5, list));
    show("STANDARD-DEVIATION", *_zorcStandardDeviation(8, &result, 5, list));
    show("MEDIAN", _zorcMedianFloat8(8, list));
    show("PRESENT-VALUE(0.1, 110, 121)", *_zorcPresentValue(3, &result, payments));
    show("ANNUITY(0.1, 1)", _zorcAnnuityFloat8(0.1, 1));

    show("INTEGER-OF-DATE(20000101)", _zorIntegerOfDate(20000101));
    show("DATE-OF-INTEGER(145732)", _zorDateOfInteger(145732));
    show("DAY-OF-INTEGER(366)", _zorDayOfInteger(366));
    _zorDateToYYYYMMDD(991231, 0, text);
    printf("%-32s %s\n", "DATE-TO-YYYYMMDD(991231, 0)", text);

    show("LOG(0) after a message", _zorLogFloat8(0));
    _zorPgmTerm(&pcb);
    return 0;
}

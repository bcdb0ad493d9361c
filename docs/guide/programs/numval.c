/* Powers, NUMVAL, and external floating items as a compiler calls them. */
#include "lvd4.h"

#include <stdio.h>

int main(void);

static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "NUMBERS",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

/* COMPUTE R = (1 + RATE) ** N ON SIZE ERROR ..., with RATE of 4 decimals, N PIC S9(3), and a result
 * of 9 integer and 6 fraction digits. A counter of 1 means that errors are counted. */
static void compound(const char *base, const char *periods) {
    static const ExpDescriptor power = {.exponentDigits = 3,
                                        .baseDigits = 5,
                                        .baseScale = 4,
                                        .resultDigits = 15,
                                        .resultFractionDigits = 6,
                                        .resultIntegerDigits = 9};
    char result[16];
    int32_t sizeErrors = 1;
    _zorcExpFixedPt(&power, periods, base, result, &sizeErrors);
    if (sizeErrors > 1)
        printf("%s ** %s  size error\n", base, periods);
    else
        printf("%s ** %s  %.16s\n", base, periods, result);
}

/* FUNCTION NUMVAL(TEXT) and FUNCTION NUMVAL-C(TEXT), the currency sign being $, or "EUR" given. */
static void numvals(void) {
    static const NumvalFormat sign = {'$', '.', NUMVAL_CURRENCY_SIGN};
    static const NumvalFormat string = {'$', ',', NUMVAL_CURRENCY_STRING};
    double value;
    ZorBinary128 wide;
    printf("NUMVAL(\" 12.5 DB\")        %g\n", _zorcNumval(&sign, 8, " 12.5 DB", &value));
    printf("NUMVAL-C(\"$1,234.50-\")    %g\n",
           _zorcNumvalC(&sign, 10, "$1,234.50-", 0, NULL, &value));
    printf("NUMVAL-C(\"EUR 1.234,5\")   %g\n",
           _zorcNumvalC(&string, 11, "EUR 1.234,5", 3, "EUR", &value));
    _zorcNumval16(&sign, 21, "123456789012345678901", &wide);
    printf("NUMVAL to 128 bits        %lld and 678901\n",
           (long long)_zorc_CONV_BFlt128_To_Int8(_zorc_DIV_BFlt128(wide, 1000000)));
    printf("NUMVAL(\"12,5\")            %g, after a message\n",
           _zorcNumval(&sign, 4, "12,5", &value));
}

/* MOVE C TO E, MOVE E TO C, with C COMP-2 and E PIC -99V9E+99 USAGE DISPLAY. */
static void externalItem(double c) {
    static const ExternalFloatTarget written = {-8, 1, 2, '-', '+', '.'};
    static const ExternalFloatSource read = {-8, 1, 2, sizeof(double)};
    char e[8];
    double back;
    _zorcConvIntFltToExtFlt(&written, &c, e);
    _zorcConvExtFltToIntFlt(&read, e, &back);
    printf("%g as -99V9E+99         [%.8s], back %g\n", c, e, back);
}

int main(void) {
    int32_t sizeErrors = 0;
    _zorPgmInit(&pcb);
    compound("+10525", "+012");
    compound("+10525", "-012");
    compound("+90000", "+010");
    printf("2 ** 0.5                  %.15g\n", _zorExpFloat8Float8(2, 0.5, &sizeErrors));
    printf("0 ** 0                    %g, after a message\n", _zorExpInt4Int4(0, 0, &sizeErrors));
    numvals();
    externalItem(-1234);
    externalItem(0.05);
    printf("1.0 in hexadecimal        %08X\n", (unsigned)_zorcConvIEEE4toHex(1));
    _zorPgmTerm(&pcb);
    return 0;
}

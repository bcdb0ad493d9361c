/* Arithmetic statements: decimal points aligned by shifts, ROUNDED, REMAINDER, ON SIZE ERROR, and
 * COMPUTE. All of it happens in packed work items wide enough for every digit; the receiver gets
 * its digits last. */
#include "lvd4.h"

#include <stdio.h>

#define PACKED(digits) ((digits) / 2 + 1)

enum { kWork = 31 };

static void show(const char *statement, const uint8_t *item, int32_t digits) {
    char text[kWork + 2];
    _zorcBCD_CONV_Pckd_To_ZndTS(item, (uint8_t *)text, digits, digits);
    printf("%-52s %.*s\n", statement, digits + 1, text);
}

/* ---- what a compiler emits out of line, or inline */

/* Digits and decimals of an item: known to the compiler alone. */
typedef struct {
    int32_t digits;
    int32_t decimals;
} Shape;

/* Moves a value to a number of decimals; cuts, or rounds, those that go. */
static void align(const uint8_t *source, Shape from, uint8_t *target, Shape to, int rounded) {
    int32_t shift = to.decimals - from.decimals;
    if (shift >= 0)
        _zorcBCD_SHFD_Pckd_Left(source, target, to.digits, from.digits, shift);
    else if (rounded)
        _zorcBCD_SHFD_Pckd_RightRnd(source, target, to.digits, from.digits, -shift);
    else
        _zorcBCD_SHFD_Pckd_Right(source, target, to.digits, from.digits, -shift);
}

/* Stores a result in its receiver. ON SIZE ERROR: the receiver stays as it is and 0 comes back when
 * high-order digits would be lost, which shows when the cut value differs from the whole one. */
static int store(const uint8_t *result, Shape from, uint8_t *receiver, Shape to, int rounded,
                 int onSizeError) {
    uint8_t whole[PACKED(kWork)], cut[PACKED(kWork)];
    align(result, from, whole, (Shape){kWork, to.decimals}, rounded);
    _zorcBCD_Cpy_Pckd(whole, cut, to.digits, kWork);
    if (onSizeError && _zorcBCD_NEQ_Pckd(whole, cut, to.digits, kWork))
        return 0;
    _zorcBCD_Cpy_Pckd(cut, receiver, to.digits, to.digits);
    return 1;
}

/* ---- the statements */

static const Shape a = {7, 2}, b = {4, 1}, c = {5, 3};
static uint8_t itemA[PACKED(7)] = {0x01, 0x23, 0x45, 0x6C}; /* S9(5)V99, 1234.56 */
static uint8_t itemB[PACKED(4)] = {0x00, 0x98, 0x7C};       /* S9(3)V9, 98.7 */
static uint8_t itemC[PACKED(5)] = {0x01, 0x25, 0x0D};       /* S9(2)V9(3), -1.250 */

static void addAndSubtract(void) {
    uint8_t left[PACKED(kWork)], right[PACKED(kWork)], result[PACKED(kWork)], r[PACKED(6)];
    const Shape work = {kWork, 2}, receiver = {6, 1};

    align(itemA, a, left, work, 0);
    align(itemB, b, right, work, 0);
    _zorcBCD_ADD_Pckd(left, right, result, kWork, kWork, kWork);
    store(result, work, r, receiver, 0, 0);
    show("ADD A B GIVING R, R S9(5)V9", r, 6);
    store(result, work, r, receiver, 1, 0);
    show("ADD A B GIVING R ROUNDED", r, 6);

    _zorcBCD_SUB_Pckd(right, left, result, kWork, kWork, kWork);
    store(result, work, r, receiver, 1, 0);
    show("SUBTRACT A FROM B GIVING R ROUNDED", r, 6);

    /* Equal shapes need no work items, and a binary operand no conversion. */
    _zorcBCD_ADD_Pckd(itemA, itemA, result, 8, 7, 7);
    show("A + A, 8 digits", result, 8);
    _zorcBCD_ADD_Pckd_Int4(itemB, 4, -100);
    show("SUBTRACT 10 FROM B", itemB, 4);
}

static void multiply(void) {
    uint8_t result[PACKED(12)], r[PACKED(9)];
    const Shape product = {7 + 5, 2 + 3}, receiver = {9, 2}; /* digits and decimals add up */
    _zorcBCD_MPY_Pckd(itemA, itemC, result, product.digits, c.digits, a.digits);
    show("A * C, 5 decimals", result, product.digits);
    store(result, product, r, receiver, 1, 0);
    show("MULTIPLY A BY C GIVING R ROUNDED, R S9(7)V99", r, 9);
}

static void divide(void) {
    uint8_t dividend[PACKED(kWork)], quotient[PACKED(kWork)], rest[PACKED(kWork)], r[PACKED(7)];
    const Shape receiver = {7, 2};

    /* The quotient gets the decimals of the dividend less those of the divisor. A left shift gives
     * it those of the receiver: here 2 wanted, 2 - 3 there. */
    Shape aligned = {kWork, 2 + 3};
    align(itemA, a, dividend, aligned, 0);
    _zorcBCD_DIVR_Pckd(dividend, itemC, quotient, rest, kWork, kWork, c.digits, kWork);
    store(quotient, (Shape){kWork, 2}, r, receiver, 0, 0);
    show("DIVIDE A BY C GIVING R REMAINDER S, R S9(5)V99", r, 7);
    store(rest, aligned, r, receiver, 0, 0); /* the remainder has the decimals of the dividend */
    show("the remainder, S S9(5)V99", r, 7);

    /* ROUNDED: one more decimal, which the rounding shift takes away again. */
    align(itemA, a, dividend, (Shape){kWork, 2 + 3 + 1}, 0);
    _zorcBCD_DIV_Pckd(dividend, itemC, quotient, kWork, c.digits, kWork);
    store(quotient, (Shape){kWork, 3}, r, receiver, 1, 0);
    show("DIVIDE A BY C GIVING R ROUNDED", r, 7);
}

static void sizeErrors(void) {
    uint8_t r[PACKED(4)] = {0x00, 0x00, 0x7C};
    static const uint8_t zero[] = {0x0C};
    const Shape receiver = {4, 2};
    int fits = store(itemA, a, r, receiver, 0, 1);
    show(fits ? "fits" : "MOVE A TO S99V99 ON SIZE ERROR: R as it was", r, 4);
    store(itemA, a, r, receiver, 0, 0);
    show("without the phrase high-order digits are lost", r, 4);
    /* A divisor of zero is a size error that the library does not find: message 902 ends the run.
     */
    if (_zorcBCD_NOT_Pckd(zero, 1))
        show("DIVIDE BY ZERO: the test ahead of the call", r, 4);
}

/* COMPUTE R ROUNDED = (A + B) * C / 7 ON SIZE ERROR, R S9(5)V99: the compiler keeps the decimals of
 * each step. */
static void compute(void) {
    static const uint8_t seven[] = {0x7C};
    uint8_t left[PACKED(kWork)], sum[PACKED(kWork)], r[PACKED(7)];
    align(itemA, a, left, (Shape){kWork, 2}, 0);
    align(itemB, b, sum, (Shape){kWork, 2}, 0);
    _zorcBCD_ADD_Pckd(left, sum, sum, kWork, kWork, kWork);     /* 2 decimals */
    _zorcBCD_MPY_Pckd(sum, itemC, sum, kWork, c.digits, kWork); /* 5 decimals */
    _zorcBCD_DIV_Pckd(sum, seven, sum, kWork, 1, kWork);        /* 5 decimals, cut */
    if (store(sum, (Shape){kWork, 5}, r, (Shape){7, 2}, 1, 1))
        show("COMPUTE R ROUNDED = (A + B) * C / 7", r, 7);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "ARITH",
                  .namelen = 5,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    _zorPgmInit(&pcb);
    addAndSubtract();
    multiply();
    divide();
    sizeErrors();
    compute();
    _zorPgmTerm(&pcb);
    return 0;
}

/* Moves, comparisons, signs and shifts of decimal items, and conversions among their forms.
 *
 * An operand is a byte address of any alignment and a count of digits, at least 1; a count below 1
 * is outside the contract. There is no scale: the caller aligns decimal points by the shifts.
 * Arguments run against each other: addresses first to last, counts last to first, the target's
 * first of all; a shift comes last. The forms, by the names in the functions:
 *
 *   Pckd        packed decimal, digits / 2 + 1 bytes: digits in nibbles, the sign in the low nibble
 *               of the last byte (0xB and 0xD negative, stored as 0xD; others positive, as 0xC)
 *   Znd, ZndTO  zoned, a byte per digit, the sign in the zone of the last byte: 0x30 + digit or,
 *               negative, 0x70 + digit. EBCDIC zones and overpunch letters are read too, with one
 *               exception: _zorcBCD_CONV_ZndTO_To_Pckd reads them only under COBOL_BCD_EBCDIC, and
 *               takes the low nibble for the digit and a zone of 0x70 alone for negative otherwise
 *   ZndLO       zoned, the sign in the zone of the first byte
 *   ZndTS       zoned, a byte "+" or "-" behind the digits, not in the count of digits
 *   ZndLS       zoned, a byte "+" or "-" before the digits, not in the count of digits
 *   ZndUS       zoned, unsigned
 *
 * A longer target is filled with zeros at the high-order end, a shorter one loses high-order digits
 * without a report. A negative zero becomes positive, unless the environment keeps it
 * (COBOL_BCD_NOVALIDATE bit 0x02). Bad digits issue message 903 where an operand is validated, a
 * bad separate sign message 40; if the message service returns, the call goes on. The target may
 * overlap the source. COBOL_BCD_DEBUG traces the calls on stderr. The first call reads the
 * environment.
 *
 * The lists ZOR_BCD_... apply a macro to each member of a family. */
#ifndef ZOR_DECIMAL_MOVES_H
#define ZOR_DECIMAL_MOVES_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* What all functions that fill a target look like: from source to target; they return target. */
#define ZOR_BCD_MOVE(name)                                                                         \
    ZOR_EXPORT uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,         \
                             int32_t sourceDigits);

/* ---- comparisons
 * _zorcBCD_EQU_Pckd, _zorcBCD_EQU_Znd and so on: 1 when op1 is equal to, not equal to, greater
 * than, at least, less than or at most op2, else 0. +0 and -0 are equal. Strictly validated when
 * COBOL_BCD_SAFE or bit 0x40 asks for it. Counts below 1 are outside the contract. */
#define ZOR_BCD_RELATIONS(X)                                                                       \
    X(EQU)                                                                                         \
    X(NEQ)                                                                                         \
    X(GRT)                                                                                         \
    X(GEQ)                                                                                         \
    X(LES)                                                                                         \
    X(LEQ)

#define ZOR_BCD_DECLARE_RELATION(relation)                                                         \
    ZOR_EXPORT int32_t _zorcBCD_##relation##_Pckd(const uint8_t *op1, const uint8_t *op2,          \
                                                  int32_t op2Digits, int32_t op1Digits);           \
    ZOR_EXPORT int32_t _zorcBCD_##relation##_Znd(const uint8_t *op1, const uint8_t *op2,           \
                                                 int32_t op2Digits, int32_t op1Digits);
ZOR_BCD_RELATIONS(ZOR_BCD_DECLARE_RELATION)

/* 1 when the value is zero, else 0. Validated as the comparisons. Counts below 1 are outside the
 * contract. */
ZOR_EXPORT int32_t _zorcBCD_NOT_Pckd(const uint8_t *operand, int32_t operandDigits);
ZOR_EXPORT int32_t _zorcBCD_NOT_Znd(const uint8_t *operand, int32_t operandDigits);

/* ---- copies
 * Cpy keeps the value, ABS its magnitude, NEG inverts the sign; NEG of zero is positive zero, or
 * negative when negative zeros are kept. NEG and _zorcBCD_ABS_Pckd validate the source unless
 * COBOL_BCD_NOVALIDATE bit 0x01 forbids it, the others when COBOL_BCD_SAFE or bit 0x10 asks for it;
 * then a Cpy of ZndTS or ZndLS issues message 40 for a bad sign, which it copies as it is. Counts
 * below 1 are outside the contract. */
#define ZOR_BCD_COPIES(X)                                                                          \
    X(Pckd)                                                                                        \
    X(Znd)                                                                                         \
    X(ZndLO)                                                                                       \
    X(ZndUS)                                                                                       \
    X(ZndTS)                                                                                       \
    X(ZndLS)

#define ZOR_BCD_DECLARE_COPY(form) ZOR_BCD_MOVE(_zorcBCD_Cpy_##form)
ZOR_BCD_COPIES(ZOR_BCD_DECLARE_COPY)

ZOR_BCD_MOVE(_zorcBCD_ABS_Pckd)
ZOR_BCD_MOVE(_zorcBCD_ABS_Znd)
ZOR_BCD_MOVE(_zorcBCD_ABS_ZndLO)
ZOR_BCD_MOVE(_zorcBCD_NEG_Pckd)
ZOR_BCD_MOVE(_zorcBCD_NEG_Znd)
ZOR_BCD_MOVE(_zorcBCD_NEG_ZndLO)

/* ---- shifts
 * _zorcBCD_SHFD_Pckd_Left and so on for each form of ZOR_BCD_COPIES: Left multiplies by 10 to the
 * power shift, Right divides and truncates towards zero, RightRnd divides and rounds halves away
 * from zero. shift is at least 0; 0 copies. A carry out of the target is lost. Nothing is
 * validated; a bad separate sign is copied as it is. Counts below 1 are outside the contract. */
#define ZOR_BCD_DECLARE_SHIFT(name)                                                                \
    ZOR_EXPORT uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,         \
                             int32_t sourceDigits, int32_t shift);
#define ZOR_BCD_DECLARE_SHIFTS(form)                                                               \
    ZOR_BCD_DECLARE_SHIFT(_zorcBCD_SHFD_##form##_Left)                                             \
    ZOR_BCD_DECLARE_SHIFT(_zorcBCD_SHFD_##form##_Right)                                            \
    ZOR_BCD_DECLARE_SHIFT(_zorcBCD_SHFD_##form##_RightRnd)
ZOR_BCD_COPIES(ZOR_BCD_DECLARE_SHIFTS)

/* ---- conversions
 * _zorcBCD_CONV_Pckd_To_ZndTO and so on, for each ordered pair of forms but packed to packed. A bad
 * separate sign of a source issues message 40 and counts as positive, unless the target is
 * unsigned. A packed source is validated unless COBOL_BCD_NOVALIDATE bit 0x01 forbids it, a zoned
 * one when COBOL_BCD_SAFE or bit 0x10 asks for it.
 *
 * An unsigned target gets the magnitude. A negative packed value that is cut down to zeros in a
 * zoned target stays negative; a zoned one turns positive. With COBOL_BCD_EBCDIC the overpunch
 * letters are written to ZndTO and ZndLO ("{", "A" to "I"; negative "}", "J" to "R"), except from
 * ZndUS, and from ZndTO to packed letters and EBCDIC zones are read, only then. ZndUS to Pckd takes
 * a stray "+", "-" or blank before the digits and "+" or "-" behind them. Counts below 1 are
 * outside the contract. */
#define ZOR_BCD_CONVERSIONS_TO_ZONED(X, from)                                                      \
    X(from, ZndTO)                                                                                 \
    X(from, ZndTS)                                                                                 \
    X(from, ZndLO)                                                                                 \
    X(from, ZndLS)                                                                                 \
    X(from, ZndUS)

#define ZOR_BCD_CONVERSIONS_FROM_ZONED(X, from)                                                    \
    ZOR_BCD_CONVERSIONS_TO_ZONED(X, from)                                                          \
    X(from, Pckd)

#define ZOR_BCD_CONVERSIONS(X)                                                                     \
    ZOR_BCD_CONVERSIONS_TO_ZONED(X, Pckd)                                                          \
    ZOR_BCD_CONVERSIONS_FROM_ZONED(X, ZndTO)                                                       \
    ZOR_BCD_CONVERSIONS_FROM_ZONED(X, ZndTS)                                                       \
    ZOR_BCD_CONVERSIONS_FROM_ZONED(X, ZndLO)                                                       \
    ZOR_BCD_CONVERSIONS_FROM_ZONED(X, ZndLS)                                                       \
    ZOR_BCD_CONVERSIONS_FROM_ZONED(X, ZndUS)

#define ZOR_BCD_DECLARE_CONVERSION(from, to) ZOR_BCD_MOVE(_zorcBCD_CONV_##from##_To_##to)
ZOR_BCD_CONVERSIONS(ZOR_BCD_DECLARE_CONVERSION)

ZOR_END_C

#endif

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
 */
#ifndef ZOR_DECIMAL_MOVES_H
#define ZOR_DECIMAL_MOVES_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* ---- comparisons: 1 when op1 is equal to (EQU), not equal to (NEQ), greater than (GRT), at least
 * (GEQ), less than (LES) or at most (LEQ) op2, else 0. +0 and -0 are equal. Strictly validated when
 * COBOL_BCD_SAFE or bit 0x40 asks for it. Counts below 1 are outside the contract. */
#define ZOR_RELATION(name)                                                                         \
    ZOR_EXPORT int32_t name(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits,             \
                            int32_t op1Digits);
ZOR_RELATION(_zorcBCD_EQU_Pckd)
ZOR_RELATION(_zorcBCD_NEQ_Pckd)
ZOR_RELATION(_zorcBCD_GRT_Pckd)
ZOR_RELATION(_zorcBCD_GEQ_Pckd)
ZOR_RELATION(_zorcBCD_LES_Pckd)
ZOR_RELATION(_zorcBCD_LEQ_Pckd)
ZOR_RELATION(_zorcBCD_EQU_Znd)
ZOR_RELATION(_zorcBCD_NEQ_Znd)
ZOR_RELATION(_zorcBCD_GRT_Znd)
ZOR_RELATION(_zorcBCD_GEQ_Znd)
ZOR_RELATION(_zorcBCD_LES_Znd)
ZOR_RELATION(_zorcBCD_LEQ_Znd)
#undef ZOR_RELATION

/* 1 when the value is zero, else 0. Validated as the comparisons. Counts below 1 are outside the
 * contract. */
ZOR_EXPORT int32_t _zorcBCD_NOT_Pckd(const uint8_t *operand, int32_t operandDigits);
ZOR_EXPORT int32_t _zorcBCD_NOT_Znd(const uint8_t *operand, int32_t operandDigits);

/* What all functions below look like: from source to target; they return target. */
#define ZOR_MOVE(name)                                                                             \
    ZOR_EXPORT uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,         \
                             int32_t sourceDigits);

/* ---- copies: Cpy keeps the value, ABS its magnitude, NEG inverts the sign; NEG of zero is
 * positive zero, or negative when negative zeros are kept. NEG, and ABS of Pckd, validate the
 * source unless COBOL_BCD_NOVALIDATE bit 0x01 forbids it, the others when COBOL_BCD_SAFE or bit
 * 0x10 asks for it; then a Cpy of ZndTS or ZndLS issues message 40 for a bad sign, which it copies
 * as it is. Counts below 1 are outside the contract. */
ZOR_MOVE(_zorcBCD_Cpy_Pckd)
ZOR_MOVE(_zorcBCD_Cpy_Znd)
ZOR_MOVE(_zorcBCD_Cpy_ZndLO)
ZOR_MOVE(_zorcBCD_Cpy_ZndUS)
ZOR_MOVE(_zorcBCD_Cpy_ZndTS)
ZOR_MOVE(_zorcBCD_Cpy_ZndLS)

ZOR_MOVE(_zorcBCD_ABS_Pckd)
ZOR_MOVE(_zorcBCD_ABS_Znd)
ZOR_MOVE(_zorcBCD_ABS_ZndLO)
ZOR_MOVE(_zorcBCD_NEG_Pckd)
ZOR_MOVE(_zorcBCD_NEG_Znd)
ZOR_MOVE(_zorcBCD_NEG_ZndLO)

/* ---- shifts: Left multiplies by 10 to the power shift, Right divides and truncates towards zero,
 * RightRnd divides and rounds halves away from zero. shift is at least 0; 0 copies. A carry out of
 * the target is lost. Nothing is validated; a bad separate sign is copied as it is. Counts below 1
 * are outside the contract. */
#define ZOR_SHIFT(name)                                                                            \
    ZOR_EXPORT uint8_t *name(const uint8_t *source, uint8_t *target, int32_t targetDigits,         \
                             int32_t sourceDigits, int32_t shift);
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_Left)
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_Right)
ZOR_SHIFT(_zorcBCD_SHFD_Pckd_RightRnd)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_Left)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_Right)
ZOR_SHIFT(_zorcBCD_SHFD_Znd_RightRnd)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_Left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_Right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLO_RightRnd)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_Left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_Right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndUS_RightRnd)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_Left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_Right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndTS_RightRnd)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_Left)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_Right)
ZOR_SHIFT(_zorcBCD_SHFD_ZndLS_RightRnd)
#undef ZOR_SHIFT

/* ---- conversions, for each ordered pair of forms but packed to packed. A bad separate sign of a
 * source issues message 40 and counts as positive, unless the target is unsigned. A packed source
 * is validated unless COBOL_BCD_NOVALIDATE bit 0x01 forbids it, a zoned one when COBOL_BCD_SAFE or
 * bit 0x10 asks for it.
 *
 * An unsigned target gets the magnitude. A negative packed value that is cut down to zeros in a
 * zoned target stays negative; a zoned one turns positive. With COBOL_BCD_EBCDIC the overpunch
 * letters are written to ZndTO and ZndLO ("{", "A" to "I"; negative "}", "J" to "R"), except from
 * ZndUS, and read from the last digit of a zoned source to packed. From ZndUS to Pckd a stray "+",
 * "-" or blank is taken before the digits, and "+" or "-" behind them. Counts below 1 are outside
 * the contract. */
ZOR_MOVE(_zorcBCD_CONV_Pckd_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_Pckd_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_Pckd_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_Pckd_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_Pckd_To_ZndUS)

ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_ZndUS)
ZOR_MOVE(_zorcBCD_CONV_ZndTO_To_Pckd)

ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_ZndUS)
ZOR_MOVE(_zorcBCD_CONV_ZndTS_To_Pckd)

ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_ZndUS)
ZOR_MOVE(_zorcBCD_CONV_ZndLO_To_Pckd)

ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_ZndUS)
ZOR_MOVE(_zorcBCD_CONV_ZndLS_To_Pckd)

ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_ZndTO)
ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_ZndTS)
ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_ZndLO)
ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_ZndLS)
ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_ZndUS)
ZOR_MOVE(_zorcBCD_CONV_ZndUS_To_Pckd)
#undef ZOR_MOVE

ZOR_END_C

#endif

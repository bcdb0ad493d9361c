/* Fixed-decimal arithmetic on packed and zoned storage.
 *
 * An operand is a byte address of any alignment and a count of decimal digits, at least 1; a count
 * below 1 is outside the contract. There is no scale: the caller aligns decimal points beforehand.
 * Arguments run against each other: addresses first to last, counts last to first, the target's
 * first of all.
 *
 *   Pckd  packed decimal, digits / 2 + 1 bytes: digits in nibbles, the sign in the low nibble
 *         of the last byte (0xB and 0xD negative, all others positive; 0xC and 0xD are stored).
 *         With an even count the first high nibble is a pad: stored as 0, read as a digit.
 *   Znd   zoned, one byte per digit, the sign in the zone of the last byte: 0x30 + digit or,
 *         negative, 0x70 + digit are stored; EBCDIC zones and overpunch letters are read too.
 *         (Only the move from ZndTO to packed needs COBOL_BCD_EBCDIC for that: decimal_moves.h.)
 *
 * Copies, shifts and comparisons stand in decimal_moves.h, conversions to and from integers and
 * floating forms in decimal_convert.h.
 *
 * The target receives the low-order digits of the true result and its sign; lost high-order digits
 * are not reported. A zero result may carry a negative sign. Operands are validated unless the
 * environment says otherwise (COBOL_BCD_NOVALIDATE): message 903 for each bad one. COBOL_BCD_DEBUG
 * traces the calls on stderr. The first call reads the environment. */
#ifndef ZOR_DECIMAL_H
#define ZOR_DECIMAL_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* target = op1 + op2, op1 - op2, op1 * op2. Return target. The target may be an operand; for a
 * product as long as the digits of the operands add up to at most 64 (packed) or 126 (zoned).
 * Counts below 1 are outside the contract. */
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                      int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                      int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_MPY_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                      int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                     int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                     int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_MPY_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                     int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);

/* Quotient (DIV) or remainder (MOD) of op1 by op2 into the target; return target. Quotients are
 * truncated towards zero, a remainder has the sign of the dividend. At most 126 bytes of dividend
 * and 64 of divisor and quotient. A zero divisor issues message 902; the target is then undefined.
 * Counts below 1 are outside the contract. */
ZOR_EXPORT uint8_t *_zorcBCD_DIV_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                      int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_MOD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                      int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_DIV_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                     int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);
ZOR_EXPORT uint8_t *_zorcBCD_MOD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                     int32_t targetDigits, int32_t op2Digits, int32_t op1Digits);

/* Quotient and remainder together. Packed: returns 1, or 0 when the dividend is below the divisor
 * and the quotient is zero for that. Zoned: returns the quotient. Limits and zero divisors as for
 * DIV. Counts below 1 are outside the contract. */
ZOR_EXPORT int32_t _zorcBCD_DIVR_Pckd(const uint8_t *dividend, const uint8_t *divisor,
                                      uint8_t *quotient, uint8_t *remainder,
                                      int32_t remainderDigits, int32_t quotientDigits,
                                      int32_t divisorDigits, int32_t dividendDigits);
ZOR_EXPORT uint8_t *_zorcBCD_DIVR_Znd(const uint8_t *dividend, const uint8_t *divisor,
                                      uint8_t *quotient, uint8_t *remainder,
                                      int32_t remainderDigits, int32_t quotientDigits,
                                      int32_t divisorDigits, int32_t dividendDigits);

/* Add a binary value to the accumulator, or subtract it, in place; return accumulator. A value of 0
 * leaves the bytes as they are. Counts below 1 are outside the contract. */
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Pckd_Int8(uint8_t *accumulator, int32_t digits, int64_t value);
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Pckd_Int4(uint8_t *accumulator, int32_t digits, int32_t value);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Pckd_Int8(uint8_t *accumulator, int32_t digits, int64_t value);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Pckd_Int4(uint8_t *accumulator, int32_t digits, int32_t value);
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Znd_Int8(uint8_t *accumulator, int32_t digits, int64_t value);
ZOR_EXPORT uint8_t *_zorcBCD_ADD_Znd_Int4(uint8_t *accumulator, int32_t digits, int32_t value);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Znd_Int8(uint8_t *accumulator, int32_t digits, int64_t value);
ZOR_EXPORT uint8_t *_zorcBCD_SUB_Znd_Int4(uint8_t *accumulator, int32_t digits, int32_t value);

ZOR_END_C

#endif

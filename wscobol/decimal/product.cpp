// MPY of packed and zoned items.
#include <algorithm>
#include <cstring>

#include "decimal.h"
#include "decimal/arith_frame.h"
#include "decimal/limbs.h"

namespace zor::decimal {
namespace {

// The product of na and nb limbs by columns, na + nb limbs. A column is the sum of at most 18
// products, see splitLimb.
inline void multiplyLimbs(const uint32_t *a, int32_t na, const uint32_t *b, int32_t nb,
                          uint32_t *product) {
    uint32_t carry = 0;
#pragma GCC unroll 8
    for (int32_t column = 0; column < na + nb - 1; ++column) {
        uint64_t total = carry;
        const int32_t last = std::min(column, na - 1);
#pragma GCC unroll 4
        for (int32_t i = std::max(0, column - nb + 1); i <= last; ++i) {
            total += uint64_t{a[i]} * b[column - i];
        }
        const LimbSplit split = splitLimb(total);
        product[column] = split.rest;
        carry = split.quotient;
    }
    product[na + nb - 1] = carry;
}

// An operand of a product, its digits cut to those that reach the target.
struct Factor {
    const uint8_t *item;
    int32_t digits;
};

template <class Form>
inline Factor cutFactor(const uint8_t *item, int32_t digits, int32_t targetDigits) {
    const int32_t excess = Form::bytes(digits) - Form::bytes(targetDigits);
    return excess > 0 ? Factor{item + excess, Form::places(targetDigits)} : Factor{item, digits};
}

template <class Form>
inline bool signsDiffer(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                        int32_t op2Digits) {
    return Form::isNegative(op1, op1Digits) != Form::isNegative(op2, op2Digits);
}

constexpr int32_t kLongLimbs = 16;

int32_t significantLimbs(const uint32_t *limbs, int32_t count) {
    while (count > 1 && limbs[count - 1] == 0) {
        --count;
    }
    return count;
}

template <class Form>
void multiplyLong(const Factor &a, const Factor &b, bool negative, uint8_t *target,
                  int32_t targetDigits) {
    uint32_t limbsA[kLongLimbs];
    uint32_t limbsB[kLongLimbs];
    uint32_t product[2 * kLongLimbs] = {};
    LimbReader<Form>::read(limbsA, kLongLimbs, a.item, a.digits);
    LimbReader<Form>::read(limbsB, kLongLimbs, b.item, b.digits);
    multiplyLimbs(limbsA, significantLimbs(limbsA, kLongLimbs), limbsB,
                  significantLimbs(limbsB, kLongLimbs), product);
    storeLimbs<Form>(product, 2 * kLongLimbs, negative, target, targetDigits);
}

// ---- factors of any length, digit by digit in the target itself; the target is no operand then

template <class Form> unsigned digitAt(const uint8_t *item, int32_t digits, int32_t fromUnits) {
    if constexpr (Form::kSign == SignKind::packed) {
        const unsigned byte = item[digits / 2 - (fromUnits + 1) / 2];
        return fromUnits % 2 == 0 ? byte >> 4 : byte & 0x0FU;
    } else {
        const uint8_t byte = item[digits - 1 - fromUnits];
        return fromUnits == 0 ? zonedDigitValue(byte) : byte & 0x0FU;
    }
}

template <class Form>
void storeDigitAt(uint8_t *item, int32_t digits, int32_t fromUnits, unsigned digit) {
    if constexpr (Form::kSign == SignKind::packed) {
        uint8_t &byte = item[digits / 2 - (fromUnits + 1) / 2];
        byte = static_cast<uint8_t>(fromUnits % 2 == 0 ? (byte & 0x0FU) | digit << 4
                                                       : (byte & 0xF0U) | digit);
    } else {
        item[digits - 1 - fromUnits] = static_cast<uint8_t>(kZone | digit);
    }
}

template <class Form>
void multiplyInTarget(const Factor &a, const Factor &b, bool negative, uint8_t *target,
                      int32_t targetDigits) {
    const int32_t places = Form::places(targetDigits);
    const int32_t placesA = Form::places(a.digits);
    const int32_t placesB = Form::places(b.digits);
    std::memset(target, Form::kSign == SignKind::packed ? 0 : kZone,
                static_cast<size_t>(Form::bytes(targetDigits)));
    for (int32_t i = 0; i < placesB && i < places; ++i) {
        const unsigned factor = digitAt<Form>(b.item, b.digits, i);
        unsigned carry = 0;
        for (int32_t k = 0; i + k < places && (k < placesA || carry != 0); ++k) {
            const unsigned digit = k < placesA ? digitAt<Form>(a.item, a.digits, k) : 0;
            const unsigned value =
                digit * factor + carry + digitAt<Form>(target, targetDigits, i + k);
            storeDigitAt<Form>(target, targetDigits, i + k, value % 10);
            carry = value / 10;
        }
    }
    Form::storeSign(target, targetDigits, negative);
    if constexpr (Form::kSign == SignKind::packed) {
        Form::clearPad(target, targetDigits);
    }
}

} // namespace

template <class Form>
[[gnu::noinline]] uint8_t *multiplyAny(const uint8_t *op1, const uint8_t *op2, uint8_t *target,
                                       int32_t targetDigits, int32_t op2Digits, int32_t op1Digits) {
    checkArithmetic<Form>(op1, op1Digits, op2, op2Digits);
    const bool negative = signsDiffer<Form>(op1, op1Digits, op2, op2Digits);
    const Factor a = cutFactor<Form>(op1, op1Digits, targetDigits);
    const Factor b = cutFactor<Form>(op2, op2Digits, targetDigits);
    if (Form::places(std::max(a.digits, b.digits)) <= kLongLimbs * kLimbDigits) {
        multiplyLong<Form>(a, b, negative, target, targetDigits);
    } else {
        multiplyInTarget<Form>(a, b, negative, target, targetDigits);
    }
    return target;
}

// Both factors of at most N limbs.
template <class Form, int32_t N>
[[gnu::always_inline]] inline uint8_t *multiplyShort(const uint8_t *op1, const uint8_t *op2,
                                                     uint8_t *target, int32_t targetDigits,
                                                     int32_t op2Digits, int32_t op1Digits) {
    uint32_t a[kBlockLimbs];
    uint32_t b[kBlockLimbs];
    const bool good1 = LimbReader<Form>::template readShort<N>(a, op1, op1Digits);
    const bool good2 = LimbReader<Form>::template readShort<N>(b, op2, op2Digits);
    if (!(good1 && good2)) {
        return multiplyAny<Form>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    const bool negative = signsDiffer<Form>(op1, op1Digits, op2, op2Digits);
    uint32_t product[2 * N];
    multiplyLimbs(a, N, b, N, product);
    LimbWriter<Form> writer(target, targetDigits, negative);
    if constexpr (N == 1) {
        writer.put(blockOfLimbs(product[0], product[1], 0, 0));
    } else {
        for (int32_t at = 0; at < 2 * N; at += kBlockLimbs) {
            if (!writer.put(
                    blockOfLimbs(product[at], product[at + 1], product[at + 2], product[at + 3]))) {
                break;
            }
        }
    }
    writer.finish();
    return target;
}

template <class Form>
[[gnu::always_inline]] inline uint8_t *multiply(const uint8_t *op1, const uint8_t *op2,
                                                uint8_t *target, int32_t targetDigits,
                                                int32_t op2Digits, int32_t op1Digits) {
    const int32_t longest = Form::places(std::max(op1Digits, op2Digits));
    if (longest <= kLimbDigits) {
        return multiplyShort<Form, 1>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    if (longest <= 2 * kLimbDigits) {
        return multiplyShort<Form, 2>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    if (longest <= 4 * kLimbDigits) {
        return multiplyShort<Form, 4>(op1, op2, target, targetDigits, op2Digits, op1Digits);
    }
    return multiplyAny<Form>(op1, op2, target, targetDigits, op2Digits, op1Digits);
}

} // namespace zor::decimal

using namespace zor::decimal;

ZOR_BINARY_FUNCTION(_zorcBCD_MPY_Pckd, Packed, "mpy packed...\n", multiply, multiplyAny<Packed>)
ZOR_BINARY_FUNCTION(_zorcBCD_MPY_Znd, ZonedTrailing, "mpy zoned...\n", multiply,
                    multiplyAny<ZonedTrailing>)

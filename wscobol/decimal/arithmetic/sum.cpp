// ADD and SUB of packed and zoned items, and the increments in place by a binary value. The signs
// decide what is done with the magnitudes: 123 + (-45) and 123 - 45 are both the difference 78, and
// 45 + (-123) is the same with the sign of the greater magnitude.
#include <algorithm>
#include <cstring>

#include "decimal.h"
#include "decimal/arithmetic/arithmetic_call.h"
#include "decimal/arithmetic/sum_blocks.h"
#include "decimal/arithmetic/zoned_sum.h"

namespace zor::decimal {
namespace {

// ---- any length and any data: a packed byte or a zoned digit a step

template <class Form> struct Unit;

// A packed byte stands for two digits. Of the last one the sign is left out.
template <> struct Unit<Packed> {
    static constexpr uint8_t kZero = 0;
    static uint8_t digits(uint8_t byte) { return byte; }
    static uint8_t lastDigits(uint8_t byte) { return byte & 0xF0U; }
    static bool isLeadingZero(uint8_t byte) { return byte == 0; }

    // With 6 more in a digit a decimal carry is a binary one. A nibble above 9 counts by its value.
    static uint8_t add(uint8_t a, uint8_t b, unsigned &carry) {
        const unsigned augend = a + carry;
        const unsigned sum = augend + b;
        const unsigned biased = sum + 0x66;
        const unsigned lowCarry = (augend ^ b ^ biased) >> 4 & 1;
        carry = biased > 0xFF ? 1 : 0;
        return static_cast<uint8_t>(sum + lowCarry * 0x06 + carry * 0x60);
    }
    static uint8_t subtract(uint8_t a, uint8_t b, unsigned &borrow) {
        int value = pairToValue[a] - pairToValue[b] - static_cast<int>(borrow);
        borrow = value < 0 ? 1 : 0;
        value += value < 0 ? 100 : 0;
        return valueToPair[static_cast<unsigned>(std::max(value, 0))]; // -1 for no digits only
    }
};

template <> struct Unit<ZonedTrailing> {
    static constexpr uint8_t kZero = kZone;
    static uint8_t digits(uint8_t byte) { return byte & 0x0FU; }
    static uint8_t lastDigits(uint8_t byte) { return zonedDigitValue(byte); }
    static bool isLeadingZero(uint8_t byte) { return (byte & 0x0FU) == 0; }

    static uint8_t add(uint8_t a, uint8_t b, unsigned &carry) {
        const unsigned sum = a + b + carry;
        carry = sum > 9 ? 1 : 0;
        return static_cast<uint8_t>(kZone | ((sum + carry * 6) & 0x0FU));
    }
    static uint8_t subtract(uint8_t a, uint8_t b, unsigned &borrow) {
        const int value = a - b - static_cast<int>(borrow);
        borrow = value < 0 ? 1 : 0;
        return static_cast<uint8_t>(kZone | ((value < 0 ? value + 10 : value) & 0x0F));
    }
};

// The significant bytes of an operand.
template <class Form> struct Magnitude {
    Magnitude(const uint8_t *item, int32_t digits) : first(item), bytes(Form::bytes(digits)) {
        while (bytes > 1 && Unit<Form>::isLeadingZero(*first)) {
            ++first;
            --bytes;
        }
    }
    // The digits of a unit, counted from the last byte.
    uint8_t unit(int32_t fromEnd) const { return Unit<Form>::digits(first[bytes - 1 - fromEnd]); }
    uint8_t lastUnit() const { return Unit<Form>::lastDigits(first[bytes - 1]); }
    bool isBelow(const Magnitude &other) const {
        if (bytes != other.bytes) {
            return bytes < other.bytes;
        }
        for (int32_t at = bytes - 1; at > 0; --at) {
            if (unit(at) != other.unit(at)) {
                return unit(at) < other.unit(at);
            }
        }
        return lastUnit() < other.lastUnit();
    }

    const uint8_t *first;
    int32_t bytes;
};

// Stores the sum or difference of two magnitudes, the longer or not smaller one first, in the low
// bytes of the target. A byte of the longer one that no carry reaches is copied as it is.
template <class Form, bool subtract>
void combine(const Magnitude<Form> &a, const Magnitude<Form> &b, uint8_t *target,
             int32_t targetBytes) {
    using U = Unit<Form>;
    uint8_t *end = target + targetBytes;
    const int32_t room = std::min(targetBytes, a.bytes);
    const int32_t common = std::min(room, b.bytes);
    unsigned carry = 0;
    const auto store = [&](int32_t at, uint8_t unitA, uint8_t unitB) {
        end[-1 - at] = subtract ? U::subtract(unitA, unitB, carry) : U::add(unitA, unitB, carry);
    };
    store(0, a.lastUnit(), b.lastUnit());
    int32_t at = 1;
    for (; at < common; ++at) {
        store(at, a.unit(at), b.unit(at));
    }
    for (; at < room && carry != 0; ++at) {
        store(at, a.unit(at), 0);
    }
    const int32_t rest = room - at;
    memmove(end - room, a.first + a.bytes - room, static_cast<std::size_t>(rest));
    at = room;
    if (!subtract && carry != 0 && at < targetBytes) {
        ++at;
        end[-at] = U::kZero | 1;
    }
    memset(target, U::kZero, static_cast<std::size_t>(targetBytes - at));
}

template <class Form, bool subtract>
void sumByUnits(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                int32_t op2Digits, int32_t op1Digits) {
    const Magnitude<Form> a(op1, op1Digits);
    const Magnitude<Form> b(op2, op2Digits);
    bool negative = Form::isNegative(op1, op1Digits);
    const bool negative2 = Form::isNegative(op2, op2Digits) != subtract;
    const int32_t targetBytes = Form::bytes(targetDigits);
    if (negative == negative2) {
        const bool swap = a.bytes < b.bytes;
        combine<Form, false>(swap ? b : a, swap ? a : b, target, targetBytes);
    } else if (a.isBelow(b)) {
        negative = negative2;
        combine<Form, true>(b, a, target, targetBytes);
    } else {
        combine<Form, true>(a, b, target, targetBytes);
    }
    Form::storeSign(target, targetDigits, negative);
    Form::clearPad(target, targetDigits);
}

// target = op1 + op2 or op1 - op2.
template <class F, bool subtract> struct Sum {
    using Form = F;
    static constexpr const char *kVerb = subtract ? "sub" : "add";
    static constexpr auto compute = sumByUnits<Form, subtract>;

    // Well-formed items need no other test than that of their digits.
    [[gnu::always_inline]] static bool answer(const uint8_t *op1, const uint8_t *op2,
                                              uint8_t *target, int32_t targetDigits,
                                              int32_t op2Digits, int32_t op1Digits) {
        using S = SumForm<Form>;
        const int32_t longest = Form::bytes(std::max(std::max(op1Digits, op2Digits), targetDigits));
        const auto add = [=]<class Number>(Number) __attribute__((always_inline)) {
            return addItems<Form, subtract, Number>(op1, op2, target, targetDigits, op2Digits,
                                                    op1Digits);
        };
        if constexpr (Form::kSign == SignKind::packed) {
            if (longest <= S::kWord) {
                return add(Word());
            }
        } else if (longest <= kBlockBytes) {
            return addShortZoned<subtract>(op1, op2, target, targetDigits, op2Digits, op1Digits);
        }
        if (longest <= S::kBlock) {
            return add(Blocks<1>());
        }
        if constexpr (S::kMaxBytes > S::kBlock) {
            return longest <= S::kMaxBytes && add(Blocks<2>());
        }
        return false;
    }
};

// ---- increments by a binary value

// Any length and any data: the value becomes an item. But one of 0 leaves the bytes alone.
template <class Form, bool subtract>
[[gnu::noinline]] void watchedIncrement(const char *header, uint8_t *accumulator, int32_t digits,
                                        int64_t value) {
    const WatchedCall call(Behind::colon, header);
    call.item<Form>("op1: ", accumulator, digits);
    call.line("op2: %lld\n", value);
    call.validateArithmetic<Form>(accumulator, digits);
    if (value != 0) {
        constexpr int32_t kDigits = 20;
        uint8_t item[kDigits];
        storeMagnitude<Form>(magnitudeOf(value), value < 0, item, kDigits);
        sumByUnits<Form, subtract>(accumulator, item, accumulator, digits, kDigits, digits);
    }
    call.item<Form>("dst: ", accumulator, digits);
}

template <class Form, bool subtract, class Value>
[[gnu::always_inline]] inline uint8_t *increment(const char *header, uint8_t *accumulator,
                                                 int32_t digits, Value value) {
    const auto magnitude = magnitudeOf(value);
    const bool negative = (value < 0) != subtract;
    bool done = false;
    if (__builtin_expect(!mayTrace() && magnitude != 0, 1)) {
        const int32_t bytes = Form::bytes(digits);
        if (bytes <= SumForm<Form>::kWord && magnitude < kUnitsPower<Form>) {
            done = addInteger<Form, Word>(accumulator, digits, magnitude, negative);
        } else if (bytes <= SumForm<Form>::kBlock) {
            done = addInteger<Form, Blocks<1>>(accumulator, digits, magnitude, negative);
        }
    }
    if (__builtin_expect(!done, 0)) {
        watchedIncrement<Form, subtract>(header, accumulator, digits, value);
    }
    return accumulator;
}

} // namespace
} // namespace zor::decimal

using namespace zor::decimal;

ZOR_ARITHMETIC(_zorcBCD_ADD_Pckd, Sum<Packed, false>)
ZOR_ARITHMETIC(_zorcBCD_SUB_Pckd, Sum<Packed, true>)
ZOR_ARITHMETIC(_zorcBCD_ADD_Znd, Sum<ZonedTrailing, false>)
ZOR_ARITHMETIC(_zorcBCD_SUB_Znd, Sum<ZonedTrailing, true>)

#define ZOR_INCREMENT(name, Integer, Form, subtract, header)                                       \
    uint8_t *name(uint8_t *accumulator, int32_t digits, Integer value) {                           \
        return increment<Form, subtract>(header, accumulator, digits, value);                      \
    }
ZOR_INCREMENT(_zorcBCD_ADD_Pckd_Int8, int64_t, Packed, false, "inc packed_int64...\n")
ZOR_INCREMENT(_zorcBCD_ADD_Pckd_Int4, int32_t, Packed, false, "inc packed_int32...\n")
ZOR_INCREMENT(_zorcBCD_SUB_Pckd_Int8, int64_t, Packed, true, "dec packed_int64...\n")
ZOR_INCREMENT(_zorcBCD_SUB_Pckd_Int4, int32_t, Packed, true, "dec packed_int32...\n")
ZOR_INCREMENT(_zorcBCD_ADD_Znd_Int8, int64_t, ZonedTrailing, false, "inc zoned_int64...\n")
ZOR_INCREMENT(_zorcBCD_ADD_Znd_Int4, int32_t, ZonedTrailing, false, "inc zoned_32...\n")
ZOR_INCREMENT(_zorcBCD_SUB_Znd_Int8, int64_t, ZonedTrailing, true, "dec zoned_int64...\n")
ZOR_INCREMENT(_zorcBCD_SUB_Znd_Int4, int32_t, ZonedTrailing, true, "dec zoned_int32...\n")

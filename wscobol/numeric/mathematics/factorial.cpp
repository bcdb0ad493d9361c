// FACTORIAL, from tables that the compiler computes.
#include <array>
#include <cstdint>
#include <cstring>

#include "base/message_list.h"
#include "base/wide_arguments.h"
#include "decimal/floating/float_forms.h"
#include "mathematics.h"

namespace zor::numeric {
namespace {

constexpr int32_t kMostPacked = 50;
constexpr int32_t kMostDecimal = 31;
constexpr int32_t kRowDigits = 65;
constexpr std::size_t kRowBytes = 33;

using PackedRow = std::array<uint8_t, kRowBytes>;

// n! as packed numbers with a sign.
constexpr std::array<PackedRow, kMostPacked + 1> factorialPacked = [] {
    constexpr uint8_t kPlus = 0xC;
    std::array<PackedRow, kMostPacked + 1> rows{};
    std::array<uint8_t, kRowDigits> digits{}; // the last one first
    digits[0] = 1;
    for (int32_t n = 0; n <= kMostPacked; ++n) {
        int32_t carry = 0;
        for (uint8_t &digit : digits) {
            const int32_t product = digit * (n == 0 ? 1 : n) + carry;
            digit = static_cast<uint8_t>(product % 10);
            carry = product / 10;
        }
        PackedRow &row = rows[static_cast<std::size_t>(n)];
        row.back() = static_cast<uint8_t>(digits[0] << 4 | kPlus);
        for (std::size_t i = 1; i < digits.size(); i += 2) {
            row[kRowBytes - 2 - i / 2] = static_cast<uint8_t>(digits[i + 1] << 4 | digits[i]);
        }
    }
    return rows;
}();

// The bits of a decimal128, as they lie in storage.
struct DecimalBits {
    uint64_t low;
    uint64_t high;
};

// n! with one fraction digit, as long as the form has digits for it.
constexpr std::array<DecimalBits, kMostDecimal + 1> factorialDecimal = [] {
    constexpr int32_t kExponentShift = 49;                      // within the high half
    const auto times = [](DecimalBits value, uint64_t factor) { // of at most 32 bits
        const uint64_t low = (value.low & UINT32_MAX) * factor;
        const uint64_t middle = (value.low >> 32) * factor + (low >> 32);
        return DecimalBits{middle << 32 | (low & UINT32_MAX), value.high * factor + (middle >> 32)};
    };
    std::array<DecimalBits, kMostDecimal + 1> table{};
    DecimalBits factorial{1, 0};
    for (int32_t n = 0; n <= kMostDecimal; ++n) {
        factorial = times(factorial, static_cast<uint64_t>(n == 0 ? 1 : n));
        using Form = decimal::DecimalForm<ZorDecimal128>;
        DecimalBits entry = times(factorial, 10);
        int32_t exponent = -1;
        if (decimal::isAbove({entry.high, entry.low}, Form::kLargest)) {
            entry = factorial;
            exponent = 0;
        }
        entry.high |= static_cast<uint64_t>(exponent + Form::kBias) << kExponentShift;
        table[static_cast<std::size_t>(n)] = entry;
    }
    return table;
}();

bool isFactorial(int32_t n, int32_t most) {
    if (n < 0) {
        message::argumentIsNegative("FACTORIAL");
    }
    return n >= 0 && n <= most;
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorFactorial _Tvq_factorial(int32_t n) {
    ZorFactorial result{};
    if (isFactorial(n, kMostPacked)) {
        const PackedRow &row = factorialPacked[static_cast<std::size_t>(n)];
        memcpy(result.digits, row.data() + row.size() - sizeof result.digits, sizeof result.digits);
    } else {
        result.digits[sizeof result.digits - 1] = factorialPacked[0].back() & 0x0F;
    }
    return result;
}
ZorFactorial _Tvq_factorial_decpacked320(int32_t) __attribute__((alias("_Tvq_factorial")));

void _Tvq_factorial_deczoned630(int32_t /*n*/) {}

ZOR_WIDE(Wide<ZorDecimal128>, _Tvq_factorial_decfloat16, int32_t n) {
    if (n > kMostDecimal) {
        message::argumentAboveMaximum("FACTORIAL", kMostDecimal);
    }
    if (!isFactorial(n, kMostDecimal)) {
        return {ZorDecimal128(0)};
    }
    Wide<ZorDecimal128> result;
    memcpy(&result, &factorialDecimal[static_cast<std::size_t>(n)], sizeof result);
    return result;
}

// Packed and zoned arithmetic beside the compiler's decimal floating point and Boost's decimal
// numbers, each on the same values held in its own form.
#include <array>
#include <boost/multiprecision/cpp_dec_float.hpp>
#include <string>

#include "decimal.h"
#include "support/bench.h"

namespace {

typedef float D128 __attribute__((mode(TD)));
template <unsigned N>
using Boost = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<N>>;

using Binary = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);

// Hides a value from the optimiser, so that each round reads its operands anew.
template <class T> inline T &hidden(T &value) {
    T *address = &value;
    asm volatile("" : "+r"(address) : : "memory");
    return *address;
}

D128 decimal128(const std::string &digits) {
    D128 value = 0;
    for (const char digit : digits) {
        value = value * static_cast<D128>(10) + static_cast<D128>(digit - '0');
    }
    return value;
}

std::string packed(const std::string &digits) {
    const std::string nibbles = (digits.size() % 2 == 0 ? "0" : "") + digits + "<"; // '<' is 0x3C
    std::string bytes;
    for (std::size_t at = 0; at < nibbles.size(); at += 2) {
        bytes += static_cast<char>((nibbles[at] & 0x0F) << 4 | (nibbles[at + 1] & 0x0F));
    }
    return bytes;
}

struct Item {
    explicit Item(std::string text, std::size_t count) : bytes(std::move(text)), digits(count) {}
    const uint8_t *data() const { return reinterpret_cast<const uint8_t *>(bytes.data()); }
    std::string bytes;
    std::size_t digits;
};

double ours(Binary call, const Item &a, const Item &b, std::size_t targetDigits) {
    uint8_t target[128] = {};
    return bench::nanoseconds([&](unsigned times) {
        const auto t = static_cast<int32_t>(targetDigits);
        const auto d2 = static_cast<int32_t>(b.digits);
        const auto d1 = static_cast<int32_t>(a.digits);
        for (unsigned i = 0; i < times; ++i) {
            call(hidden(a).data(), hidden(b).data(), target, t, d2, d1);
            bench::keep(target);
        }
    });
}

template <class Number, class Operation> double peers(Number a, Number b, Operation operation) {
    Number result{};
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            hidden(result) = operation(hidden(a), hidden(b));
            bench::keep(result);
        }
    });
}

template <unsigned N, class Operation>
void compare(const std::string &name, Binary call, const Item &itemA, const Item &itemB,
             const std::string &a, const std::string &b, std::size_t targetDigits,
             Operation operation) {
    const double our = ours(call, itemA, itemB, targetDigits);
    bench::row(name, our, "_Decimal128", peers(decimal128(a), decimal128(b), operation));
    bench::row(name, our, "Boost cpp_dec_float", peers(Boost<N>(a), Boost<N>(b), operation));
}

const std::string kDigits1 = "9876543210987651234567890123456";
const std::string kDigits2 = "4321765987123451234567890123457";

template <unsigned N> void packedRows() {
    const std::string a = kDigits1.substr(0, N);
    const std::string b = kDigits2.substr(0, N);
    const std::string half = b.substr(0, N / 2 + 1);
    const Item itemA(packed(a), N);
    const Item itemB(packed(b), N);
    const Item itemHalf(packed(half), half.size());
    const std::string width = std::to_string(N);
    compare<N>("packed ADD, " + width + " digits", _zorcBCD_ADD_Pckd, itemA, itemB, a, b, N,
               [](const auto &x, const auto &y) { return x + y; });
    compare<N>("packed SUB, " + width + " digits", _zorcBCD_SUB_Pckd, itemA, itemB, a, b, N,
               [](const auto &x, const auto &y) { return x - y; });
    compare<N>("packed MPY, " + width + " digits", _zorcBCD_MPY_Pckd, itemA, itemB, a, b, 2 * N,
               [](const auto &x, const auto &y) { return x * y; });
    compare<N>("packed DIV, " + width + " digits", _zorcBCD_DIV_Pckd, itemA, itemB, a, b, N,
               [](const auto &x, const auto &y) { return x / y; });
    compare<N>("packed DIV, " + width + " by " + std::to_string(half.size()), _zorcBCD_DIV_Pckd,
               itemA, itemHalf, a, half, N, [](const auto &x, const auto &y) { return x / y; });
}

// A binary value added to items in place; several in turn, so that none waits for the one before.
template <class Value>
double incremented(uint8_t *(*call)(uint8_t *, int32_t, Value), const Item &item, Value value) {
    std::array<std::string, 64> items;
    items.fill(item.bytes);
    return bench::nanoseconds([&](unsigned times) {
        const auto digits = static_cast<int32_t>(item.digits);
        for (unsigned i = 0; i < times; ++i) {
            auto *accumulator = reinterpret_cast<uint8_t *>(items[i % items.size()].data());
            call(accumulator, digits, hidden(value));
            bench::keep(*accumulator);
        }
    });
}

template <class Number, class Value> double incrementedPeer(Number a, Value value) {
    Number result{};
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            hidden(result) = hidden(a) + static_cast<Number>(hidden(value));
            bench::keep(result);
        }
    });
}

template <unsigned N, class Value>
void incrementRows(const std::string &form, uint8_t *(*call)(uint8_t *, int32_t, Value),
                   std::string (*make)(const std::string &), Value value) {
    const std::string digits = kDigits1.substr(0, N);
    const std::string name = form + " ADD of int" + std::to_string(8 * sizeof value) + ", " +
                             std::to_string(N) + " digits";
    const double our = incremented(call, Item(make(digits), N), value);
    bench::row(name, our, "_Decimal128", incrementedPeer(decimal128(digits), value));
    bench::row(name, our, "Boost cpp_dec_float", incrementedPeer(Boost<N>(digits), value));
}

} // namespace

ZOR_BENCH(packedArithmetic) {
    packedRows<5>();
    packedRows<15>();
    packedRows<31>();
}

ZOR_BENCH(zonedArithmetic) {
    const std::string a = kDigits1.substr(0, 15);
    const std::string b = kDigits2.substr(0, 15);
    compare<15>("zoned ADD, 15 digits", _zorcBCD_ADD_Znd, Item(a, 15), Item(b, 15), a, b, 15,
                [](const auto &x, const auto &y) { return x + y; });
}

ZOR_BENCH(increments) {
    constexpr int64_t kLong = 123456789012345;
    const auto zoned = [](const std::string &digits) { return digits; };
    incrementRows<5, int32_t>("packed", _zorcBCD_ADD_Pckd_Int4, packed, 1);
    incrementRows<9, int32_t>("packed", _zorcBCD_ADD_Pckd_Int4, packed, 12345);
    incrementRows<18, int64_t>("packed", _zorcBCD_ADD_Pckd_Int8, packed, kLong);
    incrementRows<31, int64_t>("packed", _zorcBCD_ADD_Pckd_Int8, packed, kLong);
    incrementRows<9, int32_t>("zoned", _zorcBCD_ADD_Znd_Int4, zoned, 12345);
    incrementRows<18, int64_t>("zoned", _zorcBCD_ADD_Znd_Int8, zoned, kLong);
}

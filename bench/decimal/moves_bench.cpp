// Moves between packed and zoned storage, comparison and rounding shifts, through the exported
// functions with their frames, beside a loop over the digits and an SSSE3 routine that knows its
// length; the peers look at no option and validate nothing.
#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <tmmintrin.h>

#include "decimal_moves.h"
#include "support/bench.h"

namespace {

constexpr unsigned kItems = 256; // different values, so that no branch is learnt by heart
constexpr int32_t kRoom = 32;
using Items = std::array<std::array<uint8_t, kRoom>, kItems>;

struct Data {
    Items packed;
    Items zoned;
    Items copy; // the packed items again, elsewhere
};

Data makeData(int32_t digits) {
    Data data{};
    std::mt19937 random(7);
    for (unsigned item = 0; item < kItems; ++item) {
        const int32_t zeros = static_cast<int32_t>(random() % 8);
        for (int32_t at = 0; at < digits; ++at) {
            const unsigned digit = at < zeros ? 0 : random() % 10;
            data.zoned[item][static_cast<size_t>(at)] = static_cast<uint8_t>('0' + digit);
        }
        if (random() % 4 == 0) {
            data.zoned[item][static_cast<size_t>(digits) - 1] |= 0x40;
        }
        _zorcBCD_CONV_ZndTO_To_Pckd(data.zoned[item].data(), data.packed[item].data(), digits,
                                    digits);
    }
    data.copy = data.packed;
    return data;
}

// ---- loops over the digits

__attribute__((noinline)) void loopToZoned(const uint8_t *source, int32_t sourceDigits,
                                           uint8_t *target, int32_t targetDigits) {
    const uint8_t *from = source + sourceDigits / 2;
    const bool negative = (*from & 0x0F) == 0x0D || (*from & 0x0F) == 0x0B;
    for (int32_t at = 0; at < targetDigits; ++at) {
        int digit = 0;
        if (at < sourceDigits) {
            digit = at % 2 == 0 ? *from >> 4 : *--from & 0x0F;
        }
        target[targetDigits - 1 - at] = static_cast<uint8_t>('0' + digit);
    }
    if (negative) {
        target[targetDigits - 1] |= 0x40;
    }
}

__attribute__((noinline)) void loopToPacked(const uint8_t *source, int32_t sourceDigits,
                                            uint8_t *target, int32_t targetDigits) {
    const bool negative = (source[sourceDigits - 1] & 0xF0) == 0x70;
    int32_t to = targetDigits / 2;
    target[to] = negative ? 0x0D : 0x0C;
    for (int32_t at = 0; at < targetDigits; ++at) {
        const int digit = at < sourceDigits ? source[sourceDigits - 1 - at] & 0x0F : 0;
        if (at % 2 == 0) {
            target[to] = static_cast<uint8_t>(target[to] | digit << 4);
        } else {
            target[--to] = static_cast<uint8_t>(digit);
        }
    }
}

__attribute__((noinline)) void loopShiftRight(const uint8_t *source, int32_t digits,
                                              uint8_t *target, int32_t shift) {
    const auto digitAt = [=](int32_t at) { // from the end
        const uint8_t byte = source[digits / 2 - (at + 1) / 2];
        return at >= digits ? 0 : at % 2 == 0 ? byte >> 4 : byte & 0x0F;
    };
    memset(target, 0, static_cast<size_t>(digits / 2 + 1));
    int carry = digitAt(shift - 1) >= 5 ? 1 : 0;
    for (int32_t at = 0; at < digits; ++at) {
        int digit = (at + shift < digits ? digitAt(at + shift) : 0) + carry;
        carry = digit > 9 ? 1 : 0;
        digit = digit > 9 ? 0 : digit;
        uint8_t &byte = target[digits / 2 - (at + 1) / 2];
        byte = static_cast<uint8_t>(byte | (at % 2 == 0 ? digit << 4 : digit));
    }
    target[digits / 2] |= (source[digits / 2] & 0x0F) == 0x0D ? 0x0D : 0x0C;
}

// ---- SSSE3, for 31 digits alone

__attribute__((noinline, target("ssse3"))) void sseToZoned31(const uint8_t *source,
                                                             uint8_t *target) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
    const __m128i mask = _mm_set1_epi8(0x0F);
    const __m128i zones = _mm_set1_epi8('0');
    const __m128i high = _mm_and_si128(_mm_srli_epi16(bytes, 4), mask);
    const __m128i low = _mm_and_si128(bytes, mask);
    const __m128i first = _mm_or_si128(_mm_unpacklo_epi8(high, low), zones);
    const __m128i second = _mm_or_si128(_mm_unpackhi_epi8(high, low), zones);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), first);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target + 15), _mm_alignr_epi8(second, first, 15));
    if ((source[15] & 0x0F) == 0x0D) {
        target[30] |= 0x40;
    }
}

__attribute__((noinline, target("ssse3"))) void sseToPacked31(const uint8_t *source,
                                                              uint8_t *target) {
    const __m128i mask = _mm_set1_epi8(0x0F);
    const __m128i weights = _mm_set1_epi16(0x0110); // 16 for the left digit of a pair
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source));
    const __m128i second =
        _mm_srli_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(source + 15)), 1);
    const __m128i packed =
        _mm_packus_epi16(_mm_maddubs_epi16(_mm_and_si128(first, mask), weights),
                         _mm_maddubs_epi16(_mm_and_si128(second, mask), weights));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(target), packed);
    target[15] |= (source[30] & 0xF0) == 0x70 ? 0x0D : 0x0C;
}

template <class Operation> double measure(Operation operation) {
    return bench::nanoseconds([operation](unsigned times) {
        for (unsigned at = 0; at < times; ++at) {
            operation(at % kItems);
        }
    });
}

void conversions(int32_t digits) {
    const Data data = makeData(digits);
    uint8_t target[kRoom];
    const std::string count = " " + std::to_string(digits) + " digits";
    const double toZoned = measure([&](unsigned at) {
        bench::keep(*_zorcBCD_CONV_Pckd_To_ZndTO(data.packed[at].data(), target, digits, digits));
    });
    const double toPacked = measure([&](unsigned at) {
        bench::keep(*_zorcBCD_CONV_ZndTO_To_Pckd(data.zoned[at].data(), target, digits, digits));
    });
    bench::row("packed to zoned" + count, toZoned, "digit loop", measure([&](unsigned at) {
                   loopToZoned(data.packed[at].data(), digits, target, digits);
                   bench::keep(target);
               }));
    bench::row("zoned to packed" + count, toPacked, "digit loop", measure([&](unsigned at) {
                   loopToPacked(data.zoned[at].data(), digits, target, digits);
                   bench::keep(target);
               }));
    if (digits == 31 && __builtin_cpu_supports("ssse3")) {
        bench::row("packed to zoned" + count, toZoned, "SSSE3, 31 only", measure([&](unsigned at) {
                       sseToZoned31(data.packed[at].data(), target);
                       bench::keep(target);
                   }));
        bench::row("zoned to packed" + count, toPacked, "SSSE3, 31 only", measure([&](unsigned at) {
                       sseToPacked31(data.zoned[at].data(), target);
                       bench::keep(target);
                   }));
    }
}

void comparison(int32_t digits) {
    const Data data = makeData(digits);
    const auto bytes = static_cast<size_t>(digits / 2 + 1);
    int (*volatile compare)(const void *, const void *, size_t) = memcmp;
    const std::string count = std::to_string(digits) + " digits";
    bench::row("EQU packed, equal, " + count, measure([&](unsigned at) {
                   const int32_t equal = _zorcBCD_EQU_Pckd(data.packed[at].data(),
                                                           data.copy[at].data(), digits, digits);
                   bench::keep(equal);
               }),
               "memcmp", measure([&](unsigned at) {
                   const int order = compare(data.packed[at].data(), data.copy[at].data(), bytes);
                   bench::keep(order);
               }));
    bench::row("GRT packed, different, " + count, measure([&](unsigned at) {
                   const int32_t above = _zorcBCD_GRT_Pckd(
                       data.packed[at].data(), data.copy[(at + 1) % kItems].data(), digits, digits);
                   bench::keep(above);
               }),
               "memcmp", measure([&](unsigned at) {
                   const int order =
                       compare(data.packed[at].data(), data.copy[(at + 1) % kItems].data(), bytes);
                   bench::keep(order);
               }));
}

void shifts(int32_t digits) {
    const Data data = makeData(digits);
    uint8_t target[kRoom];
    for (const int32_t shift : {2, 3}) {
        bench::row("shift right rounding by " + std::to_string(shift) + ", " +
                       std::to_string(digits) + " digits",
                   measure([&](unsigned at) {
                       bench::keep(*_zorcBCD_SHFD_Pckd_RightRnd(data.packed[at].data(), target,
                                                                digits, digits, shift));
                   }),
                   "digit loop", measure([&](unsigned at) {
                       loopShiftRight(data.packed[at].data(), digits, target, shift);
                       bench::keep(target);
                   }));
    }
}

ZOR_BENCH(decimalMoves) {
    for (const int32_t digits : {15, 31}) {
        conversions(digits);
    }
    for (const int32_t digits : {15, 31}) {
        comparison(digits);
    }
    for (const int32_t digits : {15, 31}) {
        shifts(digits);
    }
}

} // namespace

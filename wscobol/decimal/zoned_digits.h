// Zoned digit bytes of all forms: placed in a target as plain digits, without a sign.
#ifndef ZOR_DECIMAL_ZONED_DIGITS_H
#define ZOR_DECIMAL_ZONED_DIGITS_H

#include <algorithm>
#include <cstdint>

#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "decimal/forms.h"
#include "decimal/leading_zeros.h"

namespace zor::decimal {

// Whether all bytes have the zone of plain digits. The length may be 0 or less.
inline bool allPlainZones(const uint8_t *address, int32_t length) {
    const auto otherBits = [](__m128i bytes) {
        return _mm_and_si128(_mm_xor_si128(bytes, _mm_set1_epi8(kZone)),
                             _mm_set1_epi8(static_cast<char>(0xF0)));
    };
    __m128i other = _mm_setzero_si128();
    if (length >= 16) {
        for (int32_t at = 0; at <= length - 16; at += 16) {
            other = _mm_or_si128(other, otherBits(loadFull(address + at)));
        }
        other = _mm_or_si128(other, otherBits(loadFull(address + length - 16)));
    } else if (length >= 8) {
        other = otherBits(_mm_unpacklo_epi64(loadHalf(address), loadHalf(address + length - 8)));
    } else {
        for (int32_t at = 0; at < length; ++at) {
            if ((address[at] & 0xF0U) != kZone) {
                return false;
            }
        }
        return true;
    }
    return _mm_movemask_epi8(_mm_cmpeq_epi8(other, _mm_setzero_si128())) == 0xFFFF;
}

// Whether the first digit byte of a form carries its sign.
template <class Form>
inline constexpr bool kSignLeads = (Form::kSign == SignKind::overpunch) && Form::kLeading;

// Puts source digits, right-justified, into the room at the target's front, "0" before them: the
// first kept ones, or as many of them as fit. They are copied as they are, but leading zeros of the
// source become "0", and the last digit and the one that carried a leading sign become plain.
// kept and room are at least 1. The target may overlap the source.
template <class Form>
inline void placeDigits(const uint8_t *source, int32_t kept, uint8_t *target, int32_t room,
                        int32_t leadingZeros = 0) {
    const uint8_t last = source[kept - 1];
    const uint8_t first = source[0];
    const int32_t moved = std::min(kept, room);
    const int32_t cut = kept - moved;
    moveBytes(target + room - moved, source + cut, moved);
    if constexpr (kSignLeads<Form>) {
        if (cut == 0) {
            target[room - moved] = plainDigit(first);
        }
    }
    const int32_t zeros = room - moved + std::max(std::min(leadingZeros, kept) - cut, 0);
    fillBytes(target, kZone, zeros);
    if (zeros < room) {
        target[room - 1] = plainDigit(last);
    }
}

// How many leading bytes to write as "0" when digits are shifted: zeros that are no "0" as they
// stand. 0 in the common case that there are only plain digits.
template <class Form> inline int32_t oddLeadingZeros(const uint8_t *source, int32_t digits) {
    // The bytes that may carry a sign are left out; they are decoded anyhow.
    const int32_t from = kSignLeads<Form> ? 1 : 0;
    if (__builtin_expect(allPlainZones(source + from, digits - 1 - from), 1)) {
        return 0;
    }
    if (kSignLeads<Form> && digits > 1) {
        return zonedDigitValue(source[0]) != 0 ? 0 : 1 + leadingZeroDigits(source + 1, digits - 1);
    }
    return leadingZeroDigits(source, digits);
}

} // namespace zor::decimal

#endif

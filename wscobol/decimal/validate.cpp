// Validation from the last byte on, in words as far as the bytes allow.
#include "decimal/validate.h"

#include <cstddef>

#include "decimal/digits.h"
#include "decimal/leading_zeros.h"
#include "decimal/options.h"
#include "decimal/words.h"

namespace zor::decimal {
namespace {

bool everythingPasses(Strictness strictness) {
    return strictness == Strictness::lenient && (loadBcdOptions() & NOVALIDATE_ARITH) != 0;
}

// Whether all nibbles of the bytes are at most 9.
bool allNibblesAreDigits(const uint8_t *address, int32_t bytes) {
    int32_t at = bytes;
    uint32_t above = 0;
    for (; at >= 4; at -= 4) {
        above |= nibblesAboveNine(loadWord<uint32_t>(address + at - 4));
    }
    for (; at > 0; --at) {
        above |= nibblesAboveNine<uint32_t>(address[at - 1]);
    }
    return above == 0;
}

// Whether all bytes of a word are "0" to "9".
template <class Word> bool isPlain(Word word) {
    constexpr auto kZones = static_cast<Word>(0xF0F0F0F0F0F0F0F0U);
    constexpr auto kPlain = static_cast<Word>(0x3030303030303030U);
    constexpr auto kToZone = static_cast<Word>(0x0606060606060606U); // carries a digit above 9
    return (word & kZones) == kPlain && (static_cast<Word>(word + kToZone) & kZones) == kPlain;
}

// Walks down from an address that is aligned for words, while more than a word of bytes is left.
// False at a word that has another byte than "0" to "9".
template <class Word> bool passWords(const uint8_t *&end, const uint8_t *start) {
    constexpr ptrdiff_t kBytes = sizeof(Word);
    if (reinterpret_cast<uintptr_t>(end) % kBytes == 0) {
        for (; end - start > kBytes; end -= kBytes) {
            if (!isPlain(loadWord<Word>(end - kBytes))) {
                return false;
            }
        }
    }
    return true;
}

bool isPlainOrNull(uint8_t byte) {
    return (byte >= '0' && byte <= '9') || byte == 0x00;
}

} // namespace

int32_t validatePacked(const uint8_t *address, int32_t digits, Strictness strictness) {
    if (everythingPasses(strictness)) {
        return 0;
    }
    int32_t bytes = digits / 2 + 1;
    if (strictness == Strictness::lenient) {
        while (bytes > 1 && address[0] == 0) {
            ++address;
            --bytes;
        }
    }
    const uint8_t last = address[bytes - 1];
    if (bytes == 1 && (last & 0x0FU) == 0) {
        return 0;
    }
    const bool valid =
        !isDigit(last & 0x0FU) && isDigit(last >> 4) && allNibblesAreDigits(address, bytes - 1);
    return valid ? 0 : 1;
}

int32_t validateZoned(const uint8_t *address, int32_t length, Strictness strictness) {
    if (everythingPasses(strictness)) {
        return 0;
    }
    const int32_t zeros =
        strictness == Strictness::lenient ? leadingZeroDigits(address, length) : 0;
    const uint8_t *start = address + zeros;
    const uint8_t *end = address + length - 1;
    if (!zonedCarriesSign(*end)) {
        return 1;
    }
    // A null among the digits passes where bytes are looked at one by one, not within a word.
    if (!passWords<uint64_t>(end, start) || !passWords<uint32_t>(end, start) ||
        !passWords<uint16_t>(end, start)) {
        return 1;
    }
    while (end > start) {
        --end;
        // A leading sign may stand in the item's first byte alone.
        if (!isPlainOrNull(*end) && !(end == address && zonedCarriesSign(*end))) {
            return 1;
        }
    }
    return 0;
}

bool packedIsZero(const uint8_t *address, int32_t digits) {
    const int32_t last = digits / 2;
    uint32_t any = address[last] & 0xF0U;
    int32_t at = last;
    for (; at >= 4; at -= 4) {
        any |= loadWord<uint32_t>(address + at - 4);
    }
    for (; at > 0; --at) {
        any |= address[at - 1];
    }
    return any == 0;
}

bool zonedIsZero(const uint8_t *address, int32_t length) {
    int32_t at = length - 1;
    uint32_t any = zonedDigitValue(address[at]);
    for (; at >= 4; at -= 4) {
        any |= loadWord<uint32_t>(address + at - 4) & 0x0F0F0F0FU;
    }
    for (; at > 0; --at) {
        any |= address[at - 1] & 0x0FU;
    }
    return any == 0;
}

} // namespace zor::decimal

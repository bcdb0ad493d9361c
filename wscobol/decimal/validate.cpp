#include "decimal/validate.h"

#include "decimal/digits.h"
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

// The bytes "0" to "9" of a word, without a test of each.
bool isPlain(uint32_t word) {
    return (word & 0xF0F0F0F0U) == 0x30303030U &&
           ((word + 0x06060606U) & 0xF0F0F0F0U) == 0x30303030U;
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
    int32_t first = 0;
    if (strictness == Strictness::lenient) {
        while (first < length - 1 && (address[first] & 0x0FU) == 0) {
            ++first;
        }
    }
    if (!zonedCarriesSign(address[length - 1])) {
        return 1;
    }
    // A leading sign may stand in the item's first byte alone.
    if (first == 0 && length > 1 && zonedCarriesSign(address[0])) {
        first = 1;
    }
    int32_t at = length - 1;
    while (at > first) {
        if (at - first >= 4 && isPlain(loadWord<uint32_t>(address + at - 4))) {
            at -= 4;
        } else if (isPlainOrNull(address[at - 1])) {
            --at;
        } else {
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

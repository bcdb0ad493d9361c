#include "decimal/packed_shift.h"

#include <algorithm>

#include "decimal/copy.h"
#include "decimal/windows.h"

namespace zor::decimal {
namespace {

// The bytes as one number, without its last nibble, right-justified in the target.
void moveNibbles(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetBytes) {
    uint8_t copy[kLongestItem];
    if (bytes > kWindow && targetBytes >= kWindow) {
        source = apartFrom(target, targetBytes, source, bytes, copy);
        do {
            const __m128i preceding = load16(source + bytes - kWindow - 1);
            const __m128i window = load16(source + bytes - kWindow);
            store16(target + targetBytes - kWindow,
                    _mm_or_si128(_mm_slli_epi16(lowNibbles(preceding), 4), highNibbles(window)));
            bytes -= kWindow;
            targetBytes -= kWindow;
        } while (bytes > kWindow && targetBytes >= kWindow);
    }
    const int32_t stored = std::min(bytes, targetBytes);
    if (stored > 0) {
        const int32_t loaded = std::min(bytes, stored + 1);
        const __m128i window = loadWindow(source + bytes - loaded, loaded);
        storeWindow(target + targetBytes - stored, stored, nibbleRight(window));
    }
    fillBytes(target, 0, targetBytes - stored);
}

// Adds 1 to the digits in front of the last byte; a carry out of them is lost.
void carryUp(uint8_t *target, int32_t bytes) {
    for (int32_t at = bytes - 1; at >= 0; --at) {
        const unsigned value = pairToValue[target[at]] + 1U;
        target[at] = valueToPair[value];
        if (value < 100) {
            return;
        }
    }
}

} // namespace

void packedShiftDigitsLeft(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                           int32_t targetDigits, int32_t shift) {
    const int32_t sourceBytes = Packed::bytes(sourceDigits);
    const int32_t targetBytes = Packed::bytes(targetDigits);
    const int32_t cleared = (shift + 1) / 2; // whole bytes at the target's end
    const int32_t room = targetBytes - cleared;
    if (shift % 2 != 0) {
        moveNibbles(source, sourceBytes, target, room);
    } else {
        const uint8_t last = source[sourceBytes - 1];
        copyRightJustified(source, sourceBytes, target, room, 0);
        target[room - 1] = last & 0xF0;
    }
    fillBytes(target + room, 0, cleared);
    Packed::clearPad(target, targetDigits);
}

void packedShiftDigitsRight(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                            int32_t targetDigits, int32_t shift, bool round) {
    const int32_t targetBytes = Packed::bytes(targetDigits);
    // The kept digits, and one more that is to fall into the place of the sign.
    const int32_t bytes = Packed::bytes(sourceDigits) - shift / 2;
    if (bytes <= 0) {
        fillBytes(target, 0, targetBytes);
        return;
    }
    unsigned last = source[bytes - 1];
    if (shift % 2 != 0) {
        last = last >> 4 | (bytes > 1 ? (source[bytes - 2] & 0x0FU) << 4 : 0);
        moveNibbles(source, bytes, target, targetBytes);
    } else {
        copyRightJustified(source, bytes, target, targetBytes, 0);
    }
    unsigned units = last >> 4;
    units += static_cast<unsigned>(round) & static_cast<unsigned>((last & 0x0F) >= 5);
    if (units > 9 && round) {
        units = 0;
        carryUp(target, targetBytes - 1);
    }
    target[targetBytes - 1] = static_cast<uint8_t>(units << 4);
    Packed::clearPad(target, targetDigits);
}

} // namespace zor::decimal

// The digits of a packed item moved by decimal places. Signs are the caller's; the sign nibble of
// the target is left 0. The target may overlap the source.
#ifndef ZOR_DECIMAL_MOVES_PACKED_SHIFT_H
#define ZOR_DECIMAL_MOVES_PACKED_SHIFT_H

#include <algorithm>
#include <cstdint>

#include "decimal/blocks.h"
#include "decimal/digit_copy.h"

namespace zor::decimal {

// More than 16 bytes into at least 16.
void moveLongNibbles(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetBytes);

// The bytes as one number, without its last nibble, right-justified in the target.
inline void moveNibbles(const uint8_t *source, int32_t bytes, uint8_t *target,
                        int32_t targetBytes) {
    if (bytes > kBlockBytes && targetBytes >= kBlockBytes) {
        moveLongNibbles(source, bytes, target, targetBytes);
        return;
    }
    const int32_t loaded = std::min(bytes, targetBytes + 1);
    const __m128i block = loadBlock(source + bytes - loaded, loaded);
    placeBlock(target, targetBytes, shiftDigitRight(block, _mm_slli_si128(block, 1)));
}

// The source times 10 to the power shift; shift is at least 1 and below targetDigits.
inline void packedShiftDigitsLeft(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                                  int32_t targetDigits, int32_t shift) {
    const int32_t sourceBytes = Packed::bytes(sourceDigits);
    const int32_t targetBytes = Packed::bytes(targetDigits);
    const int32_t cleared = shift / 2 + shift % 2; // whole bytes at the target's end
    const int32_t room = targetBytes - cleared;
    if (shift % 2 != 0) {
        moveNibbles(source, sourceBytes, target, room);
    } else {
        const uint8_t last = source[sourceBytes - 1];
        placePackedBytes(source, sourceBytes, target, room);
        target[room - 1] = last & 0xF0;
    }
    fillBytes(target + room, 0, cleared);
    Packed::clearPad(target, targetDigits);
}

// Adds 1 to packed digits in front of the sign's byte; a carry out of them is lost.
void carryUp(uint8_t *target, int32_t bytes);

// The source divided by 10 to the power shift, at least 1; with round, 1 is added when the highest
// dropped digit is 5 or more.
template <bool round>
inline void packedShiftDigitsRight(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                                   int32_t targetDigits, int32_t shift) {
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
        placePackedBytes(source, bytes, target, targetBytes);
    }
    unsigned units = last >> 4;
    if constexpr (round) {
        // Whether it rounds up cannot be foreseen: added without a branch.
        const bool roundsUp = (last & 0x0F) >= 5;
        units += static_cast<unsigned>(roundsUp);
        if (__builtin_expect(units > 9, 0) && roundsUp) { // what is no digit stays as it is
            units = 0;
            carryUp(target, targetBytes - 1);
        }
    }
    target[targetBytes - 1] = static_cast<uint8_t>(units << 4);
    Packed::clearPad(target, targetDigits);
}

} // namespace zor::decimal

#endif

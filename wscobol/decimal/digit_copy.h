// Copies that widen an item with zeros or narrow it by its high-order digits. The target may
// overlap the source.
#ifndef ZOR_DECIMAL_DIGIT_COPY_H
#define ZOR_DECIMAL_DIGIT_COPY_H

#include <algorithm>
#include <cstdint>

#include "decimal/blocks.h"
#include "decimal/bytes.h"
#include "decimal/digits.h"
#include "decimal/forms.h"

namespace zor::decimal {

// Stores a block right-justified, zeros before it.
inline void placeBlock(uint8_t *target, int32_t targetBytes, __m128i block) {
    if (targetBytes <= kBlockBytes) {
        storeBlock(target, targetBytes, block);
    } else {
        storeFull(target + targetBytes - kBlockBytes, block);
        fillBytes(target, 0, targetBytes - kBlockBytes);
    }
}

// Long items go block by block; a source that overlaps its target is copied first. Items are at
// most kLongestItem bytes when they overlap.
inline constexpr int32_t kLongestItem = 256;

inline const uint8_t *apartFrom(const uint8_t *target, int32_t targetBytes, const uint8_t *source,
                                int32_t sourceBytes, uint8_t *copy) {
    const auto from = reinterpret_cast<uintptr_t>(source);
    const auto to = reinterpret_cast<uintptr_t>(target);
    const bool overlap = from < to + static_cast<uintptr_t>(targetBytes) &&
                         to < from + static_cast<uintptr_t>(sourceBytes);
    if (!overlap || sourceBytes > kLongestItem) {
        return source;
    }
    memcpy(copy, source, static_cast<std::size_t>(sourceBytes));
    return copy;
}

// The low-order bytes of the source behind as many fill bytes as a longer target has left.
inline void copyRightJustified(const uint8_t *source, int32_t sourceLength, uint8_t *target,
                               int32_t targetLength, uint8_t fill) {
    const int32_t extra = targetLength - sourceLength;
    if (extra > 0) {
        moveBytes(target + extra, source, sourceLength);
        fillBytes(target, fill, extra);
    } else {
        moveBytes(target, source - extra, targetLength);
    }
}

// The same for packed bytes.
inline void placePackedBytes(const uint8_t *source, int32_t sourceBytes, uint8_t *target,
                             int32_t targetBytes) {
    const int32_t moved = std::min(sourceBytes, targetBytes);
    if (moved <= kBlockBytes) {
        placeBlock(target, targetBytes, loadBlock(source + sourceBytes - moved, moved));
    } else {
        copyRightJustified(source, sourceBytes, target, targetBytes, 0);
    }
}

// Copies a packed value. The sign becomes a preferred one, a negative zero stays negative, the pad
// nibble is cleared; the digits are not looked at.
inline void packedCopy(const uint8_t *source, int32_t sourceDigits, uint8_t *target,
                       int32_t targetDigits) {
    const int32_t sourceBytes = Packed::bytes(sourceDigits);
    const int32_t targetBytes = Packed::bytes(targetDigits);
    const uint8_t last = source[sourceBytes - 1];
    placePackedBytes(source, sourceBytes, target, targetBytes);
    Packed::clearPad(target, targetDigits);
    target[targetBytes - 1] = withPackedSign(last, packedSignIsNegative(last));
}

} // namespace zor::decimal

#endif

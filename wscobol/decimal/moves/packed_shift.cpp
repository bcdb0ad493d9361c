// Long packed items by blocks from their end, and the carry of a rounding: 1299 and 1 are 1300.
#include "decimal/moves/packed_shift.h"

namespace zor::decimal {

void moveLongNibbles(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetBytes) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetBytes, source, bytes, copy);
    do {
        const __m128i preceding = loadFull(source + bytes - kBlockBytes - 1);
        const __m128i block = loadFull(source + bytes - kBlockBytes);
        storeFull(target + targetBytes - kBlockBytes, shiftDigitRight(block, preceding));
        bytes -= kBlockBytes;
        targetBytes -= kBlockBytes;
    } while (bytes > kBlockBytes && targetBytes >= kBlockBytes);
    if (targetBytes > 0) {
        moveNibbles(source, bytes, target, targetBytes);
    }
}

void carryUp(uint8_t *target, int32_t bytes) {
    for (int32_t at = bytes - 1; at >= 0; --at) {
        const unsigned value = pairToValue[target[at]] + 1U;
        target[at] = valueToPair[value];
        if (value < 100) {
            return;
        }
    }
}

} // namespace zor::decimal

#include "decimal/packed_shift.h"

namespace zor::decimal {

void moveLongNibbles(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetBytes) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetBytes, source, bytes, copy);
    do {
        const __m128i preceding = load16(source + bytes - kWindow - 1);
        const __m128i window = load16(source + bytes - kWindow);
        store16(target + targetBytes - kWindow,
                _mm_or_si128(_mm_slli_epi16(lowNibbles(preceding), 4), highNibbles(window)));
        bytes -= kWindow;
        targetBytes -= kWindow;
    } while (bytes > kWindow && targetBytes >= kWindow);
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

// A quick look that finds nearly every packed item valid; for the rest the validator decides.
#ifndef ZOR_DECIMAL_PACKED_CHECK_H
#define ZOR_DECIMAL_PACKED_CHECK_H

#include <cstdint>

#include "decimal/forms.h"
#include "decimal/windows.h"

namespace zor::decimal {

// Whether the window of a whole packed item holds decimal digits and a sign, and so is valid by
// every measure.
inline bool packedIsPlainlyValid(__m128i window, uint8_t lastByte) {
    if (isDigit(lastByte & 0x0FU)) {
        return false;
    }
    const __m128i lowerBits = _mm_or_si128(_mm_slli_epi16(window, 1), _mm_slli_epi16(window, 2));
    // Bit 3 of each nibble above 9, the sign left out.
    const __m128i above =
        _mm_and_si128(_mm_and_si128(window, lowerBits),
                      _mm_set_epi32(static_cast<int>(0x80888888U), static_cast<int>(0x88888888U),
                                    static_cast<int>(0x88888888U), static_cast<int>(0x88888888U)));
    return _mm_movemask_epi8(_mm_cmpeq_epi8(above, _mm_setzero_si128())) == 0xFFFF;
}

} // namespace zor::decimal

#endif

#include "decimal/zoned_packed.h"

namespace zor::decimal {

// More than 16 packed bytes, window by window from the end.
void unpackLongDigits(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetDigits) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetDigits, source, bytes, copy);
    while (bytes > kWindow && targetDigits >= 2 * kWindow) {
        const uint8_t *window = source + bytes - kWindow;
        const UnpackedWindow digits = unpackWindow(load16(window), load16(window - 1));
        store16(target + targetDigits - kWindow, digits.last);
        store16(target + targetDigits - 2 * kWindow, digits.first);
        bytes -= kWindow;
        targetDigits -= 2 * kWindow;
    }
    if (targetDigits > 0) {
        unpackDigits(source, bytes * 2 - 1, target, targetDigits);
    }
}

// At least 32 zoned bytes. Behind the first window, which makes room for the sign, the pairs begin
// on even places.
void packLongDigits(const uint8_t *source, int32_t digits, uint8_t *target, int32_t targetBytes) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetBytes, source, digits, copy);
    const uint8_t *end = source + digits;
    __m128i packed =
        packWindows(load16(end - 2 * kWindow + 1), _mm_srli_si128(load16(end - kWindow), 1));
    digits -= 2 * kWindow - 1;
    targetBytes -= kWindow;
    store16(target + targetBytes, packed);
    while (digits >= 2 * kWindow) {
        end = source + digits;
        packed = packWindows(load16(end - 2 * kWindow), load16(end - kWindow));
        digits -= 2 * kWindow;
        targetBytes -= kWindow;
        store16(target + targetBytes, packed);
    }
    if (digits > 0) {
        const int32_t inLast = std::min(digits, kWindow);
        const __m128i last = loadWindow(source + digits - inLast, inLast);
        const __m128i first =
            digits > kWindow ? loadWindow(source, digits - kWindow) : _mm_setzero_si128();
        placeWindow(target, targetBytes, packWindows(first, last));
    } else {
        fillBytes(target, 0, targetBytes);
    }
}

} // namespace zor::decimal

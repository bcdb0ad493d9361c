// Long items by blocks from their end; a source that overlaps its target is copied first.
#include "decimal/conversions/zoned_packed.h"

namespace zor::decimal {

// More than 16 packed bytes, block by block from the end.
void unpackLongDigits(const uint8_t *source, int32_t bytes, uint8_t *target, int32_t targetDigits) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetDigits, source, bytes, copy);
    while (bytes > kBlockBytes && targetDigits >= 2 * kBlockBytes) {
        const uint8_t *block = source + bytes - kBlockBytes;
        const ZonedBlocks digits = unpackBlock(loadFull(block), loadFull(block - 1));
        storeFull(target + targetDigits - kBlockBytes, digits.low);
        storeFull(target + targetDigits - 2 * kBlockBytes, digits.high);
        bytes -= kBlockBytes;
        targetDigits -= 2 * kBlockBytes;
    }
    if (targetDigits > 0) {
        unpackDigits(source, bytes * 2 - 1, target, targetDigits);
    }
}

// At least 32 zoned bytes. Behind the first block, which makes room for the sign, the pairs begin
// on even places.
void packLongDigits(const uint8_t *source, int32_t digits, uint8_t *target, int32_t targetBytes) {
    uint8_t copy[kLongestItem];
    source = apartFrom(target, targetBytes, source, digits, copy);
    const uint8_t *end = source + digits;
    __m128i packed = packedOfZoned(loadFull(end - 2 * kBlockBytes + 1),
                                   _mm_srli_si128(loadFull(end - kBlockBytes), 1));
    digits -= 2 * kBlockBytes - 1;
    targetBytes -= kBlockBytes;
    storeFull(target + targetBytes, packed);
    while (digits >= 2 * kBlockBytes) {
        end = source + digits;
        packed = packedOfZoned(loadFull(end - 2 * kBlockBytes), loadFull(end - kBlockBytes));
        digits -= 2 * kBlockBytes;
        targetBytes -= kBlockBytes;
        storeFull(target + targetBytes, packed);
    }
    if (digits > 0) {
        const int32_t inLast = std::min(digits, kBlockBytes);
        const __m128i last = loadBlock(source + digits - inLast, inLast);
        const __m128i first =
            digits > kBlockBytes ? loadBlock(source, digits - kBlockBytes) : _mm_setzero_si128();
        placeBlock(target, targetBytes, packedOfZoned(first, last));
    } else {
        fillBytes(target, 0, targetBytes);
    }
}

} // namespace zor::decimal

// Packed items to double: the common case, a number and a power of ten that both are exact. All
// else is left to the function that knows every case, by a jump: as the integer conversions, this
// file is compiled without the alignment of the stack that a call of another library would need.
#include "decimal/floating/packed_to_double.h"

#include "decimal/floating/float_forms.h"
#include "decimal/options.h"
#include "decimal/packed_reading.h"
#include "decimal/short_items.h"

using namespace zor::decimal;

ZorBinary64 _zorcBCD_CONV_Pckd_To_LFlt(const uint8_t *source, int32_t sourceDigits, int32_t decs) {
    using Form = BinaryForm<ZorBinary64>;
    static_assert(Form::kDecimals >= 15); // the digits of a word, and of two limbs
    if (mayTrace() || static_cast<uint32_t>(decs) > Form::kExactPower) {
        return watchedPackedToDouble(source, sourceDigits, decs);
    }
    // The sign is given to the integers, so that a zero stays positive.
    if (fitsPackedWord(source, sourceDigits)) {
        uint32_t word;
        if (!readPackedWord(source, sourceDigits, word)) {
            return watchedPackedToDouble(source, sourceDigits, decs);
        }
        const uint32_t mask = packedSignMask(word);
        return static_cast<int32_t>((valueOfPackedWord(word) ^ mask) - mask) / Form::kPowers[decs];
    }
    __m128i limbs;
    if (sourceDigits > kShortDigits ||
        !readPackedLimbs(source, sourceDigits, kPackedConstants, limbs)) {
        return watchedPackedToDouble(source, sourceDigits, decs);
    }
    const __m128i mask = packedSignLane(source, sourceDigits, kPackedConstants);
    const __m128d parts = _mm_cvtepi32_pd(_mm_sub_epi32(_mm_xor_si128(limbs, mask), mask));
    return (parts[0] * kPackedConstants.eights[0] + parts[1]) / Form::kPowers[decs];
}

// Packed items to double: the common case, a number and a power of ten that both are exact. All
// else is left to the function that knows every case, by a jump: as the integer conversions, this
// file is compiled without the alignment of the stack that a call of another library would need.
#include "decimal/floating/packed_to_double.h"

#include "decimal/floating/float_forms.h"
#include "decimal/integer_digits.h"
#include "decimal/options.h"
#include "decimal/short_items.h"

using namespace zor::decimal;

ZorBinary64 _zorcBCD_CONV_Pckd_To_LFlt(const uint8_t *source, int32_t sourceDigits, int32_t decs) {
    using Form = BinaryForm<ZorBinary64>;
    static_assert(Form::kDecimals >= 15); // the digits of a short item
    ShortPacked read;
    if (mayTrace() || sourceDigits < 1 || static_cast<uint32_t>(decs) > Form::kExactPower ||
        !readShortPacked(source, sourceDigits, read)) {
        return watchedPackedToDouble(source, sourceDigits, decs);
    }
    // The sign is given to the integers, so that a zero stays positive.
    const auto part = [mask = packedSignMask(read.units)](uint32_t digits) {
        return static_cast<ZorBinary64>(static_cast<int32_t>((digits ^ mask) - mask));
    };
    return (part(read.high) * ShortPacked::kLow + part(read.low)) / Form::kPowers[decs];
}

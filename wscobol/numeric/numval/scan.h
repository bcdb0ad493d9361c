// The scan of a text by one of the machines.
#ifndef ZOR_NUMERIC_NUMVAL_SCAN_H
#define ZOR_NUMERIC_NUMVAL_SCAN_H

#include "numeric/numval/machines.h"
#include "numeric/read_number.h"
#include "numval.h"

namespace zor::numval {

// A text of characters of kUnit bytes, each of which counts by its first byte.
template <int32_t kUnit> struct Text {
    const uint8_t *bytes;
    int32_t count; // of characters

    Text(const void *address, int32_t length)
        : bytes(static_cast<const uint8_t *>(address)), count(length > 0 ? length / kUnit : 0) {}
    uint8_t operator[](int32_t i) const { return bytes[i * kUnit]; }
};
using NativeText = Text<1>;
using NationalText = Text<2>;

// The number that a text stands for, as far as it does; messages have been issued for the rest. The
// currency is read by NUMVAL-C only.
template <int32_t kUnit>
ReadNumber scan(const Machine &machine, const NumvalFormat &format, Text<kUnit> text,
                Text<kUnit> currency);

} // namespace zor::numval

#endif

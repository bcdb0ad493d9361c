// The lines of the trace that show floating values.
#ifndef ZOR_DECIMAL_FLOATING_FLOAT_TRACE_H
#define ZOR_DECIMAL_FLOATING_FLOAT_TRACE_H

#include "decimal_convert.h"

namespace zor::decimal {

enum class Radix : uint8_t { binary, decimal };

// The value that goes into a conversion.
void traceFloatSource(ZorBinary32 value);
void traceFloatSource(ZorBinary64 value);
void traceFloatSource(const ZorBinary128 &value);
void traceDecimalSource(const ZorDecimal128 &value);

// The value that comes out of one.
void traceFloatResult(ZorBinary64 value);
void traceFloatResult(const ZorBinary128 &value);
void traceDecimalResult(const ZorDecimal128 &value);

template <Radix radix, class T> void traceSource(T value) {
    if constexpr (radix == Radix::binary) {
        traceFloatSource(value);
    } else {
        traceDecimalSource(static_cast<ZorDecimal128>(value));
    }
}
template <Radix radix, class T> void traceResult(T value) {
    if constexpr (radix == Radix::binary) {
        traceFloatResult(value);
    } else {
        traceDecimalResult(static_cast<ZorDecimal128>(value));
    }
}

} // namespace zor::decimal

#endif

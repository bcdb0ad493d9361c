// The lines of the trace that show floating values.
#ifndef ZOR_DECIMAL_FLOAT_TRACE_H
#define ZOR_DECIMAL_FLOAT_TRACE_H

#include "decimal_convert.h"

namespace zor::decimal {

// The value that goes into a conversion.
void traceFloatSource(ZorBinary32 value);
void traceFloatSource(ZorBinary64 value);
void traceFloatSource(const ZorBinary128 &value);
void traceDecimalSource(const ZorDecimal128 &value);

// The value that comes out of one.
void traceFloatResult(ZorBinary64 value);
void traceFloatResult(const ZorBinary128 &value);
void traceDecimalResult(const ZorDecimal128 &value);

} // namespace zor::decimal

#endif

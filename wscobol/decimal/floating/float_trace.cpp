// The print support for decimal floating values is loaded at the first line that needs it: nobody
// pays for it without the trace.
#include "decimal/floating/float_trace.h"

#include <cstdio>

#include "base/late_library.h"
#include "base/quad_format.h"

namespace zor::decimal {
namespace {

void traceQuad(const char *label, const ZorBinary128 &value) {
    constexpr int kPrecision = 37;
    char text[kPrecision + 16];
    formatQuad(text, sizeof text, kPrecision, &value);
    fprintf(stderr, "%s%s\n", label, text);
}

// Once loaded, the library answers for the modifier DD in the formats of printf. The formats are
// unknown to the compiler's own check.
void traceDecimal(const char *label, const char *format, const ZorDecimal128 &value) {
    if (decimalLibrary.isPresent()) {
        fprintf(stderr, format, value);
    } else {
        traceQuad(label, static_cast<ZorBinary128>(value));
    }
}

} // namespace

void traceFloatSource(ZorBinary32 value) {
    fprintf(stderr, "in:   % .37E\n", static_cast<double>(value));
}
void traceFloatSource(ZorBinary64 value) {
    fprintf(stderr, "in:   % .17E\n", value);
}
void traceFloatSource(const ZorBinary128 &value) {
    traceQuad("in:   ", value);
}
void traceDecimalSource(const ZorDecimal128 &value) {
    traceDecimal("in:   ", "in:   % .34DDE\n", value);
}

void traceFloatResult(ZorBinary64 value) {
    fprintf(stderr, "dst % .37E\n", value);
}
void traceFloatResult(const ZorBinary128 &value) {
    traceQuad("dst ", value);
}
void traceDecimalResult(const ZorDecimal128 &value) {
    traceDecimal("dst:  ", "dst:  % .34DDF\n", value);
}

} // namespace zor::decimal

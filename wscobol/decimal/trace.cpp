#include "decimal/trace.h"

namespace zor::decimal {

void traceBytes(const char *label, LabelStyle style, const uint8_t *item, int32_t digits,
                int32_t bytes) {
    flockfile(stderr);
    fprintf(stderr, "%s%p %d%s", label, static_cast<const void *>(item), digits,
            style == LabelStyle::colon ? ": " : " ");
    for (int32_t i = 0; item != nullptr && i < bytes; ++i) { // a quotient may be absent
        fprintf(stderr, "%2.2x", item[i]);
    }
    std::fputc('\n', stderr);
    funlockfile(stderr);
}

} // namespace zor::decimal

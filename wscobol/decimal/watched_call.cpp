// What a watched call prints and reports. Lines are written whole, though not calls: those of other
// threads may stand between them.
#include "decimal/watched_call.h"

#include <cstdarg>
#include <cstdio>

#include "base/message_list.h"

namespace zor::decimal {

void traceLine(const char *format, ...) {
    va_list parts;
    va_start(parts, format);
    vfprintf(stderr, format, parts);
    va_end(parts);
}

namespace {

// Ends a line of stderr, which the caller has locked.
void printBytes(const uint8_t *item, int32_t bytes) {
    for (int32_t i = 0; i < bytes; ++i) {
        fprintf(stderr, "%2.2x", item[i]);
    }
    fputc('\n', stderr);
}

} // namespace

void traceItem(const char *label, Behind behind, const uint8_t *item, int32_t digits,
               int32_t bytes) {
    flockfile(stderr);
    fprintf(stderr, "%s%p %d%s", label, static_cast<const void *>(item), digits,
            behind == Behind::colon ? ": " : " ");
    printBytes(item, item == nullptr ? 0 : bytes); // a quotient may be absent
    funlockfile(stderr);
}

void reportInvalidData() {
    message::invalidDecimalData();
}

void reportInvalidItem(const uint8_t *item, int32_t bytes) {
    flockfile(stderr);
    fprintf(stderr, "Invalid zoned data %d 0x", bytes);
    printBytes(item, bytes);
    funlockfile(stderr);
    reportInvalidData();
}

void reportBadSeparateSign() {
    message::badSeparateSign();
}

} // namespace zor::decimal

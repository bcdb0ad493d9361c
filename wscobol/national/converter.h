// A converter between one code page and national data: the ground under every conversion. Nothing
// here issues a message. Statuses are ICU's: 0, or a positive error; its warnings count as 0.
#ifndef ZOR_NATIONAL_CONVERTER_H
#define ZOR_NATIONAL_CONVERTER_H

#include <cstdint>

#include "national/code_page_name.h"

struct UConverter;

namespace zor {

// Opens a converter by a name in any of the system's spellings; null, and a positive status, when
// that fails.
UConverter *openConverter(const char *name, int32_t &status);
void closeConverter(UConverter *converter); // null is ignored

// Statuses that have a meaning of their own here.
constexpr int32_t kIllegalArgument = 1;
constexpr int32_t kNoStorage = 7;
constexpr int32_t kCharacterCut = 11;
constexpr int32_t kTargetTooSmall = 15;

// What a conversion wrote, also where it failed: 16-bit units of national data, or bytes.
struct Produced {
    int32_t status;
    int32_t length;
};

// Convert whole texts: no shift or cut character is carried from one call to the next. A character
// without a counterpart becomes the substitution character; one that the end of the source cuts is
// left out, with status 11, and a target that is too small is filled, with status 15. Nothing is
// written behind what is produced. Negative lengths give status 1. Addresses need no alignment.
Produced toNational(UConverter &converter, const void *source, int32_t bytes, void *target,
                    int32_t units);
Produced fromNational(UConverter &converter, const void *source, int32_t units, void *target,
                      int32_t bytes);

// The code page's number: 0 where it has none, -1 when the question fails.
int32_t ccsidOf(const UConverter &converter);
int32_t maxCharacterBytes(const UConverter &converter);

} // namespace zor

#endif

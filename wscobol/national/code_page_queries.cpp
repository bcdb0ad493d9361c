// Questions about code pages that only an open converter answers.
#include "base/message_list.h"
#include "codepage.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr uint32_t kNoCcsid = 0xFFFFFFFE; // this and the number above it

// Message 221 tells of a failure.
UConverter *openOrReport(const char *name) {
    services();
    int32_t status = 0;
    UConverter *const converter = openConverter(name, status);
    if (converter == nullptr) {
        message::converterNotOpened(name, status);
    }
    return converter;
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorValidateCPID(const char *name, int32_t length) {
    services();
    int32_t status = 0;
    UConverter *const converter = openConverter(terminatedName(name, length).text, status);
    closeConverter(converter);
    return converter != nullptr ? 0 : 1;
}

int32_t _zorGetMaxCharSize(const char *name) {
    UConverter *const converter = openOrReport(name);
    if (converter == nullptr) {
        return 0;
    }
    const int32_t bytes = maxCharacterBytes(*converter);
    closeConverter(converter);
    return bytes;
}

int32_t _zorGetCCSID(const char *name, int32_t *ccsidOut) {
    UConverter *const converter = openOrReport(name);
    if (converter == nullptr) {
        *ccsidOut = -1;
        return 2;
    }
    *ccsidOut = ccsidOf(*converter);
    closeConverter(converter);
    return static_cast<uint32_t>(*ccsidOut) >= kNoCcsid ? 1 : 0;
}

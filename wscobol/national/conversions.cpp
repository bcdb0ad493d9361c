// Conversions between national data and the bytes of a code page.
#include "national/conversions.h"

#include <algorithm>

#include "base/message_list.h"
#include "national.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr int32_t kUnit = sizeof(char16_t);

// Whole characters; a negative length stays negative.
constexpr int32_t unitsOf(int32_t bytes) {
    return bytes >> 1;
}

// Converts in the code page of the name and tells of a failure once the code page is closed: a
// message may end the run.
template <class Convert>
Produced convertIn(const char *name, int32_t nameLength, uint32_t flagsOfCut, Convert convert) {
    Produced made{};
    {
        const OpenPage page(name, nameLength);
        if (page.converter() == nullptr) {
            return {page.status(), 0};
        }
        made = convert(*page.converter());
    }
    if (made.status != 0) {
        message::conversionFailed.issue(made.status == kCharacterCut ? flagsOfCut : 0, made.status);
    }
    return made;
}

// The most bytes that the native code page can need for national data.
int32_t roomForNative(int32_t nationalBytes) {
    int32_t status = 0;
    const UConverter *const native = cachedConverter(services(), kNativePage, status);
    const int64_t widest = native != nullptr ? maxCharacterBytes(*native) : 0;
    const int64_t units = std::max(unitsOf(nationalBytes), 0);
    return static_cast<int32_t>(std::min<int64_t>(units * widest, INT32_MAX));
}

} // namespace

Produced convertToNational(const void *source, int32_t sourceBytes, void *target,
                           int32_t targetBytes, const char *name, int32_t nameLength) {
    Produced made = convertIn(name, nameLength, MESSAGE_INFORMATIONAL, [&](UConverter &page) {
        return toNational(page, source, sourceBytes, target, unitsOf(targetBytes));
    });
    made.length *= kUnit;
    return made;
}

Produced convertFromNational(const void *source, int32_t sourceBytes, void *target,
                             int32_t targetBytes, const char *name, int32_t nameLength) {
    return convertIn(name, nameLength, 0, [&](UConverter &page) {
        return fromNational(page, source, unitsOf(sourceBytes), target, targetBytes);
    });
}

} // namespace zor

using namespace zor;

int32_t _zorConvToUnicode(const void *source, int32_t sourceLength, void *target,
                          int32_t *targetLength, const char *codepageName, int32_t codepageLength) {
    const Produced made = convertToNational(source, sourceLength, target, *targetLength,
                                            codepageName, codepageLength);
    if (made.status == 0 || made.status == kCharacterCut) {
        *targetLength = made.length;
    }
    return made.status;
}

int32_t _zorConvFromUnicode(const void *source, int32_t sourceLength, void *target,
                            int32_t *targetLength, const char *codepageName,
                            int32_t codepageLength) {
    const Produced made = convertFromNational(source, sourceLength, target, *targetLength,
                                              codepageName, codepageLength);
    if (made.status == 0) {
        *targetLength = made.length;
    }
    return made.status;
}

int32_t _Tvq_national_of(int32_t sourceLength, const void *source, void *target) {
    const int64_t room = int64_t{kUnit} * std::max(sourceLength, 0);
    return convertToNational(source, sourceLength, target,
                             static_cast<int32_t>(std::min<int64_t>(room, INT32_MAX)), nullptr,
                             kNativePage)
        .length;
}

int32_t _Tvq_display_of(int32_t sourceLength, const void *source, void *target) {
    return convertFromNational(source, sourceLength, target, roomForNative(sourceLength), nullptr,
                               kNativePage)
        .length;
}

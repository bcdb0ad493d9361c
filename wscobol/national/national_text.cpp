// Moves, comparison and change of case of national data.
#include <cstring>

#include "base/message_list.h"
#include "national.h"
#include "national/icu.h"
#include "national/item_bytes.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr char16_t kNationalBlank = u' ';
constexpr char kBlankBytes[] = {' ', 0}; // the same in the machine's byte order
constexpr std::size_t kCharacter = sizeof(char16_t);

char16_t characterAt(const void *text, std::size_t index) {
    char16_t character;
    memcpy(&character, static_cast<const char *>(text) + index * kCharacter, kCharacter);
    return character;
}

// The characters of an item without the blanks at its end, but one at least.
std::size_t significantCharacters(const void *text, int32_t bytes) {
    std::size_t count = lengthOrNone(bytes) / kCharacter;
    while (count > 1 && characterAt(text, count - 1) == kNationalBlank) {
        --count;
    }
    return count;
}

// Opens the collating sequence of the locale, once; a status that is not 0 is an error.
int32_t openCollator(Services &services) {
    const IcuCollation *const icu = icuCollation();
    if (icu == nullptr) {
        return kNoIcu;
    }
    UErrorCode status = U_ZERO_ERROR;
    services.collator = icu->ucol_open(services.locale, &status);
    services.collate = icu->ucol_strcoll;
    return services.collator == nullptr ? status : 0;
}

// Changes the case of a text by one of the two functions of ICU.
template <class Change>
int32_t changeCase(Change IcuConversion::*change, void *target, int32_t *targetLength,
                   const void *source, int32_t sourceLength) {
    const Services &services = zor::services();
    const IcuConversion *const icu = icuConversion();
    UErrorCode status = kNoIcu;
    int32_t units = 0;
    if (icu != nullptr && sourceLength >= 0) {
        status = U_ZERO_ERROR;
        units = (icu->*change)(static_cast<UChar *>(target), *targetLength >> 1,
                               static_cast<const UChar *>(source), sourceLength >> 1,
                               services.locale, &status);
    } else if (icu != nullptr) {
        status = U_ILLEGAL_ARGUMENT_ERROR;
    }
    if (U_FAILURE(status)) {
        message::caseFoldingFailed(status, services.locale);
        return status;
    }
    *targetLength = units * static_cast<int32_t>(kCharacter);
    return *targetLength;
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorMoveUnicode(void *target, int32_t signedTargetLength, const void *source,
                        int32_t sourceLength) {
    const std::size_t room = magnitude(signedTargetLength);
    const std::size_t length = lengthOrNone(sourceLength);
    const bool justifiedRight = signedTargetLength < 0;
    auto *const to = static_cast<char *>(target);
    const auto *const from = static_cast<const char *>(source);
    if (room <= length) {
        const std::size_t offset = justifiedRight ? (length - room) / kCharacter * kCharacter : 0;
        memmove(to, from + offset, room);
        return 0;
    }
    const std::size_t blanks = room - length;
    memmove(justifiedRight ? to + blanks : to, from, length);
    fillWithPattern(justifiedRight ? to : to + length, blanks, kBlankBytes, sizeof kBlankBytes);
    return 0;
}

int32_t _zorCompareUnicode(const void *left, int32_t leftLength, const void *right,
                           int32_t rightLength) {
    Services &services = zor::services();
    if (services.collator == nullptr) {
        const int32_t status = openCollator(services);
        if (status != 0) {
            message::collatorNotOpened(services.locale, status);
            return status;
        }
    }
    const std::size_t leftCount = significantCharacters(left, leftLength);
    const std::size_t rightCount = significantCharacters(right, rightLength);
    if (leftCount == rightCount && memcmp(left, right, leftCount * kCharacter) == 0) {
        return 0;
    }
    return services.collate(services.collator, static_cast<const UChar *>(left),
                            static_cast<int32_t>(leftCount), static_cast<const UChar *>(right),
                            static_cast<int32_t>(rightCount));
}

int32_t _zorUpperCaseUnicode(void *target, int32_t *targetLength, const void *source,
                             int32_t sourceLength) {
    return changeCase(&IcuConversion::u_strToUpper, target, targetLength, source, sourceLength);
}

int32_t _zorLowerCaseUnicode(void *target, int32_t *targetLength, const void *source,
                             int32_t sourceLength) {
    return changeCase(&IcuConversion::u_strToLower, target, targetLength, source, sourceLength);
}

#include "national/converter.h"

#include <algorithm>

#include "national/icu.h"

namespace zor {
namespace {

int32_t withoutWarning(UErrorCode status) {
    return std::max<int32_t>(status, U_ZERO_ERROR);
}

// ICU would put a substitution character where the end of the source cuts a character.
void substituteToNational(const void *context, UConverterToUnicodeArgs *arguments,
                          const char *bytes, int32_t length, UConverterCallbackReason reason,
                          UErrorCode *status) {
    if (*status != U_TRUNCATED_CHAR_FOUND) {
        icuConversion()->UCNV_TO_U_CALLBACK_SUBSTITUTE(context, arguments, bytes, length, reason,
                                                       status);
    }
}

void substituteFromNational(const void *context, UConverterFromUnicodeArgs *arguments,
                            const UChar *units, int32_t length, UChar32 character,
                            UConverterCallbackReason reason, UErrorCode *status) {
    if (*status != U_TRUNCATED_CHAR_FOUND) {
        icuConversion()->UCNV_FROM_U_CALLBACK_SUBSTITUTE(context, arguments, units, length,
                                                         character, reason, status);
    }
}

// A length that the address space has room for.
template <class Unit> int32_t pinned(const Unit *address, int32_t length) {
    const std::size_t room =
        (UINTPTR_MAX - reinterpret_cast<std::uintptr_t>(address)) / sizeof *address;
    return static_cast<int32_t>(std::min<std::size_t>(static_cast<std::size_t>(length), room));
}

} // namespace

UConverter *openConverter(const char *name, int32_t &status) {
    const IcuConversion *const icu = icuConversion();
    if (icu == nullptr) {
        status = kNoIcu;
        return nullptr;
    }
    UErrorCode error = U_ZERO_ERROR;
    UConverter *const converter = icu->ucnv_open(libraryCodePageName(name).text, &error);
    status = withoutWarning(error);
    if (converter != nullptr) {
        UErrorCode ignored = U_ZERO_ERROR;
        icu->ucnv_setToUCallBack(converter, substituteToNational, nullptr, nullptr, nullptr,
                                 &ignored);
        icu->ucnv_setFromUCallBack(converter, substituteFromNational, nullptr, nullptr, nullptr,
                                   &ignored);
    }
    return converter;
}

void closeConverter(UConverter *converter) {
    if (converter != nullptr) {
        icuConversion()->ucnv_close(converter);
    }
}

Produced toNational(UConverter &converter, const void *source, int32_t bytes, void *target,
                    int32_t units) {
    if (bytes < 0 || units < 0) {
        return {U_ILLEGAL_ARGUMENT_ERROR, 0};
    }
    const IcuConversion &icu = *icuConversion();
    auto *const first = static_cast<UChar *>(target);
    const auto *next = static_cast<const char *>(source);
    UChar *end = first;
    UErrorCode status = U_ZERO_ERROR;
    icu.ucnv_resetToUnicode(&converter);
    icu.ucnv_toUnicode(&converter, &end, first + pinned(first, units), &next, next + bytes, nullptr,
                       1, &status);
    return {withoutWarning(status), static_cast<int32_t>(end - first)};
}

Produced fromNational(UConverter &converter, const void *source, int32_t units, void *target,
                      int32_t bytes) {
    if (bytes < 0 || units < 0) {
        return {U_ILLEGAL_ARGUMENT_ERROR, 0};
    }
    const IcuConversion &icu = *icuConversion();
    auto *const first = static_cast<char *>(target);
    const auto *next = static_cast<const UChar *>(source);
    char *end = first;
    UErrorCode status = U_ZERO_ERROR;
    icu.ucnv_resetFromUnicode(&converter);
    icu.ucnv_fromUnicode(&converter, &end, first + pinned(first, bytes), &next, next + units,
                         nullptr, 1, &status);
    return {withoutWarning(status), static_cast<int32_t>(end - first)};
}

int32_t ccsidOf(const UConverter &converter) {
    UErrorCode status = U_ZERO_ERROR;
    return icuConversion()->ucnv_getCCSID(&converter, &status);
}

int32_t maxCharacterBytes(const UConverter &converter) {
    return icuConversion()->ucnv_getMaxCharSize(&converter);
}

CodePageName nameOf(const UConverter &converter) {
    UErrorCode status = U_ZERO_ERROR;
    const char *const name = icuConversion()->ucnv_getName(&converter, &status);
    return systemCodePageName(name != nullptr ? name : "");
}

} // namespace zor

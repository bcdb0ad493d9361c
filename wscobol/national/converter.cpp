// ICU's converters, with what its rules lack for items of a program: a character that the end cuts
// is told, not replaced, and a target that is just full is not too small.
#include "national/converter.h"

#include <algorithm>

#include "national/icu.h"

namespace zor {
namespace {

static_assert(kIllegalArgument == U_ILLEGAL_ARGUMENT_ERROR);
static_assert(kNoStorage == U_MEMORY_ALLOCATION_ERROR);
static_assert(kCharacterCut == U_TRUNCATED_CHAR_FOUND);
static_assert(kTargetTooSmall == U_BUFFER_OVERFLOW_ERROR);

constexpr std::size_t kMore = 64; // of a target that is too small, the part that is only looked at

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
    const std::size_t room = (UINTPTR_MAX - reinterpret_cast<uintptr_t>(address)) / sizeof *address;
    return static_cast<int32_t>(std::min<std::size_t>(static_cast<std::size_t>(length), room));
}

// Converts a whole text in one of the two directions. A target that is full is too small only if
// more would follow: what is left of the source may be no more than a shift character.
template <class Function, class From, class To>
Produced convert(Function function, UConverter &converter, const From *source, int32_t length,
                 To *target, int32_t capacity) {
    if (length < 0 || capacity < 0) {
        return {kIllegalArgument, 0};
    }
    const From *const limit = source + length;
    To *end = target;
    UErrorCode status = U_ZERO_ERROR;
    function(&converter, &end, target + pinned(target, capacity), &source, limit, nullptr, 1,
             &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        To more[kMore];
        To *endOfMore = more;
        UErrorCode statusOfMore = U_ZERO_ERROR;
        function(&converter, &endOfMore, more + kMore, &source, limit, nullptr, 1, &statusOfMore);
        status = endOfMore == more ? statusOfMore : status;
    }
    return {withoutWarning(status), static_cast<int32_t>(end - target)};
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

// A converter is left as it was opened by a conversion that succeeds, and reset after others.
Produced toNational(UConverter &converter, const void *source, int32_t bytes, void *target,
                    int32_t units) {
    const IcuConversion &icu = *icuConversion();
    const Produced made = convert(icu.ucnv_toUnicode, converter, static_cast<const char *>(source),
                                  bytes, static_cast<UChar *>(target), units);
    if (made.status != 0) {
        icu.ucnv_resetToUnicode(&converter);
    }
    return made;
}

Produced fromNational(UConverter &converter, const void *source, int32_t units, void *target,
                      int32_t bytes) {
    const IcuConversion &icu = *icuConversion();
    const Produced made =
        convert(icu.ucnv_fromUnicode, converter, static_cast<const UChar *>(source), units,
                static_cast<char *>(target), bytes);
    if (made.status != 0) {
        icu.ucnv_resetFromUnicode(&converter);
    }
    return made;
}

int32_t ccsidOf(const UConverter &converter) {
    UErrorCode status = U_ZERO_ERROR;
    return icuConversion()->ucnv_getCCSID(&converter, &status);
}

int32_t maxCharacterBytes(const UConverter &converter) {
    return icuConversion()->ucnv_getMaxCharSize(&converter);
}

} // namespace zor

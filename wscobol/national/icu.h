// The functions of ICU that the library uses. ICU is loaded at the first need: a program that never
// converts does not pay for it.
#ifndef ZOR_NATIONAL_ICU_H
#define ZOR_NATIONAL_ICU_H

#define U_SHOW_CPLUSPLUS_API 0
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>

namespace zor {

// ICU's headers rename each function by ICU's version, by macros that hold for the lists and the
// members here too: each is written, and called, by its plain name.
#define ZOR_ICU_CONVERSION(FUNCTION)                                                               \
    FUNCTION(ucnv_open)                                                                            \
    FUNCTION(ucnv_close)                                                                           \
    FUNCTION(ucnv_resetToUnicode)                                                                  \
    FUNCTION(ucnv_resetFromUnicode)                                                                \
    FUNCTION(ucnv_toUnicode)                                                                       \
    FUNCTION(ucnv_fromUnicode)                                                                     \
    FUNCTION(ucnv_setToUCallBack)                                                                  \
    FUNCTION(ucnv_setFromUCallBack)                                                                \
    FUNCTION(UCNV_TO_U_CALLBACK_SUBSTITUTE)                                                        \
    FUNCTION(UCNV_FROM_U_CALLBACK_SUBSTITUTE)                                                      \
    FUNCTION(ucnv_getCCSID)                                                                        \
    FUNCTION(ucnv_getMaxCharSize)                                                                  \
    FUNCTION(u_strToUpper)                                                                         \
    FUNCTION(u_strToLower)

#define ZOR_ICU_COLLATION(FUNCTION)                                                                \
    FUNCTION(ucol_open)                                                                            \
    FUNCTION(ucol_close)                                                                           \
    FUNCTION(ucol_strcoll)

#define ZOR_ICU_MEMBER(name) decltype(&::name) name;
struct IcuConversion {
    ZOR_ICU_CONVERSION(ZOR_ICU_MEMBER)
};
struct IcuCollation {
    ZOR_ICU_COLLATION(ZOR_ICU_MEMBER)
};
#undef ZOR_ICU_MEMBER

// The addresses; null when ICU is not installed.
const IcuConversion *icuConversion();
const IcuCollation *icuCollation();

// Stands for the status of a call of ICU where there is no ICU.
constexpr UErrorCode kNoIcu = U_MISSING_RESOURCE_ERROR;

} // namespace zor

#endif

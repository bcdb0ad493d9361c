// The messages of a program, while division by zero is trapped.
#ifndef ZOR_TESTS_NUMERIC_HEARD_H
#define ZOR_TESTS_NUMERIC_HEARD_H

#include <regex>

#include "numeric_functions/forms_kit.h"

namespace heard {

// From here on no number of messages ends the run.
inline void listen() {
    forms::said([] {});
    _zorProccom->runcom->errleft = 0;
}

// With what the catalogue's texts show: "152 E 2 NUMVAL;".
inline std::string takeInserts() {
    static const std::regex character(
        "ZOR(\\d+)W  Character (.) in position (\\d+) .*? of function "
        "([A-Z-]+)[.]");
    static const std::regex other("ZOR0*(\\d+)W  The argument of function ([A-Z-]+)[^.]*[.]");
    const std::string texts = std::exchange(forms::messages, {});
    return std::regex_replace(std::regex_replace(texts, character, "$1 $2 $3 $4;"), other,
                              "$1 $2;");
}

// By their numbers: "48;58;".
inline std::string takeNumbers() {
    static const std::regex text("ZOR0*(\\d+)[A-Z]  .*?(?=ZOR|$)");
    return std::regex_replace(std::exchange(forms::messages, {}), text, "$1;");
}

} // namespace heard

#endif

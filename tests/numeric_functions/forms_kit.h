// Values of the three forms, and what a running program is told.
#ifndef ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H
#define ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H

#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <random>
#include <regex>
#include <type_traits>

#include "decimal_convert.h"
#include "runcom.h"
#include "support/kit.h"

namespace forms {

template <class T> constexpr bool isDecimal = std::is_same_v<T, ZorDecimal128>;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The value of a text, rounded to the form.
template <class T> T parse(const std::string &text) {
    if constexpr (std::is_same_v<T, ZorBinary64>) {
        return strtod(text.c_str(), nullptr);
    } else {
        static const auto read = reinterpret_cast<T (*)(const char *, char **)>(
            dlsym(dlopen(isDecimal<T> ? "libdfp.so.1" : "libquadmath.so.0", RTLD_LAZY),
                  isDecimal<T> ? "strtod128" : "strtoflt128"));
        return read(text.c_str(), nullptr);
    }
}

// Within two units of the last place.
template <class T> bool isNear(T value, T wanted) {
    const double unit = isDecimal<T> ? 1e-33 : sizeof(T) == 16 ? 0x1p-112 : 0x1p-52;
    return std::fabs(static_cast<double>((value - wanted) / wanted)) <= 2 * unit;
}

template <class T> bool isNaN(T value) {
    return value != value;
}

// All tests run within a run unit, where division by zero is trapped and no number of messages ends
// the run.
inline std::string messages;
struct RunUnit : testing::Environment {
    void SetUp() override {
        static kit::Program program("PROG");
        kit::enter(program);
        _zorProccom->runcom->errleft = 0;
        _zorProccom->runcom->msg = [](int32_t, const char *, const char *text, int32_t, void *) {
            messages.append(text, strcspn(text, "\n"));
        };
    }
};
inline testing::Environment *const kRunUnit = testing::AddGlobalTestEnvironment(new RunUnit);

// The messages that a body issues.
template <class Body> std::string said(Body body) {
    messages.clear();
    body();
    return messages;
}
#define EXPECT_SAID(message, ...) EXPECT_EQ(said([&] { __VA_ARGS__; }), message)

// The messages since then, by their numbers: "48;58;".
inline std::string takeNumbers() {
    static const std::regex text("ZOR0*(\\d+)[A-Z]  .*?(?=ZOR|$)");
    return std::regex_replace(std::exchange(messages, {}), text, "$1;");
}

// With what their texts show: "152 E 2 NUMVAL;", "151   NUMVAL;".
inline std::string takeInserts() {
    static const std::regex text(
        "ZOR0*(\\d+)W  (?:Character (.) in position (\\d+) .*?|The argument) "
        "of function ([A-Z-]+)[^.]*[.]");
    return std::regex_replace(std::exchange(messages, {}), text, "$1 $2 $3 $4;");
}

inline std::string argument(const std::string &number, const std::string &nameAndFault) {
    return "ZOR" + number + "W  An argument of function " + nameAndFault + ".";
}

} // namespace forms

#endif

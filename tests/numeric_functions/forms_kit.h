// Values of the three forms, and what a running program is told.
#ifndef ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H
#define ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H

#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <random>
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

// The messages that a body issues, while the run-time runs and division by zero is trapped.
inline std::string messages;
template <class Body> std::string said(Body body) {
    if (_zorProccom->runcom == nullptr) {
        static kit::Program program("PROG");
        kit::enter(program);
        _zorProccom->runcom->msg = [](int32_t, const char *, const char *text, int32_t, void *) {
            messages.append(text, strcspn(text, "\n"));
        };
    }
    messages.clear();
    body();
    return messages;
}
#define EXPECT_SAID(message, ...) EXPECT_EQ(said([&] { __VA_ARGS__; }), message)

inline std::string argument(const std::string &number, const std::string &nameAndFault) {
    return "ZOR" + number + "W  An argument of function " + nameAndFault + ".";
}

} // namespace forms

#endif

// Values of the three forms, what a running program is told, and calls from any stack.
#ifndef ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H
#define ZOR_TESTS_NUMERIC_FUNCTIONS_FORMS_KIT_H

#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <type_traits>

#include "decimal_convert.h"
#include "runcom.h"
#include "support/kit.h"

namespace forms {

template <class T> constexpr bool isDecimal = std::is_same_v<T, ZorDecimal128>;
template <class T> constexpr int kRadix = isDecimal<T> ? 10 : 2;

// The value of a text, rounded to the form.
template <class T> T parse(const char *text) {
    if constexpr (std::is_same_v<T, ZorBinary64>) {
        return strtod(text, nullptr);
    } else {
        static void *const library =
            dlopen(isDecimal<T> ? "libdfp.so.1" : "libquadmath.so.0", RTLD_LAZY);
        static const auto read = reinterpret_cast<T (*)(const char *, char **)>(
            dlsym(library, isDecimal<T> ? "strtod128" : "strtoflt128"));
        return read(text, nullptr);
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

inline std::string argumentMessage(const char *number, const std::string &name, const char *what) {
    return std::string("ZOR") + number + "W  An argument of function " + name + what;
}

template <class T> void push(std::vector<uint32_t> &words, T value) {
    words.resize(words.size() + sizeof value / sizeof words[0]);
    memcpy(words.data() + words.size() - sizeof value / sizeof words[0], &value, sizeof value);
}

// Calls a function with the words as its arguments, so many bytes off a multiple of 16.
template <class Function>
void callAt(unsigned offset, Function *function, const std::vector<uint32_t> &words) {
    const uint32_t *source = words.data();
    std::size_t count = words.size();
    auto address = reinterpret_cast<uintptr_t>(function);
    unsigned room = 256 - offset;
    asm volatile("mov %%esp, %%ebx\n and $-16, %%esp\n sub %3, %%esp\n mov %%esp, %%edi\n"
                 "rep movsl\n call *%2\n mov %%ebx, %%esp"
                 : "+S"(source), "+c"(count), "+a"(address), "+d"(room)
                 :
                 : "ebx", "edi", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5",
                   "xmm6", "xmm7");
}

} // namespace forms

#endif

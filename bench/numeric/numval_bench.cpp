// NUMVAL and NUMVAL-C beside what C and C++ programs call for a text that is already clean.
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

#include "numval.h"
#include "support/bench.h"

namespace {

constexpr NumvalFormat kFormat{'$', '.', NUMVAL_CURRENCY_SIGN};

double strtodTime(const std::string &text) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            bench::keep(strtod(text.c_str(), nullptr));
        }
    });
}

double fromCharsTime(const std::string &text) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            double value = 0;
            std::from_chars(text.data(), text.data() + text.size(), value);
            bench::keep(value);
        }
    });
}

template <class T, class Function> double numvalTime(Function numval, const std::string &text) {
    return bench::nanoseconds([&](unsigned times) {
        T value;
        for (unsigned i = 0; i < times; ++i) {
            bench::keep(numval(&kFormat, static_cast<int32_t>(text.size()), text.data(), &value));
        }
    });
}

double numvalCTime(const std::string &text) {
    return bench::nanoseconds([&](unsigned times) {
        double value;
        for (unsigned i = 0; i < times; ++i) {
            bench::keep(_zorcNumvalC(&kFormat, static_cast<int32_t>(text.size()), text.data(), 0,
                                     nullptr, &value));
        }
    });
}

std::string national(const std::string &text) {
    std::string units;
    for (const char c : text) {
        units += {c, '\0'};
    }
    return units;
}

ZOR_BENCH(numval) {
    for (const std::string text : {"5", "-1234.5678", "1234567890", "12345678.90123456789"}) {
        const std::string name = "NUMVAL " + text;
        const double ours = numvalTime<double>(_zorcNumval, text);
        bench::row(name, ours, "strtod", strtodTime(text));
        bench::row(name, ours, "from_chars", fromCharsTime(text));
    }
    const double blanks = numvalTime<double>(_zorcNumval, "1234.5678 -");
    bench::row("NUMVAL \"1234.5678 -\"", blanks, "strtod of -1234.5678", strtodTime("-1234.5678"));
    const double money = numvalCTime("$12,345.67");
    bench::row("NUMVAL-C $12,345.67", money, "strtod of 12345.67", strtodTime("12345.67"));
    bench::row("NUMVAL-C $12,345.67", money, "from_chars of it", fromCharsTime("12345.67"));
    const std::string usual = "-1234.5678";
    bench::row("NUMVAL to 128 bits", numvalTime<ZorBinary128>(_zorcNumval16, usual), "strtod",
               strtodTime(usual));
    bench::row("NUMVAL to decimal128", numvalTime<ZorDecimal128>(_Tvq_numval_decfloat16, usual),
               "strtod", strtodTime(usual));
    bench::row("NUMVAL, national", numvalTime<double>(_zoruNumval, national(usual)), "strtod",
               strtodTime(usual));
}

} // namespace

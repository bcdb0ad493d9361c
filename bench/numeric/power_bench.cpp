// Fixed-point powers beside 128-bit ones that are printed, and floating powers beside the library
// functions below them.
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include "numeric/quad_math.h"
#include "power.h"
#include "support/bench.h"

namespace {

struct Fixed {
    const char *base;
    int scale;
    const char *exponent;
};

double ours(const Fixed &f) {
    const auto digits = [](const char *text) { return static_cast<uint16_t>(strlen(text) - 1); };
    const ExpDescriptor descriptor{
        digits(f.exponent), {}, digits(f.base), static_cast<uint16_t>(f.scale), 0, 18, 9, 9};
    return bench::nanoseconds([&](unsigned times) {
        char result[19];
        int32_t count = 0;
        for (unsigned i = 0; i < times; ++i) {
            _zorcExpFixedPt(&descriptor, f.exponent, f.base, result, &count);
            bench::keep(result[0]);
        }
    });
}

double printed(const Fixed &f) {
    return bench::nanoseconds([&](unsigned times) {
        char result[64];
        for (unsigned i = 0; i < times; ++i) {
            const auto base = static_cast<__float128>(atof(f.base)) / std::pow(10, f.scale);
            const __float128 power = zor::binary128::pow(base, atoi(f.exponent));
            strfromf128(result, sizeof result, "%.9f", power);
            bench::keep(result[0]);
        }
    });
}

ZOR_BENCH(fixedPower) {
    for (const Fixed &f : {Fixed{"+12345", 2, "+2"}, Fixed{"+105", 2, "+12"},
                           Fixed{"+100525", 5, "+360"}, Fixed{"+100525", 5, "-360"}}) {
        bench::row(std::string(f.base) + " ** " + f.exponent, ours(f), "powq, strfromf128",
                   printed(f));
    }
}

ZOR_BENCH(floatingPower) {
    int32_t count = 0;
    volatile double base = 1.05;
    const auto time = [&](auto power) {
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                bench::keep(power());
            }
        });
    };
    bench::row("64 bits ** 64 bits", time([&] { return _zorExpFloat8Float8(base, 2.5, &count); }),
               "pow", time([&] { return std::pow(base, 2.5); }));
    bench::row("128 bits ** 64 bits", time([&] { return _zorExpFloat16Float8(base, 2.5, &count); }),
               "powq", time([&] { return zor::binary128::pow(base, 2.5); }));
}

} // namespace

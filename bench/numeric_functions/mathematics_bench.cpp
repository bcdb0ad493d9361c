// Mathematical functions beside what they stand on.
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "base/late_library.h"
#include "mathematics.h"
#include "support/bench.h"

namespace {

constexpr unsigned kValues = 4096;

std::vector<double> values(double most) {
    std::mt19937 random(1);
    std::vector<double> result(kValues);
    for (double &value : result) {
        value = most * (random() + 1.0) / 4294967297.0;
    }
    return result;
}

template <class Function> double each(const std::vector<double> &arguments, Function function) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            const auto result = function(arguments[i % kValues]);
            bench::keep(result);
        }
    });
}

ZOR_BENCH(mathematics) {
    const std::vector<double> any = values(1000);
    const std::vector<double> small = values(1);
    const auto beside = [](const char *name, const std::vector<double> &arguments,
                           double (*ours)(double), double (*peer)(double)) {
        bench::row(name, each(arguments, ours), "libm", each(arguments, peer));
    };
    beside("SIN", any, _zorSinFloat8, sin);
    beside("LOG", any, _zorLogFloat8, log);
    beside("SQRT", any, _zorSqrtFloat8, sqrt);
    beside("ACOS", small, _zorAcosFloat8, acos);
    beside("INTEGER", any, _zorInteger, floor);
    beside("INTEGER-PART", any, _zorIntegerPart, trunc);
    bench::row("REM", each(any, [](double x) { return _zorRemFloat8Float8(x, 7); }), "fmod",
               each(any, [](double x) { return fmod(x, 7); }));
    static constinit zor::LateFunction<__float128(__float128)> quadSine(zor::quadLibrary, "sinq");
    bench::row("SIN, 128-bit", each(any, [](double x) { return _zorSinFloat16(x); }), "sinq",
               each(any, [](double x) { return quadSine(static_cast<__float128>(x)); }));
    unsigned seed = 1;
    bench::row("RANDOM", each(any, [](double) { return _zorRandom(); }), "rand_r",
               each(any, [&](double) { return rand_r(&seed); }));
}

} // namespace

// Exponentiation: the languages' special cases in every form, and fixed-point powers against
// integers of any length.
#include <cerrno>
#include <cmath>

#include <boost/multiprecision/cpp_int.hpp>

#include "numeric_functions/forms_kit.h"
#include "power.h"
#include "text/statement_kit.h"

namespace {

using Integer = boost::multiprecision::cpp_int;

// ---- floating powers

struct Event {
    double base;
    double exponent;
    double result;
    std::string messages{};
};

const double kInf = HUGE_VAL;
const double kNaN = std::nan("");

// In all forms; what a form's operands cannot be is left out.
// clang-format off
const Event kEvents[] = {
    {2, 10, 1024},            {-2, 3, -8},               {-2, 2, 4},           {-2, -1, -0.5},
    {2, 0, 1},                {-2, 0, 1},                {0, 2, 0},            {-0.0, 3, 0},
    {0, 0, 1, "49;"},         {0, -1, 0, "50;"},         {0, -0.5, 0, "50;"},  {0, 0.5, 0},
    {4, 0.5, 2},              {-4, 0.5, 2, "48;"},       {-4, -1.5, 0.125, "48;"},
    {10, 1e5, kInf, "58;"},   {-10, 99999, -kInf, "58;"}, {-1e30, 99999.5, kInf, "48;58;"},
    {kInf, 2, kInf, "58;"},   {-kInf, 3, -kInf, "58;"},  {-kInf, 0.5, kInf, "58;"},
    {-2, kInf, kInf, "58;"},  {kNaN, 2, kNaN},           {2, kNaN, kNaN},      {0, kNaN, kNaN},
    {10, -1e5, 0},
};
// clang-format on

template <class Base, class Exponent, class Result>
void expectEvents(Result (*power)(Base, Exponent, int32_t *)) {
    for (const Event &e : kEvents) {
        const bool isWhole = std::isfinite(e.exponent) && e.exponent == std::floor(e.exponent);
        if ((std::is_integral_v<Exponent> && !isWhole) ||
            (std::is_integral_v<Base> && (!std::isfinite(e.base) || std::abs(e.base) > 1e9))) {
            continue;
        }
        for (const int32_t before : {0, 7}) {
            int32_t count = before;
            const auto result = static_cast<double>(
                power(static_cast<Base>(e.base), static_cast<Exponent>(e.exponent), &count));
            const auto events = static_cast<int32_t>(e.messages.size() / 3);
            // Decimal results need not be exact; nor is every NaN of the same kind.
            EXPECT_TRUE(result == e.result || std::abs(result - e.result) < 1e-30 ||
                        (result != result && e.result != e.result))
                << e.base << " ** " << e.exponent << " is " << result;
            EXPECT_EQ(forms::takeNumbers(), before == 0 ? e.messages : "") << e.base;
            EXPECT_EQ(count, before == 0 ? 0 : before + events);
        }
    }
}

// It has no counter of its own.
ZorBinary64 service(ZorBinary64 base, ZorBinary64 exponent, int32_t *count) {
    return *count == 0 ? KXESDXPD(base, exponent) : _zorExpFloat8Float8(base, exponent, count);
}

template <class... Functions> void expectEventsOf(Functions... functions) {
    (expectEvents(functions), ...);
}

TEST(FloatingPower, EventsInEveryForm) {
    expectEventsOf(_zorExpFloat8Float8, _zorExpFloat16Float8, _zorExpDFloat16DFloat16,
                   _zorExpFloat4Float4, _zorExpInt8Int8, _zorExpInt4Int4, _zorExpFloat4Int4,
                   _zorExpFloat8Int8, _zorExpFloat16Int8, _zorExpDFloat16Int8, service);
}

TEST(FloatingPower, IntegersBeyondDoubles) {
    constexpr int64_t kOdd = (1LL << 53) + 1;
    int32_t count = 0;
    EXPECT_TRUE(_zorExpFloat16Int8(-1, kOdd, &count) == -1);
    const auto minusOne = static_cast<ZorDecimal128>(-1);
    EXPECT_TRUE(_zorExpDFloat16Int8(minusOne, kOdd, &count) == minusOne);
    EXPECT_EQ(_zorExpInt8Int8(kOdd, 1, &count), 9007199254740992.0);
    EXPECT_EQ(_zorExpFloat8Float8(-1, 0x1p52 + 1, &count), -1);   // the last bit of its form
    EXPECT_TRUE(std::isinf(_zorExpFloat4Float4(10, 39, &count))); // a number in 64 bits
    EXPECT_EQ(forms::takeNumbers(), "58;");
    errno = EDOM;
    EXPECT_EQ(_zorExpFloat8Float8(2, 0.5, &count), std::sqrt(2.0));
    EXPECT_EQ(errno, 0);
    count = 1;
    EXPECT_EQ(_zorExpFloat8Float8(10, 400, &count), kInf);
    EXPECT_EQ(errno, ERANGE);
}

// ---- fixed-point powers

struct Fixed {
    std::string base; // digits behind a sign
    unsigned scale;
    std::string exponent;
    unsigned whole;
    unsigned fraction;
};

struct Outcome {
    std::string text; // empty: nothing is stored
    std::string messages;
    int counted = 0;
};

const Integer kTooLong = pow(Integer(10), 31);

struct Number {
    Integer digits;
    int64_t scale;

    bool multiply(const Number &factor) {
        digits *= factor.digits;
        scale += factor.scale;
        for (; digits >= kTooLong && scale > 0; --scale) {
            digits /= 10;
        }
        return digits < kTooLong;
    }
};

std::string shown(Integer digits, const Fixed &f, bool negative) {
    const unsigned length = f.whole + f.fraction;
    digits %= pow(Integer(10), length);
    const std::string text = length == 0 ? "" : digits.str();
    return (negative && digits != 0 ? "-" : "+") + std::string(length - text.size(), '0') + text;
}

Outcome model(const Fixed &f, bool counts) {
    const auto event = [&](const char *message, const Integer &result) {
        return counts ? Outcome{"", "", 1} : Outcome{shown(result, f, false), message};
    };
    const Integer base(f.base.substr(std::min(f.base.find_first_not_of("+-0"), f.base.size() - 1)));
    const uint32_t n = static_cast<uint32_t>(std::stoll(f.exponent.substr(1)) % 1'000'000'000);
    const bool isLong = std::stoll(f.exponent.substr(1)) > 999'999'999;
    const bool isInverse = f.exponent[0] == '-' && n != 0;
    if (base == 0) {
        return n == 0      ? event("49;", 1)
               : isInverse ? event("50;", 0)
                           : Outcome{shown(0, f, false), ""};
    }
    Number power{base, f.scale};
    Number product{1, 0};
    bool fits = true;
    for (uint32_t bits = n; bits != 0 && fits;) {
        fits = (bits & 1) == 0 || product.multiply(power);
        bits >>= 1;
        fits = fits && (bits == 0 || power.multiply(power));
    }
    if (!fits) {
        return event("60;", 0);
    }
    const auto tenTo = [](int64_t power10) {
        return Integer(pow(Integer(10), static_cast<unsigned>(power10)));
    };
    const Integer digits = isInverse ? tenTo(product.scale + f.fraction) / product.digits
                                     : product.digits * tenTo(f.fraction) / tenTo(product.scale);
    if (counts && digits >= tenTo(f.whole + f.fraction)) {
        return {"", "", 1};
    }
    const std::string messages =
        std::string(isLong ? "59;" : "") + (isInverse && digits == 0 ? "51;" : "");
    return {shown(digits, f, f.base[0] == '-' && n % 2 != 0), messages};
}

void expectPower(const Fixed &f) {
    const auto word = [](auto value) { return static_cast<uint16_t>(value); };
    const ExpDescriptor descriptor{word(f.exponent.size() - 1),
                                   {},
                                   word(f.base.size() - 1),
                                   word(f.scale),
                                   0,
                                   word(f.whole + f.fraction),
                                   word(f.fraction),
                                   word(f.whole)};
    for (const int32_t before : {0, 3}) {
        const Outcome expected = model(f, before != 0);
        const unsigned length = f.whole + f.fraction + 1;
        std::string result(length + 1, '#');
        int32_t count = before;
        _zorcExpFixedPt(&descriptor, f.exponent.c_str(), f.base.c_str(), result.data(), &count);
        EXPECT_EQ(result, (expected.text.empty() ? std::string(length, '#') : expected.text) + "#")
            << f.base << " (" << f.scale << ") ** " << f.exponent;
        EXPECT_EQ(forms::takeNumbers(), expected.messages) << f.base << " ** " << f.exponent;
        EXPECT_EQ(count, before + expected.counted);
    }
}

TEST(FixedPower, CasesByHand) {
    // clang-format off
    for (const Fixed &f : std::initializer_list<Fixed>{
             {"+15", 1, "+2", 3, 2},   {"-15", 1, "+3", 3, 3},  {"-2", 0, "+0", 3, 0},
             {"+0", 0, "+0", 3, 2},    {"-000", 2, "-1", 3, 2}, {"+0", 0, "+5", 3, 0},
             {"+10", 0, "+40", 31, 0}, {"+10", 0, "+30", 31, 0}, {"+2", 0, "-1", 1, 4},
             {"+3", 0, "-1", 0, 9},    {"-1", 0, "-3", 2, 0},   {"+10", 0, "-3", 2, 2},
             {"+10", 0, "-2", 2, 2},   {"+5", 1, "-9", 2, 0},   {"+1", 0, "+1000000003", 1, 0},
             {"+99", 0, "+2", 2, 0},   {"+001", 3, "+16", 1, 9}, {"+1", 0, "-9999999999", 1, 0},
             {"+5", 1, "-200", 9, 9},  {"+1", 1, "-60", 7, 3},  {"-7", 3, "-15", 4, 2},
             {"+9999999999999999999999999999999", 0, "+1", 31, 0},
             {"+9999999999999999999999999999999", 31, "+3", 1, 30},
             {"+100001", 5, "+999999", 31, 0}, {"+3", 1, "-30", 5, 0}}) {
        // clang-format on
        expectPower(f);
    }
    // A billion integer digits, all but the last five of them dropped.
    const ExpDescriptor descriptor{9, {}, 1, 1, 0, 5, 0, 5};
    char result[7] = "######";
    int32_t count = 0;
    _zorcExpFixedPt(&descriptor, "-999999999", "+1", result, &count);
    EXPECT_STREQ(result, "+00000");
}

TEST(FixedPower, AgreesWithLongIntegers) {
    Random random(1);
    for (int i = 0; i < 20'000 && !testing::Test::HasFailure(); ++i) {
        const std::string base = random.text(1 + random.below(i % 4 == 0 ? 31 : 5), 10);
        const auto scale = random.below(base.size() + 3);
        const std::string exponent = std::to_string(random.below(i % 8 == 0 ? 300 : 12));
        expectPower({"+-"[random.below(2)] + base, scale, (random.oneIn(3) ? "-" : "+") + exponent,
                     random.below(20), random.below(14)});
    }
}

} // namespace

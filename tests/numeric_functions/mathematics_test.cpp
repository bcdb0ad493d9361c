// The elementary functions, REM, INTEGER and INTEGER-PART in each of their forms.
#include <cfenv>

#include "mathematics.h"
#include "numeric_functions/forms_kit.h"

using namespace forms;

namespace {

// Calls a body with each form of an elementary function, and each of its names.
template <class Body> void forEachForm(const std::string &function, Body body) {
#define ELEMENTARY(NAME, Name, name)                                                               \
    if (function == #NAME) {                                                                       \
        body(_zor##Name##Float8), body(_Tvq_##name), body(_zor##Name##Float16);                    \
        body(_Tvq_##name##_float16), body(_Tvq_##name##_decfloat16);                               \
    }
    ELEMENTARY(ACOS, Acos, acos)
    ELEMENTARY(ASIN, Asin, asin)
    ELEMENTARY(COS, Cos, cos)
    ELEMENTARY(SIN, Sin, sin)
    ELEMENTARY(TAN, Tan, tan)
    ELEMENTARY(LOG, Log, log)
    ELEMENTARY(LOG10, Log10, log10)
    ELEMENTARY(SQRT, Sqrt, sqrt)
    if (function == "ATAN") {
        body(_zorAtanFloat8), body(_zorAtanFloat16);
    }
}

// Arguments that all forms hold, 40 digits of the value there, and what is said.
struct Row {
    std::string function, argument, value, message = "";
};

const std::vector<Row> kRows = {
    {"ACOS", "0.9990234375", "0.04419777114571531792656668796275524313308"},
    {"ACOS", "-1", "3.141592653589793238462643383279502884197"},
    {"ACOS", "-inf", "nan", argument("179", "ACOS is below -1")},
    {"ACOS", "1.00000001", "nan", argument("176", "ACOS is above 1")},
    {"ASIN", "9.31322574615478515625E-10", "9.313225746154785157596322611577193481762E-10"},
    {"ASIN", "-1.5", "nan", argument("179", "ASIN is below -1")},
    {"ASIN", "1E99", "nan", argument("176", "ASIN is above 1")},
    {"ATAN", "0.4375", "0.4124104415973873068997912896671269370468"},
    {"COS", "1048576.125", "0.8952403426224849708367334993481619344726"},
    {"SIN", "-3.140625", "-0.0009676534387822794649952900176795901084611"},
    {"TAN", "1048576.125", "0.4977250926114104751874545686900414228654"},
    {"LOG", "9.9951171875", "2.302096692495936809553006491124467296618"},
    {"LOG", "-0", "-inf", argument("178", "LOG must be above 0")},
    {"LOG10", "0.75", "-0.1249387366082999531324498861938707443363"},
    {"LOG10", "0", "-inf", argument("178", "LOG10 must be above 0")},
    {"LOG10", "-1", "nan", argument("178", "LOG10 must be above 0")},
    {"SQRT", "12345.0625", "111.1083367709192198040098293649937251729"},
    {"SQRT", "-1E-99", "nan", argument("179", "SQRT is below 0")}};

TEST(Mathematics, ValuesAreRightToTheLastPlaceButOne) {
    for (const Row &row : kRows) {
        forEachForm(row.function, [&]<class T>(T (*call)(T)) {
            const T wanted = parse<T>(row.value);
            T value;
            EXPECT_SAID(row.message, value = call(parse<T>(row.argument)));
            EXPECT_TRUE(value == wanted || isNear(value, wanted) || (isNaN(value) && isNaN(wanted)))
                << row.function << " " << row.argument << " " << sizeof(T) << isDecimal<T>;
        });
    }
    EXPECT_EQ(fegetexcept(), FE_DIVBYZERO); // as it was
}

// coefficient * radix^exponent, which the form holds.
template <class T> T scaled(uint64_t coefficient, int exponent) {
    char text[40];
    snprintf(text, sizeof text, isDecimal<T> ? "%lluE%d" : "0x%llxp%d", coefficient, exponent);
    return parse<T>(text);
}

template <class T> void expectRemainders(T (*rem)(T, T), int mostPlaces, uint64_t most) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100; ++i) {
        const auto places = static_cast<int>(random() % static_cast<unsigned>(mostPlaces));
        const uint64_t x = random() % most, y = random() % (most >> random() % 40) + 1;
        uint64_t rest = x % y; // digit by digit
        for (int place = 0; place < places; ++place) {
            rest = rest * (isDecimal<T> ? 10 : 2) % y;
        }
        const auto unit = static_cast<int>(random() % 40) - 20;
        const T dividend = scaled<T>(x, places + unit), divisor = scaled<T>(y, unit);
        ASSERT_TRUE(rem(dividend, -divisor) == scaled<T>(rest, unit)) << x << " " << y;
        ASSERT_TRUE(rem(-dividend, divisor) == -scaled<T>(rest, unit)) << x << " " << y;
        ASSERT_TRUE(rem(divisor, divisor + dividend + dividend) == divisor || x == 0);
    }
    EXPECT_FALSE(std::signbit(static_cast<double>(rem(T(-6), T(2))))); // zero is positive
    EXPECT_TRUE(rem(T(7), static_cast<T>(-kInfinity)) == T(7));
    EXPECT_TRUE(isNaN(rem(static_cast<T>(kInfinity), T(7))) && isNaN(rem(T(7), T(NAN))));
    EXPECT_SAID(argument("177", "REM is 0, which is not allowed"),
                EXPECT_TRUE(isNaN(rem(T(7), T(0)))));
}

TEST(Remainder, IsExactForQuotientsOfAnyLength) {
    expectRemainders(_zorRemFloat8Float8, 700, 1ULL << 53);
    expectRemainders(_Tvq_rem, 700, 1ULL << 53);
    expectRemainders(_zorRemFloat16Float16, 12000, 1ULL << 60);
    expectRemainders(_Tvq_rem_float16, 12000, 1ULL << 60);
    expectRemainders(_Tvq_rem_decfloat16, 4000, 1'000'000'000'000'000'000);
    EXPECT_SAID(argument("177", "MOD is 0, which is not allowed") +
                    argument("177", "REM is 0, which is not allowed") +
                    "ZOR162W  The argument of function CHAR is outside the collating sequence."
                    "ZOR157W  The argument of function ORD is not a character of the collating "
                    "sequence.",
                _Tvq_issue_Mod_ErrMsg(), _Tvq_issue_Rem_ErrMsg(), _Tvq_char_msg(), _Tvq_ord_msg());
}

TEST(Integers, AreThoseOfTheirForm) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 100000; ++i) {
        const auto bits = static_cast<int64_t>(random());
        const double value = std::ldexp(bits, static_cast<int>(random() % 80) - 70);
        ASSERT_EQ(_zorInteger(value), std::floor(value)) << value;
        ASSERT_EQ(_zorIntegerPart(value), std::trunc(value)) << value;
        const ZorBinary128 whole = bits >> random() % 60 >> 3; // and a fraction beyond any double
        const ZorBinary128 behind = whole + static_cast<ZorBinary128>(random() >> 13 | 1) * 0x1p-51;
        ASSERT_TRUE(_zorInteger16(behind) == whole && _zorInteger16(whole) == whole) << value;
        ASSERT_TRUE(_zorIntegerPart16(behind) == (whole < 0 ? whole + 1 : whole)) << value;
    }
    EXPECT_TRUE(std::signbit(_zorIntegerPart(-0.5)) && isNaN(_zorInteger(std::nan(""))));
    EXPECT_TRUE(_zorIntegerPart16(-kInfinity) == -kInfinity && _zorInteger(1e300) == 1e300);
}

} // namespace

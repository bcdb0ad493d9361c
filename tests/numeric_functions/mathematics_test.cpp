// The elementary functions, REM, INTEGER and INTEGER-PART in each of their forms.
#include <cfenv>

#include "mathematics.h"
#include "numeric_functions/forms_kit.h"

using namespace forms;

namespace {

template <class T> using Function = T (*)(T);

struct Elementary {
    std::string name;
    std::vector<Function<ZorBinary64>> binary64;
    std::vector<Function<ZorBinary128>> binary128;
    std::vector<Function<ZorDecimal128>> decimal128;

    template <class Body> void forEachForm(Body body) const {
        const auto each = [&](const auto &list) {
            for (const auto call : list) {
                body(call);
            }
        };
        each(binary64), each(binary128), each(decimal128);
    }
};

#define ELEMENTARY(NAME, Name, name)                                                               \
    {                                                                                              \
#NAME, {_zor##Name##Float8, _Tvq_##name },                                                 \
                {_zor##Name##Float16, _Tvq_##name##_float16 }, {                                   \
            _Tvq_##name##_decfloat16                                                               \
        }                                                                                          \
    }
const std::vector<Elementary> kFunctions = {ELEMENTARY(ACOS, Acos, acos),
                                            ELEMENTARY(ASIN, Asin, asin),
                                            ELEMENTARY(COS, Cos, cos),
                                            ELEMENTARY(SIN, Sin, sin),
                                            ELEMENTARY(TAN, Tan, tan),
                                            ELEMENTARY(LOG, Log, log),
                                            ELEMENTARY(SQRT, Sqrt, sqrt),
                                            ELEMENTARY(LOG10, Log10, log10),
                                            {"ATAN", {_zorAtanFloat8}, {_zorAtanFloat16}, {}}};

// Arguments that all forms hold exactly, and 40 digits of the function's value.
const std::vector<std::array<std::string, 3>> kReferences = {
    {"ACOS", "0.9990234375", "0.04419777114571531792656668796275524313308"},
    {"ASIN", "0.8125", "0.9484278382398759813267719803373678645611"},
    {"ASIN", "9.31322574615478515625E-10", "9.313225746154785157596322611577193481762e-10"},
    {"ATAN", "0.4375", "0.4124104415973873068997912896671269370468"},
    {"ATAN", "-70.5", "-1.556612880803587880461949034098028079452"},
    {"COS", "355", "-0.9999999995456589801659358416927540811238"},
    {"COS", "1048576.125", "0.8952403426224849708367334993481619344726"},
    {"SIN", "-3.140625", "-0.0009676534387822794649952900176795901084611"},
    {"TAN", "-3.140625", "0.0009676538918152837176599821259952658789431"},
    {"TAN", "1048576.125", "0.4977250926114104751874545686900414228654"},
    {"LOG", "9.094947017729282379150390625E-13", "-27.72588722239781237668928485832706272302"},
    {"LOG10", "0.75", "-0.1249387366082999531324498861938707443363"},
    {"LOG", "9.9951171875", "2.302096692495936809553006491124467296618"},
    {"SQRT", "12345.0625", "111.1083367709192198040098293649937251729"}};

TEST(Mathematics, ValuesAreRightToTheLastPlaceButOne) {
    for (const Elementary &function : kFunctions) {
        function.forEachForm([&]<class T>(Function<T> call) {
            for (const auto &row : kReferences) {
                EXPECT_TRUE(row[0] != function.name ||
                            isNear(call(parse<T>(row[1])), parse<T>(row[2])))
                    << row[0] << " " << row[1] << " " << sizeof(T) << isDecimal<T>;
            }
        });
    }
}

struct Bound {
    std::string name;
    double argument;
    std::string message;
    double value = NAN;
};

const std::vector<Bound> kBounds = {
    {"ACOS", -kInfinity, argument("179", "ACOS is below -1")},
    {"ACOS", -1, "", std::acos(-1)},
    {"ACOS", 1.00000001, argument("176", "ACOS is above 1")},
    {"ACOS", NAN, ""},
    {"ASIN", -1.00000001, argument("179", "ASIN is below -1")},
    {"ASIN", 1, "", std::asin(1)},
    {"ASIN", 1e99, argument("176", "ASIN is above 1")},
    {"ATAN", kInfinity, "", std::atan(kInfinity)},
    {"COS", kInfinity, ""},
    {"SIN", -kInfinity, ""},
    {"TAN", NAN, ""},
    {"LOG", -0.0, argument("178", "LOG must be above 0"), -kInfinity},
    {"LOG", -1, argument("178", "LOG must be above 0")},
    {"LOG", kInfinity, "", kInfinity},
    {"LOG10", 0, argument("178", "LOG10 must be above 0"), -kInfinity},
    {"SQRT", -1e-99, argument("179", "SQRT is below 0")},
    {"SQRT", -0.0, "", -0.0}};

TEST(Mathematics, OutOfRangeThereIsAMessageAndTheLibrarysValue) {
    for (const Elementary &function : kFunctions) {
        for (const Bound &bound : kBounds) {
            function.forEachForm([&]<class T>(Function<T> call) {
                T value;
                if (bound.name == function.name) {
                    EXPECT_SAID(bound.message, value = call(static_cast<T>(bound.argument)));
                    EXPECT_TRUE(isNaN(bound.value) ? isNaN(value)
                                                   : static_cast<double>(value) == bound.value)
                        << bound.name << bound.argument << sizeof(T);
                }
            });
        }
    }
    EXPECT_EQ(fegetexcept(), FE_DIVBYZERO);
}

// coefficient * radix^exponent, without rounding.
template <class T> T scaled(uint64_t coefficient, int exponent) {
    const auto radix = static_cast<T>(isDecimal<T> ? 10 : 2);
    auto value = static_cast<T>(coefficient);
    for (int i = std::abs(exponent); i > 0; --i) {
        value = exponent > 0 ? value * radix : value / radix;
    }
    return value;
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
        const T unit = scaled<T>(1, static_cast<int>(random() % 40) - 20);
        const T dividend = scaled<T>(x, places) * unit, divisor = T(y) * unit;
        ASSERT_TRUE(rem(dividend, -divisor) == T(rest) * unit) << x << " " << places << " " << y;
        ASSERT_TRUE(rem(-dividend, divisor) == T(rest) * -unit);
        ASSERT_TRUE(rem(dividend, scaled<T>(1, 64) * dividend + unit) == dividend);
    }
    const T zero = rem(T(-6), T(2)); // it is positive
    EXPECT_TRUE(zero == T(0) && !std::signbit(static_cast<double>(zero)));
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
    const auto all = parse<ZorDecimal128>(std::string(34, '9'));
    EXPECT_TRUE(_Tvq_rem_decfloat16(all, all - ZorDecimal128(1)) == ZorDecimal128(1));
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

TEST(Mathematics, WorksFromAnyStack) {
    const auto expectSame = []<class T>(Function<T> function, const char *text) {
        for (const unsigned offset : {0U, 4U, 8U, 12U}) {
            alignas(16) T room[2];
            const T argument = parse<T>(text);
            uint32_t words[8] = {reinterpret_cast<uintptr_t>(room) + offset};
            memcpy(words + 4, &argument, sizeof argument);
            callAt(offset, function, words, 8);
            const T result = function(argument);
            EXPECT_EQ(memcmp(reinterpret_cast<char *>(room) + offset, &result, sizeof result), 0);
        }
    };
    expectSame(_zorLogFloat16, "0.7");
    expectSame(_zorInteger16, "-0.7");
    expectSame(_Tvq_acos_decfloat16, "0.7");
    expectSame(_Tvq_random_decfloat16, "7");
}

} // namespace

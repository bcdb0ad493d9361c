// The elementary functions, REM, INTEGER and INTEGER-PART in each of their forms.
#include <cfenv>
#include <limits>
#include <random>

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
};

const std::vector<Elementary> kFunctions = {
    {"ACOS", {_zorAcosFloat8, _Tvq_acos}, {_zorAcosFloat16, _Tvq_acos_float16},
     {_Tvq_acos_decfloat16}},
    {"ASIN", {_zorAsinFloat8, _Tvq_asin}, {_zorAsinFloat16, _Tvq_asin_float16},
     {_Tvq_asin_decfloat16}},
    {"ATAN", {_zorAtanFloat8}, {_zorAtanFloat16}, {}},
    {"COS", {_zorCosFloat8, _Tvq_cos}, {_zorCosFloat16, _Tvq_cos_float16}, {_Tvq_cos_decfloat16}},
    {"SIN", {_zorSinFloat8, _Tvq_sin}, {_zorSinFloat16, _Tvq_sin_float16}, {_Tvq_sin_decfloat16}},
    {"TAN", {_zorTanFloat8, _Tvq_tan}, {_zorTanFloat16, _Tvq_tan_float16}, {_Tvq_tan_decfloat16}},
    {"LOG", {_zorLogFloat8, _Tvq_log}, {_zorLogFloat16, _Tvq_log_float16}, {_Tvq_log_decfloat16}},
    {"LOG10", {_zorLog10Float8, _Tvq_log10}, {_zorLog10Float16, _Tvq_log10_float16},
     {_Tvq_log10_decfloat16}},
    {"SQRT", {_zorSqrtFloat8, _Tvq_sqrt}, {_zorSqrtFloat16, _Tvq_sqrt_float16},
     {_Tvq_sqrt_decfloat16}}};

template <class Body> void forEachForm(const Elementary &function, Body body) {
    for (const auto call : function.binary64) {
        body(call);
    }
    for (const auto call : function.binary128) {
        body(call);
    }
    for (const auto call : function.decimal128) {
        body(call);
    }
}

// Arguments that all forms hold exactly, and 40 digits of the function's value.
struct Reference {
    std::string name;
    const char *argument, *value;
};

const std::vector<Reference> kReferences = {
    {"ACOS", "-0.375", "1.955193101290535702269516564606798415851"},
    {"ACOS", "0.9990234375", "0.04419777114571531792656668796275524313308"},
    {"ASIN", "0.8125", "0.9484278382398759813267719803373678645611"},
    {"ASIN", "0.9990234375", "1.526598555649181301304755003676996198966"},
    {"ASIN", "9.31322574615478515625E-10", "9.313225746154785157596322611577193481762e-10"},
    {"ATAN", "0.4375", "0.4124104415973873068997912896671269370468"},
    {"ATAN", "-70.5", "-1.556612880803587880461949034098028079452"},
    {"COS", "355", "-0.9999999995456589801659358416927540811238"},
    {"COS", "1048576.125", "0.8952403426224849708367334993481619344726"},
    {"SIN", "-3.140625", "-0.0009676534387822794649952900176795901084611"},
    {"SIN", "355", "-3.014435335948844921433028000865009959026e-5"},
    {"SIN", "1048576.125", "0.4455835824412471766681236719424170422756"},
    {"TAN", "-3.140625", "0.0009676538918152837176599821259952658789431"},
    {"TAN", "1048576.125", "0.4977250926114104751874545686900414228654"},
    {"LOG", "1.0009765625", "0.0009760859730554588959608249080171866726118"},
    {"LOG", "12345.0625", "9.421011464544916873235305744788316097532"},
    {"LOG", "9.094947017729282379150390625E-13", "-27.72588722239781237668928485832706272302"},
    {"LOG10", "0.75", "-0.1249387366082999531324498861938707443363"},
    {"LOG10", "1.0009765625", "0.0004239087519611519445451132742644783122351"},
    {"LOG10", "1E22", "22.0"},
    {"LOG", "9.9951171875", "2.302096692495936809553006491124467296618"},
    {"SQRT", "0.75", "0.8660254037844386467637231707529361834714"},
    {"SQRT", "12345.0625", "111.1083367709192198040098293649937251729"},
    {"SQRT", "9.094947017729282379150390625E-13", "9.5367431640625e-7"}};

TEST(Mathematics, ValuesAreRightToTheLastPlaceButOne) {
    for (const auto &[name, argument, value] : kReferences) {
        for (const Elementary &function : kFunctions) {
            forEachForm(function, [&, &name = name, argument = argument,
                                   value = value]<class T>(Function<T> call) {
                if (function.name == name) {
                    EXPECT_TRUE(isNear(call(parse<T>(argument)), parse<T>(value)))
                        << name << " " << argument << " " << sizeof(T) << isDecimal<T>;
                }
            });
        }
    }
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What a function says of an argument, and whether it has a value there.
std::pair<std::string, bool> modelOf(const std::string &name, double argument) {
    const bool isArc = name == "ACOS" || name == "ASIN";
    const bool isTurn = name == "SIN" || name == "COS" || name == "TAN";
    if (isArc && std::fabs(argument) > 1) {
        return {argument < 0 ? argumentMessage("179", name, " is below -1.")
                             : argumentMessage("176", name, " is above 1."),
                false};
    }
    if (name.starts_with("LOG") && argument <= 0) {
        return {argumentMessage("178", name, " must be above 0."), argument == 0};
    }
    if (name == "SQRT" && argument < 0) {
        return {argumentMessage("179", name, " is below 0."), false};
    }
    return {"", !std::isnan(argument) && !(isTurn && std::isinf(argument))};
}

TEST(Mathematics, OutOfRangeThereIsAMessageAndTheLibrarysValue) {
    for (const Elementary &function : kFunctions) {
        for (const double argument : {-kInfinity, -1.5, -1.0, -0.0, 0.0, 0.5, 1.0, 1.00000001,
                                      1e99, std::nan(""), kInfinity}) {
            const auto [message, hasValue] = modelOf(function.name, argument);
            forEachForm(function, [&, &message = message,
                                   hasValue = hasValue]<class T>(Function<T> call) {
                T value;
                EXPECT_EQ(said([&] { value = call(static_cast<T>(argument)); }), message);
                EXPECT_EQ(isNaN(value), !hasValue) << function.name << argument << sizeof(T);
                if (hasValue && message.size() > 0) {
                    EXPECT_EQ(static_cast<double>(value), -kInfinity) << function.name;
                }
            });
        }
    }
    EXPECT_EQ(fegetexcept(), FE_DIVBYZERO);
}

// ---- REM

// coefficient * radix^exponent, without rounding.
template <class T> T scaled(uint64_t coefficient, int exponent) {
    auto value = static_cast<T>(coefficient);
    for (int i = std::abs(exponent); i > 0; --i) {
        value = exponent > 0 ? value * static_cast<T>(kRadix<T>) : value / static_cast<T>(kRadix<T>);
    }
    return value;
}

template <class T> void expectRemainders(T (*rem)(T, T), int mostPlaces, uint64_t most) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200; ++i) {
        const auto places = static_cast<int>(random() % static_cast<unsigned>(mostPlaces));
        const int exponent = static_cast<int>(random() % 40) - 20;
        const uint64_t x = random() % most, y = random() % (most >> random() % 40) + 1;
        uint64_t rest = x % y; // digit by digit
        for (int place = 0; place < places; ++place) {
            rest = rest * kRadix<T> % y;
        }
        const T dividend = scaled<T>(x, places) * scaled<T>(1, exponent);
        const T divisor = scaled<T>(y, exponent);
        const T wanted = scaled<T>(rest, exponent);
        ASSERT_TRUE(rem(dividend, divisor) == wanted) << x << " " << places << " " << y;
        ASSERT_TRUE(rem(-dividend, divisor) == -wanted && rem(dividend, -divisor) == wanted);
        ASSERT_TRUE(rem(dividend, scaled<T>(y, exponent + mostPlaces + 64)) == dividend);
    }
    const T zero = rem(T(-6), T(2)); // it is positive
    EXPECT_TRUE(zero == T(0) && !std::signbit(static_cast<double>(zero)));
    EXPECT_TRUE(rem(T(7), static_cast<T>(-kInfinity)) == T(7));
    EXPECT_TRUE(isNaN(rem(static_cast<T>(kInfinity), T(7))) && isNaN(rem(T(7), T(NAN))));
    EXPECT_EQ(said([&] { EXPECT_TRUE(isNaN(rem(T(7), T(0)))); }),
              argumentMessage("177", "REM", " is 0, which is not allowed."));
}

TEST(Remainder, IsExactForQuotientsOfAnyLength) {
    expectRemainders(_zorRemFloat8Float8, 700, 1ULL << 53);
    expectRemainders(_Tvq_rem, 700, 1ULL << 53);
    expectRemainders(_zorRemFloat16Float16, 12000, 1ULL << 60);
    expectRemainders(_Tvq_rem_float16, 12000, 1ULL << 60);
    expectRemainders(_Tvq_rem_decfloat16, 4000, 1'000'000'000'000'000'000);
    EXPECT_TRUE(_Tvq_rem_decfloat16(parse<ZorDecimal128>("9999999999999999999999999999999999"),
                                    parse<ZorDecimal128>("9999999999999999999999999999999998")) ==
                ZorDecimal128(1));
    EXPECT_EQ(said([] {
                  _Tvq_issue_Mod_ErrMsg();
                  _Tvq_issue_Rem_ErrMsg();
                  _Tvq_char_msg();
                  _Tvq_ord_msg();
              }),
              argumentMessage("177", "MOD", " is 0, which is not allowed.") +
                  argumentMessage("177", "REM", " is 0, which is not allowed.") +
                  "ZOR162W  The argument of function CHAR is outside the collating sequence."
                  "ZOR157W  The argument of function ORD is not a character of the collating "
                  "sequence.");
}

TEST(Integers, AreThoseOfTheirForm) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        const uint64_t bits = random();
        const double value = std::ldexp(static_cast<double>(static_cast<int64_t>(bits)),
                                        static_cast<int>(random() % 80) - 70);
        ASSERT_EQ(_zorInteger(value), std::floor(value)) << value;
        ASSERT_EQ(_zorIntegerPart(value), std::trunc(value)) << value;
        ASSERT_EQ(std::signbit(_zorIntegerPart(value)), std::signbit(value)) << value;
        // 61 bits ahead of the point, and a fraction behind that no double could keep.
        const int64_t whole = static_cast<int64_t>(bits) >> random() % 60 >> 3;
        const ZorBinary128 fraction = static_cast<ZorBinary128>(random() >> 13 | 1) * 0x1p-51;
        ASSERT_TRUE(_zorInteger16(whole + fraction) == whole) << whole;
        ASSERT_TRUE(_zorInteger16(static_cast<ZorBinary128>(whole)) == whole) << whole;
        ASSERT_TRUE(_zorIntegerPart16(whole + fraction) == (whole < 0 ? whole + 1 : whole));
    }
    for (const double value : {-kInfinity, -0.0, 0.0, 1e300, kInfinity}) {
        EXPECT_TRUE(_zorInteger(value) == value && _zorIntegerPart16(value) == value);
    }
    EXPECT_TRUE(isNaN(_zorInteger(std::nan(""))) && isNaN(_zorIntegerPart16(std::nan(""))));
}

TEST(Mathematics, WorksFromAnyStack) {
    const auto expectSame = []<class T>(unsigned offset, Function<T> function, T argument) {
        alignas(16) T result;
        std::vector<uint32_t> words = {reinterpret_cast<uintptr_t>(&result), 0, 0, 0};
        push(words, argument);
        callAt(offset, function, words);
        EXPECT_TRUE(result == function(argument)) << offset;
    };
    for (const unsigned offset : {0U, 4U, 8U, 12U}) {
        expectSame(offset, _zorLogFloat16, parse<ZorBinary128>("0.7"));
        expectSame(offset, _zorInteger16, parse<ZorBinary128>("-0.7"));
        expectSame(offset, _Tvq_acos_decfloat16, parse<ZorDecimal128>("0.7"));
        expectSame(offset, _Tvq_random_decfloat16, parse<ZorDecimal128>("7"));
    }
}

} // namespace

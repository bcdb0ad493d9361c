// The functions of numbers in each of their forms: elementary ones, REM, INTEGER and INTEGER-PART,
// RANDOM and FACTORIAL beside the rules that they follow, statistics and finance.
#include <algorithm>
#include <cfenv>

#include "mathematics.h"
#include "numeric_functions/forms_kit.h"
#include "statistics.h"

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

// The state behind a value of the sequence.
int32_t following(uint64_t value) {
    return static_cast<int32_t>(value * 950706376 % 2147483647);
}

TEST(Random, GoesOnFromTheStateOfTheRunUnit) {
    int32_t &state = _zorProccom->runcom->randomState;
    for (const int32_t start : {1, 0, 2147483646, 2147483647, -5}) {
        state = start;
        for (int i = 0; i < 1000; ++i) {
            const int32_t next = following(state == 0 ? 1 : static_cast<uint32_t>(state));
            ASSERT_EQ((i % 2 == 0 ? _zorRandom : _Tvq_random)(), next / 2147483647.0) << start;
            ASSERT_EQ(state, next);
        }
    }
}

const std::string kNegative = argument("163", "RANDOM is negative");
const std::string kLarge = argument("176", "RANDOM is above 1000000000000000000");
const std::string kFraction = argument("180", "RANDOM is not an integer");

template <class T>
void expectSeed(T (*random)(T), const char *seed, uint64_t value, const std::string &message = "") {
    T number;
    EXPECT_SAID(message, number = random(parse<T>(seed))) << seed;
    EXPECT_TRUE(number == T(following(value)) / T(0x7FFFFFFF)) << seed << sizeof(T);
    EXPECT_EQ(_zorProccom->runcom->randomState, following(value)) << seed;
}

template <class T> void expectSeeds(T (*random)(T)) {
    expectSeed(random, "0", 1);
    expectSeed(random, "2147483645", 2147483646);
    expectSeed(random, "4294967290", 1); // twice the period
    expectSeed(random, "1.5", 2, kFraction);
    expectSeed(random, "-3.5", 4294967294, kNegative + kFraction);
    expectSeed(random, "-1E30", 0, kNegative);
    expectSeed(random, "inf", 1, kLarge);
    expectSeed(random, "nan", 0, kFraction);
    EXPECT_SAID(kLarge, random(parse<T>("1E18")));
    EXPECT_SAID("", random(parse<T>("999999999999999872"))); // the binary64 below
}

TEST(Random, StartsBehindASeed) {
    expectSeeds(_zorRandomFloat8);
    expectSeeds(_Tvq_random_float8);
    expectSeeds(_zorRandomFloat16);
    expectSeeds(_Tvq_random_float16);
    expectSeeds(_Tvq_random_decfloat16);
    constexpr int64_t kLimit = 1'000'000'000'000'000'000;
    for (const int64_t seed :
         {int64_t{0}, int64_t{2147483645}, int64_t{2147483646}, kLimit - 1, kLimit, int64_t{-1}}) {
        const int32_t state = following(static_cast<uint64_t>(seed) % 2147483646 + 1);
        EXPECT_SAID(seed < 0 || seed >= kLimit ? kLarge : "",
                    EXPECT_EQ(_zorRandomInt8(seed), state / 2147483647.0) << seed);
    }
}

TEST(Factorial, HasEveryDigit) {
    std::string digits(63, '0'); // the low-order ones
    digits.back() = '1';
    for (int32_t n = 0; n <= 50; ++n) {
        int32_t carry = 0;
        for (std::size_t i = digits.size(); n > 0 && i-- > 0; carry /= 10) {
            carry += (digits[i] - '0') * n;
            digits[i] = static_cast<char>('0' + carry % 10);
        }
        for (const ZorFactorial &packed : {_Tvq_factorial(n), _Tvq_factorial_decpacked320(n)}) {
            std::string shown = kit::hex(&packed, sizeof packed);
            std::erase(shown, ' ');
            EXPECT_STRCASEEQ(shown.c_str(), (digits + "C").c_str()) << n;
        }
        if (n <= 31) { // with the exponent -1, as long as there is room
            const auto wanted = parse<ZorDecimal128>(digits + (n < 31 ? ".0" : ""));
            const ZorDecimal128 value = _Tvq_factorial_decfloat16(n);
            EXPECT_EQ(memcmp(&value, &wanted, sizeof value), 0) << n;
        }
    }
    for (const int32_t n : {INT32_MIN, -1}) {
        EXPECT_SAID(argument("163", "FACTORIAL is negative"), _Tvq_factorial(n));
        EXPECT_SAID(argument("163", "FACTORIAL is negative"), _Tvq_factorial_decfloat16(n));
    }
    EXPECT_SAID(argument("176", "FACTORIAL is above 31"), _Tvq_factorial_decfloat16(32));
    _Tvq_factorial_deczoned630(5);
    EXPECT_EQ(_Tvq_factorial(51).digits[31], 0x0C);
}

// A list without the alignment of its form.
template <class T> struct Room {
    explicit Room(const std::vector<T> &list) : bytes(4) {
        const auto *from = reinterpret_cast<const char *>(list.data());
        bytes.insert(bytes.end(), from, from + list.size() * sizeof(T));
    }
    T *array() { return reinterpret_cast<T *>(bytes.data() + 4); }
    std::vector<char> bytes;
};

template <class T>
void expectMedians(T (*median)(uint32_t, T *), T *(*medianTo)(uint32_t, T *, T *)) {
    std::mt19937 random(1);
    T result;
    for (unsigned i = 0; i < 2000; ++i) {
        std::vector<T> list(1 + i % 40);
        for (T &value : list) {
            value = static_cast<int32_t>(random() % (1 + i / 40)) - 20;
        }
        Room<T> room(list);
        const auto count = static_cast<uint32_t>(list.size());
        EXPECT_EQ(medianTo(count, &result, room.array()), &result);
        std::sort(list.begin(), list.end());
        EXPECT_TRUE(result == (list[(count - 1) / 2] + list[count / 2]) / 2) << i;
        EXPECT_TRUE(median(count, room.array()) == result) << i; // nothing was lost
    }
    T mixed[] = {static_cast<T>(NAN), 1, 3, static_cast<T>(NAN), 2};
    EXPECT_TRUE(median(5, mixed) == 3 && isNaN(median(2, mixed + 3)) && median(0, mixed) == 0);
    EXPECT_TRUE(median(200000, std::vector<T>(200000, 5).data()) == 5); // its square: for ever
}

TEST(Statistics, MedianIsThatOfTheSortedList) {
    expectMedians(_zorcMedianFloat8, _zorcMedian);
    expectMedians(_zorcMedianFloat16, _zorcMedian16);
}

template <class T> using MeanTo = T *(*)(uint32_t, T *, T, const T *);

template <class T> void expectVariances(MeanTo<T> variance, MeanTo<T> deviation) {
    std::vector<T> list;
    T sum = 0, result, root;
    for (uint32_t count = 1; count < 200; ++count) { // integers have no rounding before the end
        list.push_back(count * count % 1000);
        sum += (list.back() - 21) * (list.back() - 21);
        Room<T> room(list);
        EXPECT_EQ(variance(count, &result, 21, room.array()), &result);
        EXPECT_TRUE(result == sum / count);
        EXPECT_EQ(deviation(count, &root, 21, room.array()), &root);
        EXPECT_TRUE(isNear(root * root, result));
    }
    EXPECT_TRUE(*variance(0, &result, 5, nullptr) == 0 && *deviation(0, &root, 5, nullptr) == 0);
}

TEST(Statistics, VarianceIsThatOfThePopulation) {
    expectVariances(_zorcVariance, _zorcStandardDeviation);
    expectVariances(_zorcVariance16, _zorcStandardDeviation16);
}

const std::string kRate = "ZOR100W  The discount rate of function PRESENT-VALUE must be above -1.";

template <class T> void expectFinance(T *(*present)(uint32_t, T *, const T *), T (*annuity)(T, T)) {
    T result;
    const auto presentOf = [&](const std::vector<T> &list) {
        return *present(static_cast<uint32_t>(list.size()), &result, Room<T>(list).array());
    };
    std::vector<T> shrinking(20000, 1); // the discount becomes zero
    shrinking[0] = -0.5;
    EXPECT_SAID("", EXPECT_TRUE(presentOf(shrinking) == kInfinity));
    EXPECT_TRUE(presentOf({}) == 0 && presentOf({3}) == 0);
    EXPECT_TRUE(presentOf({0.25, 125, 125, 125}) == 100 + 80 + 64);
    EXPECT_TRUE(isNear(presentOf({parse<T>("0.1"), 110, 121}), T(200)));
    EXPECT_SAID(kRate, EXPECT_TRUE(presentOf({-1, 5}) == kInfinity));
    EXPECT_SAID(kRate, EXPECT_TRUE(presentOf({-3, 8, 8}) == -4 + 2));
    EXPECT_SAID("", EXPECT_TRUE(annuity(0, 4) == 0.25 && isNear(annuity(0.125, 1), T(1.125))));
    EXPECT_TRUE(isNear(annuity(2, 0.5), parse<T>("4.732050807568877293527446341505872366943")));
    EXPECT_SAID(argument("163", "ANNUITY is negative"), EXPECT_TRUE(annuity(-0.5, 1) == 0.5));
    EXPECT_SAID(argument("177", "ANNUITY is -2, which is not allowed"),
                EXPECT_TRUE(annuity(0, -2.5) == -1 / static_cast<T>(2.5)));
    EXPECT_SAID(argument("177", "ANNUITY is 0, which is not allowed"),
                EXPECT_TRUE(annuity(1, 0) == kInfinity));
}

TEST(Finance, FollowsTheFormulas) {
    expectFinance(_zorcPresentValue, _zorcAnnuityFloat8);
    expectFinance(_zorcPresentValue, _Tvq_annuity);
    expectFinance(_zorcPresentValue16, _zorcAnnuityFloat16);
    for (const int32_t rate : {-2, -1, 0}) {
        const int32_t wanted = rate > -1 ? 0 : -1;
        const std::string all = said([&] {
            EXPECT_EQ(_Tvq_present_value(rate), wanted);
            EXPECT_EQ(_Tvq_present_value_float16(rate), wanted);
            EXPECT_EQ(_Tvq_present_value_decfloat16(ZorDecimal128(rate)), wanted);
        });
        EXPECT_EQ(all, wanted == 0 ? "" : kRate + kRate + kRate);
    }
}

} // namespace

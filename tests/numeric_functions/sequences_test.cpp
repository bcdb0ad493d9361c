// RANDOM and FACTORIAL, beside the rules that they follow.
#include "mathematics.h"
#include "numeric_functions/forms_kit.h"

using namespace forms;

namespace {

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

} // namespace

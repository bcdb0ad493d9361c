// RANDOM and FACTORIAL, beside the rules that they follow.
#include "mathematics.h"
#include "numeric_functions/forms_kit.h"

using namespace forms;

namespace {

// The state behind a value of the sequence.
int32_t following(uint64_t value) {
    return static_cast<int32_t>(value * 950706376 % 2147483647);
}

CHILD_TEST(Random, IsTheSameInEveryRun, .out = "0.4427071551059872") {
    static kit::Program program("PROG");
    kit::enter(program);
    printf("%.16g", _zorRandom());
}

TEST(Random, GoesOnFromTheStateOfTheRunUnit) {
    said([] {});
    int32_t &state = _zorProccom->runcom->randomState;
    for (const int32_t start : {0, 1, 2147483646, 2147483647, -5}) {
        state = start;
        for (int i = 0; i < 1000; ++i) {
            const int32_t next = following(state == 0 ? 1 : static_cast<uint32_t>(state));
            ASSERT_EQ((i % 2 == 0 ? _zorRandom : _Tvq_random)(), next / 2147483647.0) << start;
            ASSERT_EQ(state, next);
        }
    }
}

struct Seed {
    std::string text;
    uint64_t value; // that the sequence starts behind
    std::string messages;
};

const std::string kNegative = argument("163", "RANDOM is negative");
const std::string kLarge = argument("176", "RANDOM is above 1000000000000000000");
const std::string kFraction = argument("180", "RANDOM is not an integer");

template <class T> void expectSeeds(T (*random)(T)) {
    for (const Seed &seed : std::vector<Seed>{{"0", 1, ""},
                                              {"7", 8, ""},
                                              {"2147483645", 2147483646, ""},
                                              {"4294967290", 1, ""}, // twice the period
                                              {"1.5", 2, kFraction},
                                              {"-1", 0, kNegative},
                                              {"-3.5", 4294967294, kNegative + kFraction},
                                              {"-1E30", 0, kNegative},
                                              {"inf", 1, kLarge},
                                              {"nan", 0, kFraction}}) {
        T number;
        EXPECT_SAID(seed.messages, number = random(parse<T>(seed.text))) << seed.text;
        EXPECT_TRUE(number == T(following(seed.value)) / T(0x7FFFFFFF)) << seed.text << sizeof(T);
        EXPECT_EQ(_zorProccom->runcom->randomState, following(seed.value)) << seed.text;
    }
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
        if (n <= 31) {
            const ZorDecimal128 value = _Tvq_factorial_decfloat16(n);
            EXPECT_TRUE(value == parse<ZorDecimal128>(digits));
            uint32_t words[4];
            memcpy(words, &value, sizeof words);
            EXPECT_EQ(words[3] >> 17, n < 31 ? 6175U : 6176U) << n; // the exponent
        }
    }
    const std::string negative = argument("163", "FACTORIAL is negative");
    for (const int32_t n : {INT32_MIN, -1, 51, INT32_MAX}) {
        EXPECT_SAID(n < 0 ? negative : "", EXPECT_EQ(_Tvq_factorial(n).digits[31], 0x0C));
        EXPECT_SAID(n < 0 ? negative : argument("176", "FACTORIAL is above 31"),
                    EXPECT_TRUE(_Tvq_factorial_decfloat16(n) == ZorDecimal128(0)));
    }
    _Tvq_factorial_deczoned630(5);
}

} // namespace

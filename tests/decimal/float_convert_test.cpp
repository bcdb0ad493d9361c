// Conversions between items and floating forms: binary values against the C library's reading and
// printing of texts, decimal ones against the texts themselves.
#include <charconv>
#include <cmath>
#include <limits>

#include "arithmetic_model.h"
#include "decimal_convert.h"
#include "support/kit.h"

#ifdef __clang__ // for which the C library does not declare them
extern "C" __float128 strtof128(const char *text, char **end);
extern "C" int strfromf128(char *text, size_t size, const char *format, __float128 value);
#endif

namespace {

using namespace model;

constexpr int kRounds = 60'000;

// ---- the forms, and our functions for them

#define FORM_FUNCTIONS(fromPackedName, packedName, zonedName)                                      \
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_##fromPackedName;                     \
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_##zonedName;                            \
    static constexpr auto packed = _zorcBCD_CONV_##packedName##_To_Pckd;                           \
    static constexpr auto packedRounded = _zorcBCD_CONV_##packedName##_To_PckdRnd;                 \
    static constexpr auto zoned = _zorcBCD_CONV_##zonedName##_To_Znd;                              \
    static constexpr auto zonedRounded = _zorcBCD_CONV_##zonedName##_To_ZndRnd;

// kDecimals: digits that always survive a round trip. kDigits: those that tell two values apart; of
// a decimal form its digits. kPrecision: bits.
struct Float {
    using Type = float;
    static constexpr int kDecimals = 6, kDigits = 9, kPrecision = 24, kGreatestPower = 46;
    FORM_FUNCTIONS(SFlt, SFlt, BFlt32)
    static Type read(const char *text) { return std::strtof(text, nullptr); }
};
struct Double {
    using Type = double;
    static constexpr int kDecimals = 15, kDigits = 17, kPrecision = 53, kGreatestPower = 326;
    FORM_FUNCTIONS(LFlt, LFlt, BFlt64)
    static Type read(const char *text) { return std::strtod(text, nullptr); }
};
struct Quad {
    using Type = __float128;
    static constexpr int kDecimals = 33, kDigits = 36, kPrecision = 113, kGreatestPower = 4970;
    FORM_FUNCTIONS(EFlt, EFlt, BFlt128)
    static Type read(const char *text) { return strtof128(text, nullptr); }
};
struct Decimal32 {
    static constexpr int kDigits = 7;
    FORM_FUNCTIONS(DFlt, DFlt32, DFlt32)
};
struct Decimal64 {
    static constexpr int kDigits = 16;
    FORM_FUNCTIONS(DFlt64, DFlt64, DFlt64)
};
struct Decimal128 {
    static constexpr int kDigits = 34;
    FORM_FUNCTIONS(DFlt128, DFlt, DFlt128)
};

std::string print(__float128 value, int precision) {
    char text[600];
    const std::string format = "%." + std::to_string(precision) + "e";
    return {text, static_cast<size_t>(strfromf128(text, sizeof text, format.c_str(), value))};
}

// The exact value from 10^kDecimals on and where it has few digits, otherwise the shortest text
// that reads back.
template <class Form> Decimal decimalValue(typename Form::Type value) {
    Decimal exact = parse(print(value, 60));
    if (exact.digits.find_first_not_of('0', Form::kDigits) == std::string::npos) {
        return exact;
    }
    if (value >= Form::read(("1e" + std::to_string(Form::kDecimals)).c_str())) {
        return parse(print(value, 400));
    }
    if constexpr (!std::is_same_v<Form, Quad>) {
        char text[64];
        const auto scientific = std::chars_format::scientific;
        return parse({text, std::to_chars(text, text + sizeof text, value, scientific).ptr});
    }
    for (int digits = Form::kDecimals;; ++digits) {
        const std::string text = print(value, digits - 1);
        if (Form::read(text.c_str()) == value) {
            return parse(text);
        }
    }
}

// A value to items of both kinds, cut and rounded.
template <class Form, class T>
void expectItems(T value, const Decimal &decimal, bool negative, int digits, int decs,
                 Random &random) {
    static Room room;
    for (const bool rounded : {false, true}) {
        const std::string whole = scaled(decimal, decs, rounded);
        const int limit = std::is_same_v<Form, Float> && digits < 9 ? 9 : digits + 34;
        const bool isTooLong = static_cast<int>(whole.size()) > limit;
        const std::string low = fit(isTooLong ? "0" : whole, digits);
        for (const model::Form kind : {Pckd, Znd}) {
            const auto convert = kind == Pckd ? (rounded ? Form::packedRounded : Form::packed)
                                              : (rounded ? Form::zonedRounded : Form::zoned);
            uint8_t *target = room.put(bytesOf(kind, digits), random);
            room.expect(target, encode(kind, low, negative && !isZero(low)));
            ASSERT_EQ(convert(value, target, digits, decs), target);
            ASSERT_TRUE(room.isAsExpected())
                << decimal.digits << "e" << decimal.exponent << (negative ? " negative" : "")
                << " digits " << digits << " decs " << decs << (rounded ? " rounded" : "") << ": "
                << kit::hex(target, static_cast<size_t>(bytesOf(kind, digits)));
        }
    }
}

// The value of both kinds of items with these digits, which is the same.
template <class Form>
auto valueOfItems(const std::string &text, int decs, bool negative, Random &random) {
    const std::string packed = random.item(Pckd, text, negative, Validation::lenient);
    const std::string zoned = random.item(Znd, text, negative, Validation::lenient);
    const auto digits = static_cast<int>(text.size());
    const auto value = Form::fromPacked(address(packed), digits, decs);
    EXPECT_EQ(bitsOf(value), bitsOf(Form::fromZoned(address(zoned), digits, decs)))
        << text << " decs " << decs;
    return value;
}

// The significant digits that a form reads; those behind count as zeros.
std::string leading(const std::string &text, int count) {
    std::string digits = trimmed(text);
    for (auto at = static_cast<size_t>(count); at < digits.size(); ++at) {
        digits[at] = '0';
    }
    return digits;
}

// ---- binary forms

template <class Form>
typename Form::Type expectNearest(const std::string &text, int decs, bool negative,
                                  Random &random) {
    const std::string scale = "e" + std::to_string(-int64_t{decs});
    auto nearest = Form::read((leading(text, 36) + scale).c_str());
    nearest = negative && nearest != 0 ? -nearest : nearest;
    const auto value = valueOfItems<Form>(text, decs, negative, random);
    EXPECT_EQ(bitsOf(value), bitsOf(nearest)) << text << " decs " << decs;
    return value;
}

template <class Form> class BinaryConvert : public testing::Test {};
using BinaryForms = testing::Types<Float, Double, Quad>;
TYPED_TEST_SUITE(BinaryConvert, BinaryForms);

// And those of few digits come back.
TYPED_TEST(BinaryConvert, ItemsGiveTheNearestValue) {
    Random random(3);
    for (int i = 0; i < kRounds && !this->HasFailure(); ++i) {
        const std::string text = random.digits(random.count(40));
        const bool negative = random.oneIn(2);
        const int decs = random.below(random.oneIn(8) ? 60 : 31);
        const auto value = expectNearest<TypeParam>(text, decs, negative, random);
        if (decs <= 30 && trimmed(text).size() <= TypeParam::kDecimals) {
            expectItems<TypeParam>(value, {text, -decs}, negative, static_cast<int>(text.size()),
                                   decs, random);
        }
    }
    for (int i = 0; i < 1000; ++i) { // from zero to infinity
        const int decs = random.below(2 * TypeParam::kGreatestPower) - TypeParam::kGreatestPower;
        expectNearest<TypeParam>(random.digits(random.count(40)), decs, random.oneIn(2), random);
    }
    expectNearest<TypeParam>("5", INT32_MAX, true, random);
    expectNearest<TypeParam>("5", INT32_MIN, true, random);
}

// Items that lie exactly between two values, or one unit of their last place beside that.
TYPED_TEST(BinaryConvert, TiesOfItemsGoToEven) {
    if constexpr (!std::is_same_v<TypeParam, Quad>) {
        using T = typename TypeParam::Type;
        Random random(4);
        for (int i = 0; i < kRounds / 4 && !this->HasFailure(); ++i) {
            const int decs = random.below(12);
            const uint64_t word = 1ULL << 63 | uint64_t{random.word()} << 32 | random.word();
            const auto significand = static_cast<T>(word >> (64 - TypeParam::kPrecision));
            const T value = std::ldexp(significand, 1 + random.below(20) - decs);
            const T next = std::nextafter(value, std::numeric_limits<T>::infinity());
            const __float128 tie = (static_cast<__float128>(value) + next) / 2;
            std::string text = scaled(parse(print(tie, 60)), decs, false);
            text = random.oneIn(3) ? text : random.oneIn(2) ? add(text, "1") : subtract(text, "1");
            expectNearest<TypeParam>(text, decs, random.oneIn(2), random);
        }
    }
}

// Values near short decimals, ties of a target's last place, and any bit patterns in a wide range.
TYPED_TEST(BinaryConvert, ValuesAreReadByTheirDecimalValue) {
    using T = typename TypeParam::Type;
    Random random(6);
    const int rounds = std::is_same_v<TypeParam, Quad> ? kRounds / 6 : kRounds;
    for (int i = 0; i < rounds && !this->HasFatalFailure(); ++i) {
        const int decs = random.below(random.oneIn(4) ? 41 : 10);
        T value;
        if (random.oneIn(2)) {
            const std::string scale = "5e-" + std::to_string(decs + random.below(4));
            value = TypeParam::read((random.digits(1 + random.below(20)) + scale).c_str());
            unsigned char lowest; // up to two values beside
            memcpy(&lowest, &value, 1);
            lowest = static_cast<unsigned char>(lowest + random.below(5) - 2);
            memcpy(&value, &lowest, 1);
        } else {
            const int power = random.below(random.oneIn(4) ? 380 : 130) - 80;
            value = static_cast<T>(random.word()) + static_cast<T>(random.word()) / 4294967296.0F;
            for (int k = 0; k < std::abs(power); ++k) {
                value = power < 0 ? value / 2 : value * 2;
            }
        }
        if (value != static_cast<T>(HUGE_VAL)) {
            const bool negative = random.oneIn(2);
            expectItems<TypeParam>(negative ? -value : value, decimalValue<TypeParam>(value),
                                   negative, 1 + random.below(40), decs, random);
        }
    }
}

TYPED_TEST(BinaryConvert, NothingUnusualIsStored) {
    using T = typename TypeParam::Type;
    Random random(8);
    const auto infinity = static_cast<T>(HUGE_VAL);
    T tiny = 0;
    memset(&tiny, 1, 1);
    for (const T value :
         {infinity, -infinity, static_cast<T>(NAN), static_cast<T>(-0.0), tiny, -tiny}) {
        for (const int decs : {0, 5, 40, 300, INT32_MAX, -7, INT32_MIN}) {
            expectItems<TypeParam>(value, {"0", 0}, true, 6, decs, random);
        }
    }
}

// ---- decimal forms

TEST(DecimalFloatConvert, ItemsGiveCanonicalBits) {
    const struct {
        const char *digits;
        int decs;
        const char *bits32, *bits64, *bits128;
    } rows[] = {
        {"0", 3, "32800000", "31c0000000000000", "30400000000000000000000000000000"},
        {"-0", 0, "32800000", "31c0000000000000", "30400000000000000000000000000000"},
        {"15", 1, "3200000f", "31a000000000000f", "303e000000000000000000000000000f"},
        {"-1500", 3, "b200000f", "b1a000000000000f", "b03e000000000000000000000000000f"},
        {"100", 0, "32800064", "31c0000000000064", "30400000000000000000000000000064"},
        {"9999999", 0, "6cb8967f", "31c000000098967f", "3040000000000000000000000098967f"},
        {"-9999999999999999", 2, "ed98967f", "ec6386f26fc0ffff",
         "b03c000000000000002386f26fc0ffff"},
        {"12345678901234567890", 0, "3912d687", "324462d53c8abac0",
         "3040000000000000ab54a98ceb1f0ad2"},
        // Below the least power digits are cut, above the greatest it is infinity.
        {"-15", 102, "80000001", "a50000000000000f", "af74000000000000000000000000000f"},
        {"-1", -200, "f8000000", "cac0000000000001", "b1d00000000000000000000000000001"},
    };
    for (const auto &row : rows) {
        const std::string item = kit::pckd(row.digits, 31);
        EXPECT_EQ(bitsOf(Decimal32::fromPacked(address(item), 31, row.decs)), row.bits32);
        EXPECT_EQ(bitsOf(Decimal64::fromPacked(address(item), 31, row.decs)), row.bits64);
        EXPECT_EQ(bitsOf(Decimal128::fromPacked(address(item), 31, row.decs)), row.bits128);
    }
}

template <class Form> class DecimalConvert : public testing::Test {};
using DecimalForms = testing::Types<Decimal32, Decimal64, Decimal128>;
TYPED_TEST_SUITE(DecimalConvert, DecimalForms);

TYPED_TEST(DecimalConvert, ValuesComeBackScaled) {
    Random random(7);
    for (int i = 0; i < kRounds && !this->HasFatalFailure(); ++i) {
        const std::string text = random.digits(random.count(40));
        const bool negative = random.oneIn(2);
        const int decs = random.below(20);
        const auto value = valueOfItems<TypeParam>(text, decs, negative, random);
        expectItems<TypeParam>(value, {leading(text, TypeParam::kDigits), -decs}, negative,
                               1 + random.below(40), random.below(30), random);
    }
}

// Every class of encoding that is no number in range, by its leading byte.
TYPED_TEST(DecimalConvert, NothingUnusualIsStored) {
    Random random(9);
    for (const int leading : {0x78, 0xF8, 0x7C, 0xFE, 0x80, 0x00, 0x6F, 0x5F}) {
        auto value = TypeParam::fromPacked(address("\x1C"), 1, 0);
        memset(&value, leading == 0x6F || leading == 0x5F ? 0xFF : 0, sizeof value);
        memset(reinterpret_cast<char *>(&value) + sizeof value - 1, leading, 1);
        for (const int decs : {0, 40, INT32_MAX, INT32_MIN}) {
            expectItems<TypeParam>(value, {"0", 0}, false, 6, decs, random);
        }
    }
}

// ---- between forms

ZorDecimal128 decimal(const char *text, int decs = 0) {
    return Decimal128::fromPacked(address(kit::pckd(text, 37)), 37, decs);
}

TEST(FloatConvert, BetweenForms) {
    EXPECT_EQ(_zorcBCD_CONV_DFlt_To_LFlt(decimal("29", 2)), 0.29);
    EXPECT_EQ(_zorcBCD_CONV_DFlt_To_SFlt(decimal("-29", 2)), -0.29F);
    EXPECT_TRUE(_zorcBCD_CONV_DFlt_To_EFlt(decimal("29", 2)) == strtof128("0.29", nullptr));
    EXPECT_EQ(bitsOf(_zorcBCD_CONV_LFlt_To_DFlt(1.5)), "303e000000000000000000000000000f");
    EXPECT_EQ(bitsOf(_zorcBCD_CONV_SFlt_To_DFlt(-1.5F)), "b03e000000000000000000000000000f");
    EXPECT_EQ(bitsOf(_zorcBCD_CONV_LFlt_To_DFlt(0.1)), "2ffc314dc6448d933986922312364ce3");
    EXPECT_EQ(bitsOf(_zorcBCD_CONV_EFlt_To_DFlt(static_cast<__float128>(0.1))),
              "2ffc314dc6448d933986922312364ce3");
    EXPECT_EQ(_zorcBCD_CONV_EFlt_To_Int8(static_cast<__float128>(-123.9)), -123);
}

TEST(FloatConvert, DecimalsToIntegersAtTheLimits) {
    const struct {
        const char *digits;
        int decs;
        int64_t wanted;
        uint64_t wantedUnsigned;
    } rows[] = {{"0", 0, 0, 0},
                {"-19", 1, -1, 0},
                {"9223372036854775807", 0, INT64_MAX, INT64_MAX},
                {"9223372036854775808", 0, INT64_MIN, 1ULL << 63},
                {"-92233720368547758089", 1, INT64_MIN, 0},
                {"-9223372036854775807", 0, -INT64_MAX, 0},
                {"184467440737095516159999", 4, INT64_MIN, UINT64_MAX},
                {"18446744073709551616", 0, INT64_MIN, 0},
                {"1234567890123456789012345678901234", 20, 12345678901234, 12345678901234},
                {"12", -17, 1'200'000'000'000'000'000, 1'200'000'000'000'000'000},
                {"9", -40, INT64_MIN, 0},
                {"9", 36, 0, 0}};
    for (const auto &row : rows) {
        const ZorDecimal128 value = decimal(row.digits, row.decs);
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_Int8(value), row.wanted) << row.digits;
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_UInt8(value), row.wantedUnsigned) << row.digits;
    }
}

// The libraries for the wide forms are loaded for the trace alone.
TEST(FloatConvert, NoLibraryIsLoadedForIt) {
    const std::string maps = kit::runChild([] {
                                 uint8_t target[20];
                                 const auto quad = Quad::fromPacked(address("\x12\x5C"), 3, 1);
                                 Quad::packed(quad, target, 31, 20);
                                 Decimal128::packed(decimal("125", 1), target, 31, 20);
                                 printf("%s", kit::readFile("/proc/self/maps").c_str());
                             }).out;
    EXPECT_NE(maps.find("liblvd4_32r"), std::string::npos);
    EXPECT_EQ(maps.find("libdfp"), std::string::npos);
    EXPECT_EQ(maps.find("libquadmath"), std::string::npos);
}

} // namespace

// Conversions between items and numbers: binary integers and decimal forms against their texts,
// binary floating forms against the C library's reading and printing of texts.
#include <cmath>
#include <limits>

#include "decimal/arithmetic_model.h"
#include "decimal_convert.h"
#include "support/kit.h"

#ifdef __clang__ // for which the C library does not declare them
extern "C" __float128 strtof128(const char *text, char **end);
extern "C" int strfromf128(char *text, size_t size, const char *format, __float128 value);
#endif

namespace {

using namespace model;

constexpr int kRounds = 60'000;

// ---- integers

// A value keeps its sign even where the item takes only zeros of it.
template <class T>
void expectItem(Form form, uint8_t *(*convert)(T, uint8_t *, int32_t), Random &random) {
    static Room room;
    const int digits = random.count(36);
    const auto value = static_cast<T>(random.integer());
    const std::string text = std::to_string(value);
    const bool negative = text[0] == '-';
    uint8_t *target = room.put(bytesOf(form, digits), random);
    room.expect(target, encode(form, fit(text.substr(negative ? 1 : 0), digits), negative));
    ASSERT_EQ(convert(value, target, digits), target);
    ASSERT_TRUE(room.isAsExpected())
        << text << " into " << digits << " digits, form " << form << ": "
        << kit::hex(target, static_cast<size_t>(bytesOf(form, digits)));
}

TEST(IntegerConvert, IntegersToItemsAgreeWithTheirText) {
    Random random(1);
    for (int i = 0; i < kRounds / 3 && !HasFatalFailure(); ++i) {
        expectItem(Pckd, _zorcBCD_CONV_Int1_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Uns1_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Int2_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Uns2_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Int4_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Uns4_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Int8_To_Pckd, random);
        expectItem(Pckd, _zorcBCD_CONV_Uns8_To_Pckd, random);
        expectItem(Znd, _zorcBCD_CONV_Int4_To_Znd, random);
        expectItem(Znd, _zorcBCD_CONV_UInt4_To_Znd, random);
        expectItem(Znd, _zorcBCD_CONV_Int8_To_Znd, random);
        expectItem(Znd, _zorcBCD_CONV_UInt8_To_Znd, random);
    }
}

uint64_t wrapped(const std::string &digits) {
    uint64_t word = 0;
    for (const char c : digits) {
        word = word * 10 + static_cast<unsigned>(c - '0');
    }
    return word;
}

// The pad of a packed item is no digit here, whatever it holds.
TEST(IntegerConvert, ItemsToIntegersWrapAtTheirWidth) {
    Random random(2);
    for (int i = 0; i < 3 * kRounds && !HasFatalFailure(); ++i) {
        const int count = random.count(36);
        const std::string text = random.digits(count);
        const bool negative = random.oneIn(2);
        const std::string packed = random.item(Pckd, text, negative, Validation::lenient);
        const std::string zoned = random.item(Znd, text, negative, Validation::lenient);
        const uint8_t *p = address(packed);
        const uint8_t *z = address(zoned);
        const uint64_t word = wrapped(text);
        const auto value = static_cast<int64_t>(negative ? 0 - word : word);
        const auto low = static_cast<uint32_t>(word);
        const auto lowValue = static_cast<int32_t>(value);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int8(p, count), value) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns8(p, count), word) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int4(p, count), lowValue) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int2(p, count), lowValue) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int1(p, count), lowValue) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns4(p, count), low) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns2(p, count), low) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns1(p, count), low) << kit::hex(packed);
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_Int8(z, count), value) << kit::hex(zoned);
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_UInt8(z, count), word) << kit::hex(zoned);
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_Int4(z, count), lowValue) << kit::hex(zoned);
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_UInt4(z, count), low) << kit::hex(zoned);
        // A length is rounded up; none is negative.
        const int decs = random.below(count + 3);
        const std::string whole = scaled({text, -decs}, 0, false);
        const bool isMore = !isZero(fit(text, decs));
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Len8(p, count, decs),
                  negative ? 0 : wrapped(whole) + (isMore ? 1 : 0))
            << kit::hex(packed) << " decs " << decs;
    }
}

TEST(IntegerConvert, ItemsWithoutDigitsAreZero) {
    uint8_t item[] = {0x1C};
    EXPECT_EQ(_zorcBCD_CONV_Znd_To_Int4(item, 0), 0);
    EXPECT_EQ(_zorcBCD_CONV_Pckd_To_Int8(item, 0), 0);
    EXPECT_EQ(_zorcBCD_CONV_Pckd_To_Len8(item, 0, 0), 0U);
    EXPECT_EQ(_zorcBCD_CONV_Pckd_To_LFlt(item, 0, 0), 0);
    EXPECT_EQ(_zorcBCD_CONV_Int4_To_Pckd(5, item, 0), item);
    EXPECT_EQ(item[0], 0x1C);
}

// ---- floating forms, and our functions for them

// Digits: those that tell two values of a binary form apart; those of a decimal one.
#define FORM(name, digits, fromPackedName, packedName, zonedName)                                  \
    struct name {                                                                                  \
        static constexpr int kDigits = digits;                                                     \
        static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_##fromPackedName;                 \
        static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_##zonedName;                        \
        static constexpr auto packed = _zorcBCD_CONV_##packedName##_To_Pckd;                       \
        static constexpr auto packedRounded = _zorcBCD_CONV_##packedName##_To_PckdRnd;             \
        static constexpr auto zoned = _zorcBCD_CONV_##zonedName##_To_Znd;                          \
        static constexpr auto zonedRounded = _zorcBCD_CONV_##zonedName##_To_ZndRnd;                \
    };
FORM(Decimal32, 7, DFlt, DFlt32, DFlt32)
FORM(Decimal64, 16, DFlt64, DFlt64, DFlt64)
FORM(Decimal128, 34, DFlt128, DFlt, DFlt128)
FORM(FloatForm, 9, SFlt, SFlt, BFlt32)
FORM(DoubleForm, 17, LFlt, LFlt, BFlt64)
FORM(QuadForm, 36, EFlt, EFlt, BFlt128)

// Decimals: digits that always survive a round trip.
template <class Form, auto readText, int decimals, int greatestPower> struct Binary : Form {
    using Type = decltype(readText("", nullptr));
    static constexpr int kDecimals = decimals;
    static constexpr int kGreatestPower = greatestPower;
    static Type read(const std::string &text) { return readText(text.c_str(), nullptr); }
};
using Float = Binary<FloatForm, strtof, 6, 46>;
using Double = Binary<DoubleForm, strtod, 15, 326>;
using Quad = Binary<QuadForm, strtof128, 33, 4970>;

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
    if (value >= Form::read("1e" + std::to_string(Form::kDecimals))) {
        return parse(print(value, 400));
    }
    for (int digits = 1;; ++digits) {
        const std::string text = print(value, digits - 1);
        if (Form::read(text) == value) {
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

// Of what is no number in range, at any scale.
template <class Form, class T> void expectNothing(T value, Random &random) {
    for (const int decs : {0, 5, 40, 300, INT32_MAX, -7, INT32_MIN}) {
        expectItems<Form>(value, {"0", 0}, false, 6, decs, random);
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
    const std::string digits = trimmed(text);
    const std::string read = digits.substr(0, static_cast<size_t>(count));
    return read + std::string(digits.size() - read.size(), '0');
}

// ---- binary forms

template <class Form>
typename Form::Type expectNearest(const std::string &text, int decs, bool negative,
                                  Random &random) {
    const std::string scale = "e" + std::to_string(-int64_t{decs});
    auto nearest = Form::read(leading(text, 36) + scale);
    nearest = negative && nearest != 0 ? -nearest : nearest;
    const auto value = valueOfItems<Form>(text, decs, negative, random);
    EXPECT_EQ(bitsOf(value), bitsOf(nearest)) << text << " decs " << decs;
    return value;
}

template <class Form> class BinaryConvert : public testing::Test {};
using BinaryForms = testing::Types<Float, Double, Quad>;
TYPED_TEST_SUITE(BinaryConvert, BinaryForms);

// The text of an item that lies exactly between two values, or one unit of its last place beside
// that.
template <class Form> std::string nearTie(int decs, Random &random) {
    using T = typename Form::Type;
    const uint64_t word = 1ULL << 63 | uint64_t{random.word()} << 32 | random.word();
    const auto significand = static_cast<T>(word >> (64 - std::numeric_limits<T>::digits));
    const T value = std::ldexp(significand, 1 + random.below(20) - decs);
    const T next = std::nextafter(value, std::numeric_limits<T>::infinity());
    const __float128 tie = (static_cast<__float128>(value) + next) / 2;
    const std::string text = scaled(parse(print(tie, 60)), decs, false);
    return Integer(integerOf(text) + random.below(3) - 1).str();
}

// And those of few digits come back.
TYPED_TEST(BinaryConvert, ItemsGiveTheNearestValue) {
    constexpr int kGreatest = TypeParam::kGreatestPower;
    Random random(3);
    for (int i = 0; i < kRounds && !this->HasFailure(); ++i) {
        const std::string text = random.digits(random.count(40));
        const bool negative = random.oneIn(2);
        const bool isAnyPower = random.oneIn(32); // from zero to infinity
        const int decs = isAnyPower ? random.below(2 * kGreatest) - kGreatest
                                    : random.below(random.oneIn(8) ? 60 : 31);
        const auto value = expectNearest<TypeParam>(text, decs, negative, random);
        if (decs >= 0 && decs <= 30 && trimmed(text).size() <= TypeParam::kDecimals) {
            expectItems<TypeParam>(value, {text, -decs}, negative, static_cast<int>(text.size()),
                                   decs, random);
        }
        if constexpr (!std::is_same_v<TypeParam, Quad>) {
            const int tieDecs = random.below(12);
            expectNearest<TypeParam>(nearTie<TypeParam>(tieDecs, random), tieDecs, negative,
                                     random);
        }
    }
    expectNearest<TypeParam>("5", INT32_MAX, true, random);
    expectNearest<TypeParam>("5", INT32_MIN, true, random);
}

// Values near short decimals, ties of a target's last place, any bit patterns in a wide range, and
// what is no number.
TYPED_TEST(BinaryConvert, ValuesAreReadByTheirDecimalValue) {
    using T = typename TypeParam::Type;
    Random random(6);
    const int rounds = std::is_same_v<TypeParam, Quad> ? kRounds / 6 : kRounds;
    const int mostDigits = std::is_same_v<TypeParam, Quad> ? 36 : 20;
    for (int i = 0; i < rounds && !this->HasFatalFailure(); ++i) {
        const int decs = random.below(random.oneIn(4) ? 41 : 10);
        T value;
        if (random.oneIn(2)) {
            const std::string scale = "5e-" + std::to_string(decs + random.below(4));
            value = TypeParam::read(random.digits(1 + random.below(mostDigits)) + scale);
            auto &lowest = reinterpret_cast<unsigned char &>(value);
            lowest = static_cast<unsigned char>(lowest + random.below(5) - 2); // some values beside
        } else {
            const int power = random.below(random.oneIn(4) ? 380 : 130) - 80;
            value = static_cast<T>(random.word()) + static_cast<T>(random.word()) / 4294967296.0F;
            for (int k = 0; k < abs(power); ++k) {
                value = power < 0 ? value / 2 : value * 2;
            }
        }
        if (value != static_cast<T>(HUGE_VAL)) {
            const bool negative = random.oneIn(2);
            expectItems<TypeParam>(negative ? -value : value, decimalValue<TypeParam>(value),
                                   negative, 1 + random.below(40), decs, random);
        }
    }
    const auto infinity = static_cast<T>(HUGE_VAL);
    T tiny = 0;
    memset(&tiny, 1, 1);
    for (const T value :
         {infinity, -infinity, static_cast<T>(NAN), static_cast<T>(-0.0), tiny, -tiny}) {
        expectNothing<TypeParam>(value, random);
    }
}

// ---- decimal forms

std::string packedItem(const std::string &number, int digits) {
    const bool negative = number[0] == '-';
    return encode(Pckd, fit(number.substr(negative ? 1 : 0), digits), negative);
}

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
        const std::string item = packedItem(row.digits, 31);
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
    // Every class of encoding that is no number in range, by its leading byte.
    for (const int leading : {0x78, 0xF8, 0x7C, 0xFE, 0x80, 0x00, 0x6F, 0x5F}) {
        auto value = TypeParam::fromPacked(address("\x1C"), 1, 0);
        memset(&value, leading == 0x6F || leading == 0x5F ? 0xFF : 0, sizeof value);
        memset(reinterpret_cast<char *>(&value) + sizeof value - 1, leading, 1);
        expectNothing<TypeParam>(value, random);
    }
}

// ---- between forms

ZorDecimal128 decimal(const std::string &text, int decs) {
    return Decimal128::fromPacked(address(packedItem(text, 37)), 37, decs);
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

// Many beside the limits, with fractions behind them.
TEST(FloatConvert, DecimalsToIntegers) {
    Random random(10);
    for (int i = 0; i < kRounds && !HasFailure(); ++i) {
        const int fraction = 1 + random.below(14);
        const std::string text =
            Integer(Integer(random.integer()) + random.below(2)).str() + random.digits(fraction);
        const int decs = random.oneIn(4) ? random.below(80) - 40 : fraction;
        const bool negative = random.oneIn(2);
        const ZorDecimal128 value = decimal((negative ? "-" : "") + text, decs);
        const Integer whole(scaled({text, -decs}, 0, false));
        const bool fits = whole <= INT64_MAX;
        const int64_t magnitude = fits ? static_cast<int64_t>(whole) : INT64_MIN;
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_Int8(value), fits && negative ? -magnitude : magnitude)
            << text << " decs " << decs;
        const bool fitsUnsigned = !negative && whole <= UINT64_MAX;
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_UInt8(value),
                  fitsUnsigned ? static_cast<uint64_t>(whole) : 0)
            << text << " decs " << decs;
    }
}

// The libraries for the wide forms are loaded for the trace alone.
CHILD_TEST(FloatConvert, LoadsNoLibrary) {
    uint8_t target[20];
    Quad::packed(Quad::fromPacked(address("\x12\x5C"), 3, 1), target, 31, 20);
    Decimal128::packed(decimal("125", 1), target, 31, 20);
    const std::string maps = kit::readFile("/proc/self/maps");
    EXPECT_NE(maps.find("liblvd4_32r"), std::string::npos);
    EXPECT_EQ(maps.find("libdfp"), std::string::npos);
    EXPECT_EQ(maps.find("libquadmath"), std::string::npos);
}

} // namespace

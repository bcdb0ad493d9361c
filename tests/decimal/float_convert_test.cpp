#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "convert_model.h"
#include "decimal_convert.h"

#ifdef __clang__ // for which the C library does not declare them
extern "C" __float128 strtof128(const char *text, char **end);
extern "C" int strfromf128(char *text, size_t size, const char *format, __float128 value);
#endif

namespace {

using model::below;
using model::Decimal;
using model::Random;

constexpr int kRounds = 60'000;

template <class T> T fromWords(uint64_t high, uint64_t low) {
    const uint64_t words[2] = {low, high};
    T value;
    std::memcpy(&value, words, sizeof value); // of short forms the low bytes
    return value;
}

template <class T> std::string bitsOf(T value) {
    std::string bytes(reinterpret_cast<const char *>(&value), sizeof value);
    return kit::hex(std::string(bytes.rbegin(), bytes.rend()));
}

// ---- the binary forms: how the C library reads and prints them, and our functions for them

template <class T> T absolute(T value) {
    return value < 0 ? -value : value;
}

struct Float {
    using Type = float;
    static constexpr int kDecimals = 6, kDigits = 9;
    static Type read(const char *text) { return std::strtof(text, nullptr); }
    static int print(char *text, std::size_t size, int precision, Type value) {
        return snprintf(text, size, "%.*e", precision, static_cast<double>(value));
    }
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_SFlt;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_BFlt32;
    static constexpr auto packed = _zorcBCD_CONV_SFlt_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_SFlt_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_BFlt32_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_BFlt32_To_ZndRnd;
};
struct Double {
    using Type = double;
    static constexpr int kDecimals = 15, kDigits = 17;
    static Type read(const char *text) { return std::strtod(text, nullptr); }
    static int print(char *text, std::size_t size, int precision, Type value) {
        return snprintf(text, size, "%.*e", precision, value);
    }
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_LFlt;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_BFlt64;
    static constexpr auto packed = _zorcBCD_CONV_LFlt_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_LFlt_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_BFlt64_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_BFlt64_To_ZndRnd;
};
struct Quad {
    using Type = __float128;
    static constexpr int kDecimals = 33, kDigits = 36;
    static Type read(const char *text) { return strtof128(text, nullptr); }
    static int print(char *text, std::size_t size, int precision, Type value) {
        const std::string format = "%." + std::to_string(precision) + "e";
        return strfromf128(text, size, format.c_str(), value);
    }
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_EFlt;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_BFlt128;
    static constexpr auto packed = _zorcBCD_CONV_EFlt_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_EFlt_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_BFlt128_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_BFlt128_To_ZndRnd;
};

template <class Form> std::string print(typename Form::Type value, int precision) {
    std::string text(6000, '\0');
    text.resize(static_cast<unsigned>(Form::print(text.data(), text.size(), precision, value)));
    return text;
}

// The exact value from 10^kDecimals on and where it has few digits, otherwise the shortest text
// that reads back.
template <class Form> Decimal decimalValue(typename Form::Type value) {
    constexpr int kExact = 60;
    Decimal exact = model::parse(print<Form>(value, kExact));
    if (value == 0 || exact.digits.find_first_not_of('0', Form::kDigits) == std::string::npos) {
        return exact;
    }
    if (value >= Form::read(("1e" + std::to_string(Form::kDecimals)).c_str())) {
        return model::parse(print<Form>(value, 5100));
    }
    if constexpr (!std::is_same_v<Form, Quad>) {
        char text[64];
        const auto end =
            std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
        return model::parse(std::string(text, end));
    }
    for (int digits = Form::kDecimals;; ++digits) {
        const std::string text = print<Form>(value, digits - 1);
        if (Form::read(text.c_str()) == value) {
            return model::parse(text);
        }
    }
}

template <class Form> void expectItems(typename Form::Type value, unsigned count, int decs) {
    const Decimal decimal = decimalValue<Form>(absolute(value));
    const auto digits = static_cast<int32_t>(count);
    for (const bool rounded : {false, true}) {
        std::string whole = model::scaled(decimal, decs, rounded);
        const unsigned limit = std::is_same_v<Form, Float> && count < 9 ? 9 : count + 34;
        if (whole.size() > limit) {
            whole.clear();
        }
        const auto toPacked = rounded ? Form::packedRounded : Form::packed;
        const auto toZoned = rounded ? Form::zonedRounded : Form::zoned;
        const bool negative = value < 0;
        ASSERT_EQ(kit::hex(model::into<true>(
                      count, [&](uint8_t *at) { return toPacked(value, at, digits, decs); })),
                  kit::hex(model::item<true>(whole, negative, count)))
            << print<Form>(value, 40) << " digits " << count << " decs " << decs << rounded;
        ASSERT_EQ(model::into<false>(count,
                                     [&](uint8_t *at) { return toZoned(value, at, digits, decs); }),
                  model::item<false>(whole, negative, count))
            << print<Form>(value, 40) << " digits " << count << " decs " << decs << rounded;
    }
}

// An item's value to each form: what the C library reads from its text.
template <class Form>
typename Form::Type expectValue(std::string text, unsigned count, int decs, bool negative) {
    const std::string sign = negative ? "-" : "";
    const std::string packed = kit::pckd(sign + text, count);
    const std::string zoned = kit::znd(sign + text, count);
    constexpr std::size_t kRead = 36;
    for (std::size_t i = kRead; i < text.size(); ++i) {
        text[i] = '0';
    }
    auto expected = Form::read((text + "e-" + std::to_string(decs)).c_str());
    expected = negative && expected != 0 ? -expected : expected;
    const auto digits = static_cast<int32_t>(count);
    const auto fromPacked = Form::fromPacked(model::bytes(packed), digits, decs);
    const auto fromZoned = Form::fromZoned(model::bytes(zoned), digits, decs);
    EXPECT_EQ(bitsOf(fromPacked) + bitsOf(fromZoned), bitsOf(expected) + bitsOf(expected))
        << text << " digits " << count << " decs " << decs << ": " << print<Form>(fromPacked, 40)
        << " " << print<Form>(expected, 40);
    return fromPacked;
}

template <class Form> class BinaryConvert : public testing::Test {};
using BinaryForms = testing::Types<Float, Double, Quad>;
TYPED_TEST_SUITE(BinaryConvert, BinaryForms);

TYPED_TEST(BinaryConvert, ItemsGiveTheNearestValue) {
    Random random(3);
    for (int i = 0; i < kRounds && !this->HasFailure(); ++i) {
        const int count = 1 + below(random, 40);
        const std::string text = model::digits(random, 1 + below(random, count));
        const int decs = below(random, below(random, 8) == 0 ? 60 : 31);
        expectValue<TypeParam>(text, static_cast<unsigned>(count), decs, below(random, 2) == 0);
    }
}

// Items that lie exactly between two values, or one unit of their last place beside that.
TYPED_TEST(BinaryConvert, TiesOfItemsGoToEven) {
    if constexpr (!std::is_same_v<TypeParam, Quad>) {
        using T = typename TypeParam::Type;
        Random random(4);
        for (int i = 0; i < kRounds / 4 && !this->HasFailure(); ++i) {
            const int decs = below(random, 12);
            const T value =
                std::ldexp(static_cast<T>(random() | 1U << 31), below(random, 20) - decs);
            const T next = std::nextafter(value, std::numeric_limits<T>::infinity());
            const __float128 tie = (static_cast<__float128>(value) + next) / 2;
            std::string text = model::scaled(model::parse(print<Quad>(tie, 60)), decs, false);
            const int beside = below(random, 3);
            text.back() = static_cast<char>(beside == 0   ? text.back()
                                            : beside == 1 ? std::min<int>(text.back() + 1, '9')
                                                          : std::max<int>(text.back() - 1, '0'));
            expectValue<TypeParam>(text, 40, decs, false);
        }
    }
}

TYPED_TEST(BinaryConvert, ShortDecimalsComeBack) {
    using T = typename TypeParam::Type;
    Random random(5);
    for (int i = 0; i < kRounds && !this->HasFailure(); ++i) {
        const std::string text = model::digits(random, 1 + below(random, TypeParam::kDecimals));
        const int decs = below(random, 31);
        const auto count = static_cast<unsigned>(TypeParam::kDecimals + below(random, 6));
        const bool negative = below(random, 2) == 0;
        const T value = expectValue<TypeParam>(text, count, decs, negative);
        for (const auto convert : {TypeParam::packed, TypeParam::packedRounded}) {
            ASSERT_EQ(kit::hex(model::into<true>(count,
                                                 [&](uint8_t *at) {
                                                     return convert(value, at,
                                                                    static_cast<int32_t>(count),
                                                                    decs);
                                                 })),
                      kit::hex(model::item<true>(text, negative, count)))
                << text << " decs " << decs;
        }
    }
}

// Values near short decimals, ties of a target's last place, and any bit patterns in a wide range.
TYPED_TEST(BinaryConvert, ValuesAreReadByTheirDecimalValue) {
    using T = typename TypeParam::Type;
    constexpr bool isQuad = std::is_same_v<TypeParam, Quad>;
    Random random(6);
    for (int i = 0; i < (isQuad ? kRounds / 6 : kRounds) && !this->HasFatalFailure(); ++i) {
        const int decs = below(random, below(random, 4) == 0 ? 41 : 10);
        T value;
        if (below(random, 2) == 0) {
            const std::string text = model::digits(random, 1 + below(random, 20));
            value =
                TypeParam::read((text + "5e-" + std::to_string(decs + below(random, 4))).c_str());
            for (int step = below(random, 5) - 2; step != 0; step += step < 0 ? 1 : -1) {
                unsigned char lowest;
                std::memcpy(&lowest, &value, 1);
                lowest = static_cast<unsigned char>(lowest + (step < 0 ? -1 : 1));
                std::memcpy(&value, &lowest, 1);
            }
        } else {
            const int power = below(random, below(random, 4) == 0 ? 380 : 130) - 80;
            value = static_cast<T>(random()) + static_cast<T>(random()) / 4294967296.0F;
            for (int k = 0; k < std::abs(power); ++k) {
                value = power < 0 ? value / 2 : value * 2;
            }
        }
        if (value == static_cast<T>(HUGE_VAL)) {
            continue;
        }
        expectItems<TypeParam>(below(random, 2) == 0 ? value : -value,
                               static_cast<unsigned>(1 + below(random, 40)), decs);
    }
}

TYPED_TEST(BinaryConvert, NothingUnusualIsStored) {
    using T = typename TypeParam::Type;
    const T infinity = static_cast<T>(HUGE_VAL);
    const T tiny = fromWords<T>(0, 1);
    for (const T value :
         {infinity, -infinity, static_cast<T>(NAN), static_cast<T>(-0.0), tiny, -tiny}) {
        for (const int decs : {0, 5, 40, 300, INT32_MAX, -7, INT32_MIN}) {
            if (decs > 4000 && (value == tiny || value == -tiny)) {
                continue; // its digits may reach the units
            }
            EXPECT_EQ(
                kit::hex(model::into<true>(
                    6, [&](uint8_t *at) { return TypeParam::packedRounded(value, at, 6, decs); })),
                "0000000c");
        }
    }
}

// ---- fixed cases

TEST(FloatConvert, CutAndRounded) {
    const struct {
        double value;
        unsigned digits;
        int decs;
        const char *cut;
        const char *rounded;
    } rows[] = {{1.5, 1, 0, "1", "2"},
                {-1.5, 1, 0, "-1", "-2"},
                {0.01, 3, 1, "0", "0"},
                {0.05, 3, 1, "0", "1"},
                {-0.4, 3, 0, "0", "0"},
                {123456.0, 3, 0, "456", "456"},
                {0.29, 3, 2, "29", "29"},
                {-100.0, 2, 0, "0", "0"},
                {9.95, 4, 1, "99", "100"},
                {1.005, 5, 2, "100", "101"},
                {0.1 + 0.2, 5, 1, "3", "3"},
                {0.1 + 0.2, 20, 18, "300000000000000040", "300000000000000040"},
                {9007199254740993.0, 18, 0, "9007199254740992", "9007199254740992"},
                {1152921504606846976.0, 25, 2, "115292150460684697600", "115292150460684697600"},
                {-999.9999, 6, 3, "-999999", "0"},
                {1e40, 5, 0, "0", "0"},
                {1e300, 31, 0, "0", "0"}};
    for (const auto &row : rows) {
        const auto digits = static_cast<int32_t>(row.digits);
        EXPECT_EQ(kit::hex(model::into<true>(row.digits,
                                             [&](uint8_t *at) {
                                                 return _zorcBCD_CONV_LFlt_To_Pckd(
                                                     row.value, at, digits, row.decs);
                                             })),
                  kit::hex(kit::pckd(row.cut, row.digits)))
            << row.value;
        EXPECT_EQ(model::into<false>(row.digits,
                                     [&](uint8_t *at) {
                                         return _zorcBCD_CONV_BFlt64_To_ZndRnd(row.value, at,
                                                                               digits, row.decs);
                                     }),
                  kit::znd(row.rounded, row.digits))
            << row.value;
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
    };
    for (const auto &row : rows) {
        const std::string item = kit::pckd(row.digits, 31);
        EXPECT_EQ(bitsOf(_zorcBCD_CONV_Pckd_To_DFlt(model::bytes(item), 31, row.decs)), row.bits32)
            << row.digits;
        EXPECT_EQ(bitsOf(_zorcBCD_CONV_Pckd_To_DFlt64(model::bytes(item), 31, row.decs)),
                  row.bits64)
            << row.digits;
        EXPECT_EQ(bitsOf(_zorcBCD_CONV_Pckd_To_DFlt128(model::bytes(item), 31, row.decs)),
                  row.bits128)
            << row.digits;
    }
}

// The decimal forms: their widths, and our functions for them.
struct Decimal32 {
    using Type = ZorDecimal32;
    static constexpr int kDigits = 7;
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_DFlt;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_DFlt32;
    static constexpr auto packed = _zorcBCD_CONV_DFlt32_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_DFlt32_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_DFlt32_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_DFlt32_To_ZndRnd;
};
struct Decimal64 {
    using Type = ZorDecimal64;
    static constexpr int kDigits = 16;
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_DFlt64;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_DFlt64;
    static constexpr auto packed = _zorcBCD_CONV_DFlt64_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_DFlt64_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_DFlt64_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_DFlt64_To_ZndRnd;
};
struct Decimal128 {
    using Type = ZorDecimal128;
    static constexpr int kDigits = 34;
    static constexpr auto fromPacked = _zorcBCD_CONV_Pckd_To_DFlt128;
    static constexpr auto fromZoned = _zorcBCD_CONV_Znd_To_DFlt128;
    static constexpr auto packed = _zorcBCD_CONV_DFlt_To_Pckd;
    static constexpr auto packedRounded = _zorcBCD_CONV_DFlt_To_PckdRnd;
    static constexpr auto zoned = _zorcBCD_CONV_DFlt128_To_Znd;
    static constexpr auto zonedRounded = _zorcBCD_CONV_DFlt128_To_ZndRnd;
};

template <class Form> class DecimalConvert : public testing::Test {};
using DecimalForms = testing::Types<Decimal32, Decimal64, Decimal128>;
TYPED_TEST_SUITE(DecimalConvert, DecimalForms);

// A value made of an item, and the same with its exponent moved, against the item's text.
TYPED_TEST(DecimalConvert, ValuesComeBackScaled) {
    using Form = TypeParam;
    Random random(7);
    for (int i = 0; i < kRounds && !this->HasFatalFailure(); ++i) {
        const std::string text = model::digits(random, 1 + below(random, 40));
        const bool negative = below(random, 2) == 0;
        const int decs = below(random, 20);
        const std::string sign = negative ? "-" : "";
        const auto value = Form::fromPacked(model::bytes(kit::pckd(sign + text, 40)), 40, decs);
        const auto same = Form::fromZoned(model::bytes(kit::znd(sign + text, 40)), 40, decs);
        ASSERT_EQ(bitsOf(value), bitsOf(same)) << text;
        std::string read = text;
        for (std::size_t k = Form::kDigits; k < read.size(); ++k) {
            read[k] = '0';
        }
        const auto count = static_cast<unsigned>(1 + below(random, 40));
        const auto digits = static_cast<int32_t>(count);
        const int target = below(random, 30);
        for (const bool rounded : {false, true}) {
            const std::string whole = model::scaled({read, -decs}, target, rounded);
            const auto toPacked = rounded ? Form::packedRounded : Form::packed;
            const auto toZoned = rounded ? Form::zonedRounded : Form::zoned;
            ASSERT_EQ(kit::hex(model::into<true>(
                          count, [&](uint8_t *at) { return toPacked(value, at, digits, target); })),
                      kit::hex(model::item<true>(whole, negative, count)))
                << text << " decs " << decs << " to " << count << " " << target << rounded;
            ASSERT_EQ(model::into<false>(
                          count, [&](uint8_t *at) { return toZoned(value, at, digits, target); }),
                      model::item<false>(whole, negative, count))
                << text << " decs " << decs << " to " << count << " " << target << rounded;
        }
    }
}

// Every class of encoding that is no number in range, by its leading byte.
TYPED_TEST(DecimalConvert, NothingUnusualIsStored) {
    using T = typename TypeParam::Type;
    for (const unsigned leading : {0x78U, 0xF8U, 0x7CU, 0xFEU, 0x80U, 0x00U, 0x6FU, 0x5FU}) {
        unsigned char storage[16] = {};
        std::memset(storage, leading == 0x6F || leading == 0x5F ? 0xFF : 0, sizeof(T));
        storage[sizeof(T) - 1] = static_cast<unsigned char>(leading);
        T value;
        std::memcpy(&value, storage, sizeof value);
        for (const int decs : {0, 40, INT32_MAX, INT32_MIN}) {
            EXPECT_EQ(
                kit::hex(model::into<true>(
                    6, [&](uint8_t *at) { return TypeParam::packedRounded(value, at, 6, decs); })),
                "0000000c")
                << leading;
        }
    }
}

// ---- between forms

ZorDecimal128 decimal(const char *text, int decs = 0) {
    return _zorcBCD_CONV_Pckd_To_DFlt128(model::bytes(kit::pckd(text, 37)), 37, decs);
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
                {"9", 36, 0, 0}};
    for (const auto &row : rows) {
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_Int8(decimal(row.digits, row.decs)), row.wanted)
            << row.digits;
        EXPECT_EQ(_zorcBCD_CONV_DFlt_To_UInt8(decimal(row.digits, row.decs)), row.wantedUnsigned)
            << row.digits;
    }
}

// ---- trace and validation

void traceFloats() {
    uint8_t target[4];
    _zorcBCD_CONV_LFlt_To_PckdRnd(-1.5, target, 3, 1);
    _zorcBCD_CONV_BFlt128_To_Znd(0.5, target, 3, 1);
    _zorcBCD_CONV_DFlt64_To_PckdRnd(_zorcBCD_CONV_Pckd_To_DFlt64(model::bytes("\x12\x5C"), 3, 1),
                                    target, 3, 0);
    _zorcBCD_CONV_Znd_To_BFlt64(model::bytes("1x5"), 3, 1);
}

TEST(FloatConvert, TraceShowsBothSides) {
    const auto result = kit::runChild(
        traceFloats, kit::Environment{{"COBOL_BCD_DEBUG", "1"}, {"COBOL_BCD_NOVALIDATE", "1"}});
    EXPECT_EQ(model::withoutAddresses(result.err),
              "double to packed rounded... prec 3  decs 1\nin:   -1.50000000000000000E+00\n"
              "out: @ 3 015d\n"
              "quad to zoned... prec 3  decs 1\n"
              "in:    5.0000000000000000000000000000000000000E-01\nout: @ 3 303035\n"
              "packed to Decimal164... prec 3  decs 1\nin:  @ 3 125c\n"
              "dst:   12.5000000000000000000000000000000000\n"
              "Decimal64_to packed rounded... prec 3  decs 0\n"
              "in:    1.2500000000000000000000000000000000E+01\nout: @ 3 013c\n"
              "zoned to double... prec 3 decs 1\nin:  @ 3 317835\n"
              "dst  1.8500000000000000000000000000000000000E+01\n");
}

void convertOneBadItem() {
    _zorcBCD_CONV_Pckd_To_DFlt(model::bytes("\x1A\x2C"), 3, 0);
}

TEST(FloatConvert, BadItemsAreReported) {
    EXPECT_NE(kit::runChild(convertOneBadItem).err.find("903"), std::string::npos);
}

// The libraries for the wide forms are loaded for the trace alone.
void showLoadedLibraries() {
    uint8_t target[20];
    _zorcBCD_CONV_EFlt_To_Pckd(_zorcBCD_CONV_Pckd_To_EFlt(model::bytes("\x12\x5C"), 3, 1), target,
                               31, 20);
    _zorcBCD_CONV_DFlt_To_Pckd(decimal("125", 1), target, 31, 20);
    printf("%s", kit::readFile("/proc/self/maps").c_str());
}

TEST(FloatConvert, NoLibraryIsLoadedForIt) {
    const std::string maps = kit::runChild(showLoadedLibraries).out;
    EXPECT_NE(maps.find("liblvd4_32r"), std::string::npos);
    EXPECT_EQ(maps.find("libdfp"), std::string::npos);
    EXPECT_EQ(maps.find("libquadmath"), std::string::npos);
}

} // namespace

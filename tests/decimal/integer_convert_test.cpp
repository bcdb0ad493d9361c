// Conversions between items and binary integers, against the integers' texts.
#include "arithmetic_model.h"
#include "decimal_convert.h"
#include "support/kit.h"

namespace {

using namespace model;

constexpr int kRounds = 20'000;

template <class Integer> Integer cut(uint8_t *(*)(Integer, uint8_t *, int32_t), uint64_t word) {
    return static_cast<Integer>(word);
}

// A value keeps its sign even where the item takes only zeros of it.
template <Form form, auto convert> void expectItem(uint64_t word, int digits, Random &random) {
    static Room room;
    const auto value = cut(convert, word);
    const std::string text = std::to_string(value);
    const bool negative = text[0] == '-';
    uint8_t *target = room.put(bytesOf(form, digits), random);
    room.expect(target, encode(form, fit(text.substr(negative ? 1 : 0), digits), negative));
    ASSERT_EQ(convert(value, target, digits), target);
    ASSERT_TRUE(room.isAsExpected())
        << text << " into " << digits << " digits, form " << form << ": "
        << kit::hex(target, static_cast<size_t>(bytesOf(form, digits)));
}

constexpr void (*kExpectItem[])(uint64_t, int, Random &) = {
    expectItem<Pckd, _zorcBCD_CONV_Int1_To_Pckd>, expectItem<Pckd, _zorcBCD_CONV_Uns1_To_Pckd>,
    expectItem<Pckd, _zorcBCD_CONV_Int2_To_Pckd>, expectItem<Pckd, _zorcBCD_CONV_Uns2_To_Pckd>,
    expectItem<Pckd, _zorcBCD_CONV_Int4_To_Pckd>, expectItem<Pckd, _zorcBCD_CONV_Uns4_To_Pckd>,
    expectItem<Pckd, _zorcBCD_CONV_Int8_To_Pckd>, expectItem<Pckd, _zorcBCD_CONV_Uns8_To_Pckd>,
    expectItem<Znd, _zorcBCD_CONV_Int4_To_Znd>,   expectItem<Znd, _zorcBCD_CONV_UInt4_To_Znd>,
    expectItem<Znd, _zorcBCD_CONV_Int8_To_Znd>,   expectItem<Znd, _zorcBCD_CONV_UInt8_To_Znd>};

TEST(IntegerConvert, IntegersToItemsAgreeWithTheirText) {
    Random random(1);
    for (int i = 0; i < kRounds && !HasFatalFailure(); ++i) {
        const int digits = random.count(36);
        for (const auto expect : kExpectItem) {
            expect(random.integer(), digits, random);
        }
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
    for (int i = 0; i < 10 * kRounds && !HasFatalFailure(); ++i) {
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

} // namespace

#include "convert_model.h"
#include "decimal_convert.h"

namespace {

using model::below;
using model::Random;

constexpr int kRounds = 20'000;

// Values of every bit length, and those beside the limits and the powers of ten.
uint64_t anyWord(Random &random) {
    const uint64_t word = static_cast<uint64_t>(random()) << 32 | random();
    const uint64_t value = word >> below(random, 64);
    uint64_t power = 1;
    for (int i = below(random, 20); i > 0; --i) {
        power *= 10;
    }
    switch (below(random, 4)) {
    case 0:
        return 0 - value % 3;
    case 1:
        return power - value % 2;
    default:
        return value;
    }
}

template <class Value> Value cut(uint8_t *(*)(Value, uint8_t *, int32_t), uint64_t word) {
    return static_cast<Value>(word);
}

template <bool packed, auto convert> void expectItem(uint64_t word, unsigned digits) {
    const auto value = cut(convert, word);
    std::string text = std::to_string(value);
    const bool negative = text[0] == '-';
    text.erase(0, negative ? 1 : 0);
    ASSERT_EQ(kit::hex(model::into<packed>(digits,
                                           [&](uint8_t *target) {
                                               return convert(value, target,
                                                              static_cast<int32_t>(digits));
                                           })),
              kit::hex(model::item<packed>(text, negative, digits, true)))
        << value << " into " << digits;
}

constexpr void (*kExpectItem[])(uint64_t, unsigned) = {
    expectItem<true, _zorcBCD_CONV_Int1_To_Pckd>, expectItem<true, _zorcBCD_CONV_Uns1_To_Pckd>,
    expectItem<true, _zorcBCD_CONV_Int2_To_Pckd>, expectItem<true, _zorcBCD_CONV_Uns2_To_Pckd>,
    expectItem<true, _zorcBCD_CONV_Int4_To_Pckd>, expectItem<true, _zorcBCD_CONV_Uns4_To_Pckd>,
    expectItem<true, _zorcBCD_CONV_Int8_To_Pckd>, expectItem<true, _zorcBCD_CONV_Uns8_To_Pckd>,
    expectItem<false, _zorcBCD_CONV_Int4_To_Znd>, expectItem<false, _zorcBCD_CONV_UInt4_To_Znd>,
    expectItem<false, _zorcBCD_CONV_Int8_To_Znd>, expectItem<false, _zorcBCD_CONV_UInt8_To_Znd>};

TEST(IntegerConvert, IntegersToItemsAgreeWithTheirText) {
    Random random(1);
    for (int i = 0; i < kRounds && !HasFatalFailure(); ++i) {
        const auto digits = static_cast<unsigned>(1 + below(random, 36));
        for (const auto expect : kExpectItem) {
            expect(anyWord(random), digits);
        }
    }
}

TEST(IntegerConvert, ItemsToIntegersWrapAtTheirWidth) {
    Random random(2);
    for (int i = 0; i < 10 * kRounds; ++i) {
        const int count = 1 + below(random, 36);
        const bool negative = below(random, 2) == 0;
        std::string text = model::digits(random, 1 + below(random, count));
        uint64_t word = 0;
        for (const char c : text) {
            word = word * 10 + static_cast<unsigned>(c - '0');
        }
        const auto digits = static_cast<unsigned>(count);
        std::string packed = kit::pckd(text, digits);
        const char sign = negative ? "\xB\xD"[below(random, 2)] : "\xA\xC\xE\xF"[below(random, 4)];
        packed.back() = static_cast<char>((packed.back() & 0xF0) | sign);
        if (count % 2 == 0 && text.size() == digits) {
            packed[0] = static_cast<char>(packed[0] | 0x50); // the pad is not a digit
        }
        const std::string zoned = kit::znd((negative ? "-" : "") + text, digits);
        const uint64_t wrapped = negative ? 0 - word : word;
        const uint8_t *p = model::bytes(packed);
        const uint8_t *z = model::bytes(zoned);
        const auto low = static_cast<uint32_t>(word);
        const auto lowSigned = static_cast<int32_t>(static_cast<uint32_t>(wrapped));
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int8(p, count), static_cast<int64_t>(wrapped)) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns8(p, count), word) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int4(p, count), lowSigned) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int2(p, count), lowSigned) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Int1(p, count), lowSigned) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns4(p, count), low) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns2(p, count), low) << text;
        ASSERT_EQ(_zorcBCD_CONV_Pckd_To_Uns1(p, count), low) << text;
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_Int8(z, count), static_cast<int64_t>(wrapped)) << text;
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_UInt8(z, count), word) << text;
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_Int4(z, count), lowSigned) << text;
        ASSERT_EQ(_zorcBCD_CONV_Znd_To_UInt4(z, count), low) << text;
    }
}

TEST(IntegerConvert, SignBytesAreDecoded) {
    const struct {
        const char *item;
        int32_t value;
    } rows[] = {{"12C", 123}, {"12L", -123}, {"12{", 120}, {"12}", -120},  {"12s", -123},
                {"12 ", 120}, {"00}", 0},    {"\xF3", 3},  {"1\xD3", -13}, {"12R", -129}};
    for (const auto &row : rows) {
        const std::string item = row.item;
        EXPECT_EQ(_zorcBCD_CONV_Znd_To_Int4(model::bytes(item), static_cast<int32_t>(item.size())),
                  row.value)
            << item;
    }
    EXPECT_EQ(_zorcBCD_CONV_Znd_To_Int4(model::bytes("5"), 0), 0);
    EXPECT_EQ(_zorcBCD_CONV_Pckd_To_Int4(model::bytes(std::string(4, '\0')), 7), 0);
}

TEST(IntegerConvert, LengthsAreRoundedUp) {
    const struct {
        const char *digits;
        unsigned count;
        int32_t decs;
        uint64_t length;
    } rows[] = {{"1250", 4, 2, 13},
                {"1200", 4, 2, 12},
                {"1", 3, 2, 1},
                {"-5", 1, 0, 0},
                {"0", 5, 2, 0},
                {"1", 5, 9, 1},
                {"0", 5, 9, 0},
                {"99999", 5, 1, 10000},
                {"99990", 5, 1, 9999},
                {"7", 1, 1, 1},
                {"71234", 4, 4, 1},
                {"70000", 4, 4, 0},
                {"18446744073709551615", 20, 0, UINT64_MAX}};
    for (const auto &row : rows) {
        const std::string item = kit::pckd(row.digits, row.count);
        EXPECT_EQ(_zorcBCD_CONV_Pckd_To_Len8(model::bytes(item), static_cast<int32_t>(row.count),
                                             row.decs),
                  row.length)
            << row.digits << " decs " << row.decs;
    }
}

// ---- trace and validation, in a process with the switches set

void traceIntegers() {
    uint8_t target[4];
    _zorcBCD_CONV_Int1_To_Pckd(-5, target, 3);
    _zorcBCD_CONV_Uns8_To_Pckd(UINT64_MAX, target, 3);
    _zorcBCD_CONV_UInt4_To_Znd(UINT32_MAX, target, 3);
    _zorcBCD_CONV_Pckd_To_Uns2(model::bytes("\x99\x99\x9C"), 5);
    _zorcBCD_CONV_Znd_To_Int4(model::bytes("12s"), 3);
}

TEST(IntegerConvert, TraceShowsBothSides) {
    const auto result = kit::runChild(traceIntegers, kit::Environment{{"COBOL_BCD_DEBUG", "1"}});
    EXPECT_EQ(model::withoutAddresses(result.err),
              "int8 to packed...\nin:  -5\nout: @ 3 005d\n"
              "uint64 to packed...\nin:  18446744073709551615\n"
              "out: @ 3 615c\n"
              "uint32 to zoned...\nin:  4294967295\nout: @ 3 323935\n"
              "packed to uint16...\nin:  @ 5 99999c\nout: 34463\n"
              "zoned to int32...\nin:  @ 3 313273\nout: -123\n");
}

void convertBadItems() {
    const int32_t packed = _zorcBCD_CONV_Pckd_To_Int4(model::bytes("\x1A\x2C"), 3);
    const int64_t zoned = _zorcBCD_CONV_Znd_To_Int8(model::bytes("1x3"), 3);
    printf("%d %lld\n", packed, static_cast<long long>(zoned));
    fflush(stdout);
}

// Message 903 goes out for each, and with the switch for none; the bytes are read as they stand.
TEST(IntegerConvert, BadItemsAreReported) {
    const auto checked = kit::runChild(convertBadItems);
    EXPECT_NE(checked.err.find("903"), std::string::npos) << checked.err;
    const auto unchecked =
        kit::runChild(convertBadItems, kit::Environment{{"COBOL_BCD_NOVALIDATE", "1"}});
    EXPECT_EQ(unchecked.out, "102 183\n");
    EXPECT_EQ(unchecked.err, "");
}

} // namespace

// The ground of the decimal family: bytes, forms, switches, validators.
#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "decimal/forms.h"
#include "decimal/integer_digits.h"
#include "decimal/limbs.h"
#include "decimal/options.h"
#include "support/kit.h"

using namespace zor::decimal;

namespace {

TEST(ZonedBytes, DigitAndSign) {
    struct Row {
        uint8_t first, last; // a range of bytes with digits that go up
        uint8_t digit;
        bool negative, carriesSign;
    };
    const Row rows[] = {
        {0x30, 0x39, 0, false, true},  {0x70, 0x79, 0, true, true},
        {'{', '{', 0, false, true},    {'}', '}', 0, true, true},
        {'A', 'I', 1, false, true},    {'J', 'R', 1, true, true},
        {0x00, 0x00, 0, false, true},  {' ', ' ', 0, false, true},
        {0xC0, 0xC9, 0, false, true},  {0xD0, 0xD9, 0, true, true},
        {0xF0, 0xF9, 0, false, true},  {0xA0, 0xA9, 0, false, false},
        {0x21, 0x29, 1, false, false}, {0xDA, 0xDF, 10, false, false},
        {0x53, 0x59, 3, false, false}, {0x7A, 0x7A, 10, false, false},
        {0xE0, 0xE9, 0, false, false}, {0x40, 0x40, 0, false, false},
    };
    for (const Row &row : rows) {
        for (unsigned byte = row.first; byte <= row.last; ++byte) {
            const auto b = static_cast<uint8_t>(byte);
            EXPECT_EQ(zonedDigitValue(b), row.digit + byte - row.first) << byte;
            EXPECT_EQ(zonedIsNegative(b), row.negative) << byte;
            EXPECT_EQ(zonedCarriesSign(b), row.carriesSign) << byte;
        }
    }
    for (uint8_t digit = 0; digit <= 9; ++digit) {
        for (const bool negative : {false, true}) {
            for (const uint8_t byte :
                 {zonedByte(digit, negative), overpunchLetter(digit, negative)}) {
                EXPECT_EQ(zonedDigitValue(byte), digit);
                EXPECT_EQ(zonedIsNegative(byte), negative);
            }
        }
    }
}

TEST(PairTables, AreInverse) {
    for (unsigned value = 0; value < 200; ++value) {
        EXPECT_EQ(pairToValue[valueToPair[value]], value % 100);
    }
    EXPECT_EQ(pairToValue[0x7D], 70); // a sign reads as ten times the digit
    EXPECT_EQ(pairToValue[0xA3], 100);
}

// What is read at once needs no validation: with any one nibble that is no digit, or no sign, the
// item is left to the validator.
TEST(PackedItems, OnlyProperOnesAreReadAtOnce) {
    for (int32_t digits = 1; digits <= 31; ++digits) {
        const int32_t last = digits / 2;
        for (int32_t leading = 0; leading <= last; ++leading) { // zero bytes
            std::vector<uint8_t> item(static_cast<size_t>(last) + 1, 0);
            std::fill(item.begin() + leading, item.end(), 0x12);
            item[static_cast<size_t>(last)] = 0x3D;
            const auto isRead = [&] {
                ShortPacked read;
                uint64_t magnitude;
                const bool isShort = readShortPacked(item.data(), digits, read);
                const bool isBlock = readPackedBlock(item.data(), digits, magnitude);
                EXPECT_TRUE(isBlock || !isShort);
                return isBlock;
            };
            Packed::clearPad(item.data(), digits);
            EXPECT_TRUE(isRead()) << digits << " " << leading;
            for (size_t at = 0; at < item.size() * 2; ++at) {
                const uint8_t before = item[at / 2];
                const bool isSign = at == item.size() * 2 - 1;
                item[at / 2] = static_cast<uint8_t>(
                    at % 2 == 0 ? (before & 0x0F) | 0xA0 : (before & 0xF0) | (isSign ? 9 : 0xF));
                EXPECT_FALSE(isRead()) << digits << " " << leading << " " << at;
                EXPECT_EQ(validatePacked(item.data(), digits, Strictness::lenient), 1);
                item[at / 2] = before;
            }
        }
    }
}

TEST(Forms, LengthsAndSigns) {
    EXPECT_EQ(Packed::bytes(4), 3);
    EXPECT_EQ(Packed::bytes(5), 3);
    EXPECT_EQ(ZonedLeadingSeparate::bytes(5), 6);
    std::string leading = "-123";
    const auto *item = reinterpret_cast<const uint8_t *>(leading.data());
    EXPECT_TRUE(ZonedLeadingSeparate::isNegative(item, 3));
    EXPECT_EQ(ZonedLeadingSeparate::digitBytes(item)[0], '1');
    EXPECT_FALSE(ZonedTrailingSeparate::hasProperSign(item, 3));
    auto check = [](auto form, std::string text, int32_t digits, const char *negative) {
        using Form = decltype(form);
        auto *bytes = reinterpret_cast<uint8_t *>(text.data());
        const bool was = Form::isNegative(bytes, digits);
        Form::storeSign(bytes, digits, !was);
        EXPECT_EQ(text, negative);
        EXPECT_NE(Form::isNegative(bytes, digits), was);
    };
    check(ZonedTrailing{}, "123", 3, "12s");
    check(ZonedTrailing{}, "12L", 3, "123");
    check(ZonedLeading{}, "A23", 3, "q23");
    check(ZonedTrailingSeparate{}, "123+", 3, "123-");
    check(ZonedLeadingSeparate{}, "-123", 3, "+123");
    check(Packed{}, "\x12\x3F", 3, "\x12\x3D");
}

TEST(Switches, ComeFromTheEnvironment) {
    struct Row {
        kit::Environment environment;
        uint32_t word;
    };
    const Row rows[] = {
        {{}, 0},
        {{{"COBOL_BCD_NOVALIDATE", "1"}}, NOVALIDATE_ARITH},
        {{{"COBOL_BCD_NOVALIDATE", "0x1FF"}}, 0xFF},
        {{{"COBOL_BCD_NOVALIDATE", "010"}}, KEEP_UNSIGNED_TAIL},
        {{{"COBOL_BCD_NOVALIDATE", "yes"}}, 0},
        {{{"COBOL_BCD_SAFE", "1"}}, REZONE_DIGITS | VALIDATE_MOVES | VALIDATE_COMPARES},
        {{{"COBOL_BCD_SAFE", ""}}, 0},
        {{{"COBOL_BCD_FAST", "n"}}, KEEP_UNSIGNED_TAIL},
        {{{"COBOL_BCD_NOVALIDATE", "0xFF"}, {"COBOL_BCD_SAFE", "1"}}, 0xF4},
        {{{"COBOL_BCD_NOVALIDATE", "0xFF"}, {"COBOL_BCD_FAST", "1"}}, 0xA8},
        {{{"COBOL_BCD_SAFE", "1"}, {"COBOL_BCD_FAST", "1"}}, KEEP_UNSIGNED_TAIL},
        {{{"COBOL_BCD_DEBUG", "1"}, {"COBOL_BCD_EBCDIC", "1"}}, TRACE | EBCDIC_OVERPUNCH},
    };
    for (const Row &row : rows) {
        for (const char *name : {"COBOL_BCD_NOVALIDATE", "COBOL_BCD_SAFE", "COBOL_BCD_FAST",
                                 "COBOL_BCD_DEBUG", "COBOL_BCD_EBCDIC"}) {
            unsetenv(name);
        }
        for (const auto &[name, value] : row.environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        EXPECT_EQ(readBcdOptions(), row.word);
        EXPECT_EQ(loadBcdOptions(), row.word);
    }
    for (const char *name : {"COBOL_BCD_DEBUG", "COBOL_BCD_EBCDIC"}) {
        unsetenv(name);
    }
    EXPECT_EQ(readBcdOptions(), 0U);
}

// ---- validators against their rules, byte by byte

bool packedIsInvalid(std::vector<uint8_t> bytes, bool strict) {
    while (!strict && bytes.size() > 1 && bytes[0] == 0) {
        bytes.erase(bytes.begin());
    }
    const uint8_t last = bytes.back();
    if (bytes.size() == 1 && (last & 0x0F) == 0) {
        return false;
    }
    bool invalid = (last & 0x0F) < 0xA || last >> 4 > 9;
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        invalid = invalid || bytes[i] >> 4 > 9 || (bytes[i] & 0x0F) > 9;
    }
    return invalid;
}

// Within a word only "0" to "9" pass; which bytes are within one follows the address.
bool zonedIsInvalid(const uint8_t *item, std::size_t size, bool strict) {
    std::size_t first = 0;
    while (!strict && first + 1 < size && (item[first] & 0x0F) == 0) {
        ++first;
    }
    bool invalid = !zonedCarriesSign(item[size - 1]);
    std::size_t left = size - 1 - first;
    for (const std::size_t width : {8U, 4U, 2U, 1U}) {
        const bool aligned = reinterpret_cast<uintptr_t>(item + size - 1) % width == 0;
        while (aligned && left > (width == 1 ? 0 : width)) {
            for (std::size_t i = 0; i < width; ++i) {
                const std::size_t at = first + --left;
                invalid =
                    invalid ||
                    !((item[at] >= '0' && item[at] <= '9') ||
                      (width == 1 && (item[at] == 0 || (at == 0 && zonedCarriesSign(*item)))));
            }
        }
    }
    return invalid;
}

// Items that are nearly valid, at every alignment: digits with at most two stray bytes.
TEST(Validators, FollowTheirRulesAtAnyAddress) {
    std::mt19937 random(11);
    auto below = [&](unsigned bound) { return static_cast<unsigned>(random() % bound); };
    int invalid = 0;
    for (int round = 0; round < 200000; ++round) {
        const bool packed = round % 2 == 0;
        const std::size_t size = 1 + below(40);
        std::vector<uint8_t> storage(size + 16, 0xEE);
        std::vector<uint8_t> bytes(size);
        const unsigned zeros = below(3) == 0 ? below(static_cast<unsigned>(size)) : 0;
        for (std::size_t i = 0; i < size; ++i) {
            const unsigned digit = i < zeros ? 0 : below(10);
            bytes[i] = static_cast<uint8_t>(packed ? digit << 4 | below(10) : 0x30 + digit);
        }
        if (packed) {
            bytes.back() = static_cast<uint8_t>((bytes.back() & 0xF0) | (10 + below(6)));
            std::fill_n(bytes.begin(), zeros, uint8_t{0});
        }
        for (unsigned strays = below(3); strays > 0; --strays) {
            const std::size_t at = below(3) == 0   ? 0
                                   : below(3) == 0 ? size - 1
                                                   : below(static_cast<unsigned>(size));
            bytes[at] = static_cast<uint8_t>(below(4) == 0 ? 0 : below(256));
        }
        const std::size_t shift = below(16);
        std::copy(bytes.begin(), bytes.end(), storage.begin() + static_cast<int>(shift));
        const uint8_t *item = storage.data() + shift;
        const auto length = static_cast<int32_t>(size);
        for (const Strictness strictness : {Strictness::lenient, Strictness::strict}) {
            const bool strict = strictness == Strictness::strict;
            const int32_t answer = packed ? validatePacked(item, 2 * length - 1, strictness)
                                          : validateZoned(item, length, strictness);
            ASSERT_EQ(answer,
                      (packed ? packedIsInvalid(bytes, strict) : zonedIsInvalid(item, size, strict))
                          ? 1
                          : 0)
                << kit::hex(bytes.data(), size) << " strict " << strict;
            invalid += answer;
        }
        bool zero = true;
        for (std::size_t i = 0; i < size; ++i) {
            const bool last = i + 1 == size;
            zero = zero && (packed ? (last ? bytes[i] >> 4 : bytes[i]) == 0
                                   : (last ? zonedDigitValue(bytes[i]) : bytes[i] & 0x0F) == 0);
        }
        ASSERT_EQ(packed ? packedIsZero(item, 2 * length - 1) : zonedIsZero(item, length), zero)
            << kit::hex(bytes.data(), size);
    }
    EXPECT_GT(invalid, 10000);
}

TEST(Limbs, SplitAtTheEdges) {
    for (const uint64_t quotient :
         {uint64_t{0}, uint64_t{1}, uint64_t{99999999}, uint64_t{1799999999}}) {
        for (const uint64_t rest : {0U, 1U, 49999999U, 99999998U, 99999999U}) {
            const LimbSplit split = splitLimb(quotient * kLimbBase + rest);
            EXPECT_EQ(split.quotient, quotient);
            EXPECT_EQ(split.rest, rest);
        }
    }
}

} // namespace

// The ground of the decimal family: zoned bytes, items read at once, switches, validators.
#include <cstdlib>

#include "arithmetic_model.h"
#include "decimal/integer_digits.h"
#include "decimal/limbs.h"
#include "decimal/options.h"
#include "moves_model.h"
#include "support/kit.h"

using namespace zor::decimal;

namespace {

// The forms in which a digit carries a sign.
bool carriesSign(int b) {
    const int zone = b >> 4;
    const bool hasZone = zone == 0x3 || zone == 0x7 || zone == 0xC || zone == 0xD || zone == 0xF;
    return b == 0x00 || b == ' ' || model::isLetter(b) || (hasZone && (b & 0x0F) <= 9);
}

TEST(ZonedBytes, DigitAndSign) {
    for (int b = 0; b < 256; ++b) {
        const auto byte = static_cast<uint8_t>(b);
        const ZonedUnits units = zonedUnits(byte);
        EXPECT_EQ(zonedDigitValue(byte), model::digitOf(b)) << b;
        EXPECT_EQ(units.digit, model::digitOf(b)) << b;
        EXPECT_EQ(zonedIsNegative(byte), model::isNegative(b)) << b;
        EXPECT_EQ(units.negative, model::isNegative(b)) << b;
        EXPECT_EQ(zonedCarriesSign(byte), carriesSign(b)) << b;
        EXPECT_EQ(units.valid, carriesSign(b)) << b;
    }
}

TEST(Switches, ComeFromTheEnvironment) {
    const struct {
        kit::Environment environment;
        uint32_t word;
    } rows[] = {
        {{{"COBOL_BCD_NOVALIDATE", "0x1FF"}}, 0xFF},
        {{{"COBOL_BCD_NOVALIDATE", "010"}}, KEEP_UNSIGNED_TAIL},
        {{{"COBOL_BCD_NOVALIDATE", "yes"}}, 0},
        {{{"COBOL_BCD_SAFE", "1"}}, REZONE_DIGITS | VALIDATE_MOVES | VALIDATE_COMPARES},
        {{{"COBOL_BCD_SAFE", ""}}, 0},
        {{{"COBOL_BCD_NOVALIDATE", "0xFF"}, {"COBOL_BCD_SAFE", "1"}}, 0xF4},
        {{{"COBOL_BCD_NOVALIDATE", "0xFF"}, {"COBOL_BCD_FAST", "1"}}, 0xA8},
        {{{"COBOL_BCD_SAFE", "1"}, {"COBOL_BCD_FAST", "1"}}, KEEP_UNSIGNED_TAIL},
        {{{"COBOL_BCD_DEBUG", "1"}, {"COBOL_BCD_EBCDIC", "1"}}, TRACE | EBCDIC_OVERPUNCH},
        {{}, 0}, // last, and left to the tests behind
    };
    for (const auto &[environment, word] : rows) {
        for (const char *name : {"COBOL_BCD_NOVALIDATE", "COBOL_BCD_SAFE", "COBOL_BCD_FAST",
                                 "COBOL_BCD_DEBUG", "COBOL_BCD_EBCDIC"}) {
            unsetenv(name);
        }
        for (const auto &[name, value] : environment) {
            setenv(name.c_str(), value.c_str(), 1);
        }
        EXPECT_EQ(readBcdOptions(), word);
        EXPECT_EQ(loadBcdOptions(), word);
    }
}

TEST(Switches, AreReadByWhicheverCallIsFirst) {
    uint8_t target[8] = {};
    for (const model::Function &f : model::kMoves) {
        const std::string item = model::encode(f.from, "123", false);
        bcdOptions = BCD_OPTIONS_UNSET;
        if (isRelation(f)) {
            callRelation(f, model::address(item), 3, model::address(item), 3);
        } else {
            callMove(f, model::address(item), 3, target, 3, 1);
        }
        EXPECT_EQ(bcdOptions, 0U) << f.name;
    }
    for (const model::Operation &f : model::kOperations) {
        const std::string item = model::encode(f.form, "123", false);
        bcdOptions = BCD_OPTIONS_UNSET;
        f.call(model::address(item), model::address(item), target, 3, 3, 3);
        EXPECT_EQ(bcdOptions, 0U) << f.name;
    }
}

// ---- validators against their rules, byte by byte

bool packedIsInvalid(std::string bytes, bool strict) {
    while (!strict && bytes.size() > 1 && bytes[0] == 0) {
        bytes.erase(0, 1);
    }
    const int sign = bytes.back() & 0x0F;
    if (bytes.size() == 1 && sign == 0) {
        return false;
    }
    const auto digits = static_cast<int>(bytes.size()) * 2 - 1;
    const std::string text = model::decode(model::Pckd, bytes, digits).digits;
    return sign < 0xA || text.find_first_not_of("0123456789") != std::string::npos;
}

// Within a word only "0" to "9" pass; which bytes are within one follows the address.
bool zonedIsInvalid(const uint8_t *item, int size, bool strict) {
    int first = 0;
    while (!strict && first + 1 < size && (item[first] & 0x0F) == 0) {
        ++first;
    }
    bool invalid = !carriesSign(item[size - 1]);
    int left = size - 1 - first;
    for (const int width : {8, 4, 2, 1}) {
        const bool aligned =
            reinterpret_cast<uintptr_t>(item + size - 1) % static_cast<unsigned>(width) == 0;
        while (aligned && left > (width == 1 ? 0 : width)) {
            for (int i = 0; i < width; ++i) {
                const int at = first + --left;
                const bool isDigit = item[at] >= '0' && item[at] <= '9';
                const bool passesAlone = item[at] == 0 || (at == 0 && carriesSign(item[0]));
                invalid = invalid || !(isDigit || (width == 1 && passesAlone));
            }
        }
    }
    return invalid;
}

// What is read at once needs no validation: a proper sign, digits alone, and a clear pad.
void expectReadAtOnce(const std::string &bytes, int digits) {
    const bool isPadClear = digits % 2 != 0 || (bytes[0] & 0xF0) == 0;
    const bool isProper = isPadClear && (bytes.back() & 0x0F) > 9 && !packedIsInvalid(bytes, true);
    uint64_t magnitude;
    ShortPacked read;
    ASSERT_EQ(readPackedBlock(model::address(bytes), digits, magnitude), isProper)
        << kit::hex(bytes);
    ASSERT_TRUE(isProper || !readShortPacked(model::address(bytes), digits, read))
        << kit::hex(bytes);
}

// Items that are nearly valid, at every alignment: with at most two stray bytes.
TEST(Validators, FollowTheirRulesAtAnyAddress) {
    model::Random random(11);
    model::Room room;
    int invalid = 0;
    for (int round = 0; round < 200'000 && !HasFatalFailure(); ++round) {
        const model::Form form = round % 2 == 0 ? model::Pckd : model::Znd;
        const int digits = 1 + random.below(40);
        std::string bytes =
            random.item(form, random.digits(digits), random.oneIn(2), model::Validation::lenient);
        const auto size = static_cast<int>(bytes.size());
        for (int strays = random.below(3); strays > 0; --strays) {
            const int at = random.oneIn(3) ? 0 : random.oneIn(3) ? size - 1 : random.below(size);
            bytes[static_cast<size_t>(at)] =
                static_cast<char>(random.oneIn(4) ? 0 : random.below(256));
        }
        const uint8_t *item = room.put(bytes, random);
        const bool packed = form == model::Pckd;
        for (const Strictness strictness : {Strictness::lenient, Strictness::strict}) {
            const bool strict = strictness == Strictness::strict;
            const int answer = packed ? validatePacked(item, digits, strictness)
                                      : validateZoned(item, digits, strictness);
            const bool wanted =
                packed ? packedIsInvalid(bytes, strict) : zonedIsInvalid(item, size, strict);
            ASSERT_EQ(answer, wanted ? 1 : 0) << kit::hex(bytes) << " strict " << strict;
            invalid += answer;
        }
        ASSERT_EQ(packed ? packedIsZero(item, digits) : zonedIsZero(item, digits),
                  model::isZero(model::decode(form, bytes, digits).digits))
            << kit::hex(bytes);
        if (packed && digits <= 31) {
            expectReadAtOnce(bytes, digits);
        }
    }
    EXPECT_GT(invalid, 10'000);
}

TEST(Limbs, SplitAtTheEdges) {
    for (const uint32_t quotient : {0U, 1U, 99'999'999U, 1'799'999'999U}) {
        for (const uint32_t rest : {0U, 1U, 49'999'999U, 99'999'998U, 99'999'999U}) {
            const LimbSplit split = splitLimb(uint64_t{quotient} * kLimbBase + rest);
            EXPECT_EQ(split.quotient, quotient);
            EXPECT_EQ(split.rest, rest);
        }
    }
}

} // namespace

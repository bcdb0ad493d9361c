// The family of decimal moves against a plain model: random items of all forms under every switch
// that changes a result, at the edges of readable storage and with overlapping operands.
#include "decimal/moves_model.h"
#include "support/kit.h"

namespace {

using namespace model;

constexpr int kCases = 60'000; // of each setting

// One move in rooms of its own kind, or in one where the target overlaps the source.
void checkMove(const Function &f, unsigned options, Random &random) {
    static Room sourceRoom;
    static Room targetRoom;
    const bool isGarbage = isShift(f) && random.oneIn(8); // they move any bytes
    int sourceDigits = isGarbage && random.oneIn(8) ? 1 + random.below(1000) : random.count();
    const int targetDigits = random.oneIn(3) ? sourceDigits : random.count();
    const int shift =
        random.oneIn(8) ? random.below(140) : random.below(1 + sourceDigits + random.below(2));
    std::string item =
        random.item(f.from, random.digits(sourceDigits), random.oneIn(2), validationOf(f, options));
    if (isGarbage) {
        item = random.garbage(bytesOf(f.from, sourceDigits));
    } else if (f.from == ZndUS && f.to == Pckd && random.oneIn(4)) { // stray signs
        item = random.oneIn(2) ? item : "+- "[random.below(3)] + item;
        item = random.oneIn(2) ? item : item + "+-"[random.below(2)];
        sourceDigits = static_cast<int>(item.size());
    }
    if (separate(f.from) && random.oneIn(8)) {
        const bool anySign = !testsSeparateSign(f, options);
        (f.from == ZndLS ? item.front() : item.back()) =
            anySign ? static_cast<char>(random.below(256)) : '-';
    }
    const auto resultOf = [&](const Function &function) {
        return expected(function, options, item, sourceDigits, targetDigits, shift);
    };
    Function cut = f;
    cut.kind = f.kind == Kind::rightRound ? Kind::right : f.kind;
    if (isGarbage && f.from == Pckd && resultOf(f) != resultOf(cut)) {
        return; // a carry over what is no digit has no meaning
    }
    const int targetBytes = bytesOf(f.to, targetDigits);
    uint8_t *source = sourceRoom.put(item, random);
    uint8_t *target = targetRoom.put(targetBytes, random);
    const bool overlaps = sourceDigits <= 126 && random.oneIn(4);
    if (overlaps) {
        target = sourceRoom.near(source, targetBytes, random);
    }
    EXPECT_EQ(call(f, source, sourceDigits, target, targetDigits, shift),
              reinterpret_cast<intptr_t>(target));
    const std::string got(target, target + targetBytes);
    (overlaps ? sourceRoom : targetRoom).expect(target, resultOf(f));
    EXPECT_TRUE(sourceRoom.isAsExpected() && targetRoom.isAsExpected())
        << f.name << " " << kit::hex(item) << " " << sourceDigits << " to " << targetDigits
        << " shift " << shift << (overlaps ? " overlapping: " : ": ") << kit::hex(got);
}

void checkRelation(const Function &f, Random &random) {
    static Room rooms[2];
    const int digits1 = random.count();
    const int digits2 = random.oneIn(2) ? digits1 : random.count();
    const std::string value1 = random.digits(digits1);
    std::string value2 = random.oneIn(2) ? fit(value1, digits2) : random.digits(digits2);
    if (random.oneIn(2)) { // perhaps nearly the same
        value2[static_cast<size_t>(random.below(digits2))] = plain(random.below(10));
    }
    const bool negative = random.oneIn(2);
    const std::string op1 = random.item(f.from, value1, negative, Validation::strict);
    const std::string op2 =
        random.item(f.from, value2, random.oneIn(3) != negative, Validation::strict);
    const intptr_t got =
        call(f, rooms[0].put(op1, random), digits1, rooms[1].put(op2, random), digits2);
    EXPECT_EQ(got, answer(f, valueOf(f.from, op1, digits1), valueOf(f.from, op2, digits2)))
        << f.name << " " << kit::hex(op1) << " " << digits1 << ", " << kit::hex(op2) << " "
        << digits2;
}

template <unsigned options> void runModel() {
    Random random(1959 + options);
    for (int i = 0; i < kCases && !testing::Test::HasFailure(); ++i) {
        const Function &f = random.among(kMoves);
        isRelation(f) ? checkRelation(f, random) : checkMove(f, options, random);
    }
}

constexpr const char *kMask = "COBOL_BCD_NOVALIDATE";

TEST(DecimalMoves, AgreeWithTheModel) {
    kit::expectChildren({
        {"no number", {{{kMask, "yes"}}}, runModel<0>},
        {"bit 0", {{{kMask, "1"}}}, runModel<kNoValidate>},
        {"bit 1", {{{kMask, "2"}}}, runModel<kKeepNegativeZero>},
        {"bit 2", {{{kMask, "4"}}}, runModel<kRezone>},
        {"octal", {{{kMask, "010"}}}, runModel<kKeepTail>},
        {"no trace", {{{kMask, "0x10F"}}}, runModel<0x0F>},
        {"letters", {{{kMask, "0x84"}}}, runModel<kLetters | kRezone>},
        {"without validation", {{{kMask, "0x8F"}}}, runModel<0x8F>},
        {"with validation", {{{kMask, "0xD2"}}}, runModel<0xD2>},
        {"safe", {{{"COBOL_BCD_SAFE", "1"}}}, runModel<kSafe>},
        {"fast", {{{"COBOL_BCD_FAST", "1"}}}, runModel<kKeepTail>},
        {"overpunches", {{{"COBOL_BCD_EBCDIC", "1"}}}, runModel<kLetters>},
        {"safe overrules",
         {{{kMask, "0xFF"}, {"COBOL_BCD_SAFE", "1"}}},
         runModel<kLetters | kSafe>},
        {"fast overrules",
         {{{kMask, "0xFF"}, {"COBOL_BCD_FAST", "1"}}},
         runModel<kLetters | kKeepTail>},
        {"fast over safe",
         {{{"COBOL_BCD_SAFE", "1"}, {"COBOL_BCD_FAST", "1"}}},
         runModel<kKeepTail>},
    });
}

// Where the first byte carries no sign, a zero digit there is a leading zero, and another counts as
// a digit of any form only when it makes a pair with its neighbour.
TEST(DecimalMoves, FirstBytesThatAreNoDigits) {
    for (const auto &[source, packed] : {std::pair("P1", "00001c"), std::pair("Q2", "00012c"),
                                         std::pair("{1", "000b1c"), std::pair("Q23", "00823c")}) {
        for (const auto convert : {_zorcBCD_CONV_ZndTO_To_Pckd, _zorcBCD_CONV_ZndUS_To_Pckd}) {
            uint8_t target[3];
            convert(reinterpret_cast<const uint8_t *>(source), target, 5,
                    static_cast<int32_t>(strlen(source)));
            EXPECT_EQ(kit::hex(target, sizeof target), packed) << source;
        }
    }
}

} // namespace

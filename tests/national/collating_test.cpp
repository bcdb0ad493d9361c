// Collating tables, and comparisons of native, national and double-byte data.
#include <algorithm>
#include <clocale>
#include <thread>

#include "collating.h"
#include "national.h"
#include "national/locales.h"
#include "text/statement_kit.h"

namespace {

int sign(int value) {
    return (value > 0) - (value < 0);
}

// An operand as the rules have it where the other one is longer: repeated where it is a constant,
// otherwise padded.
std::string broughtTo(const std::string &text, std::size_t length, bool constant) {
    return moved(text, std::max(length, text.size()), false, constant ? text : " ");
}

TEST(Collating, ComparesWithPaddingAndWithConstants) {
    Random random(3);
    const uint8_t *const table = programWithWeights().collatingWeights;
    const auto someText = [&](std::size_t length) {
        std::string text(length, ' ');
        for (char &c : text) { // below the blank, with its weight, and above it
            c = "\x1E !a"[random.below(4)];
        }
        return text;
    };
    for (int trial = 0; trial < 20000; ++trial) {
        const bool isConstant = random.oneIn(2), otherIsConstant = random.oneIn(2);
        const std::string constant = someText(1 + random.below(random.oneIn(2) ? 3 : 20));
        std::string data = broughtTo(constant, random.below(24), random.oneIn(2));
        if (random.oneIn(8)) {
            data = someText(otherIsConstant ? 1 + random.below(20) : random.below(20));
        } else if (!random.oneIn(3)) {
            data[random.below(data.size())] = "`\xff"[random.below(2)];
        }
        const auto weights = [&](const std::string &text, std::size_t length, bool repeats) {
            std::string made = broughtTo(text, length, repeats);
            if (isConstant != otherIsConstant) { // a longer constant is cut to the item
                made.resize(repeats ? length : text.size());
            }
            std::transform(made.begin(), made.end(), made.begin(), weightOf);
            return made;
        };
        const int expected = sign(weights(data, constant.size(), otherIsConstant)
                                      .compare(weights(constant, data.size(), isConstant)));
        const int32_t length = lengthOf(constant) * (isConstant ? -1 : 1);
        const int32_t otherLength = lengthOf(data) * (otherIsConstant ? -1 : 1);
        const void *const left = data.data(), *const right = constant.data();
        ASSERT_EQ(_zorcCmpACS(left, otherLength, right, length, table), expected) << data;
        ASSERT_EQ(_zorcCmpACS(right, length, left, otherLength, table), -expected) << data;
        const std::string copies = broughtTo(constant, data.size(), true).substr(0, data.size());
        ASSERT_EQ(sign(_zorcCmpMultiByteFig(left, lengthOf(data), right, lengthOf(constant))),
                  sign(data.compare(copies)));
        ASSERT_EQ(_zorcCmpToPad(left, static_cast<uint8_t>(constant[0]), lengthOf(data)),
                  sign(data.compare(std::string(data.size(), constant[0]))));
    }
    EXPECT_EQ(_zorcCmpMultiByteFig("b", -1, "a", 1), 0);
    EXPECT_EQ(_zorcCmpMultiByteFig("b", 1, "a", 0), 0);
    EXPECT_EQ(_zorcCmpToPad("b", 'a', -1), 0);
}

// Shows whether the order is that of the letters, which "C" has not, and that nothing else changes.
void localeOrder() {
    PCB pcb{};
    PCB other{};
    const std::string before = setlocale(LC_ALL, nullptr);
    std::thread racing([&] { _zorcCollSeq(&other); });
    _zorcCollSeq(&pcb);
    racing.join();
    EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
    EXPECT_EQ(pcb.collatingWeights, other.collatingWeights);
    const uint8_t *const weights = pcb.collatingWeights;
    for (unsigned rank = 0; rank < 256; ++rank) {
        EXPECT_EQ(weights[pcb.collatingOrder[rank]], rank);
    }
    const auto rises = [=](const std::string &bytes) {
        return std::ranges::is_sorted(bytes, {}, [=](unsigned char c) { return weights[c]; });
    };
    // Letters of one kind, like "a" and "A", change places with what stands behind them.
    printf("%d%d", rises("019aBcDxYz"), rises("09ABZabz"));
}

TEST(Collating, HasTheOrderOfTheLocale) {
    for (const auto &[locale, expected] : {std::pair{"C", "01"},
                                           {"de_DE.ISO-8859-1", "10"},
                                           {"C.UTF-8", "10"},
                                           {"en_US.UTF-8", "10"}}) {
        EXPECT_EQ(kit::runChild(localeOrder, locales::in(locale)).out, expected);
    }
    // Nothing stands in for the order of single bytes.
    EXPECT_EQ(kit::runChild(localeOrder).out, "01");
}

void ebcdicTables() {
    PCB pcb{};
    _zorcEBCDIC(&pcb);
    _zorcEBCDIC(&pcb);
    EXPECT_NE(pcb.ebcdicTable, pcb.ebcdicTable2);
    EXPECT_EQ(memcmp(pcb.ebcdicTable, pcb.ebcdicTable2, 256), 0);
    for (unsigned i = 0; i < 256; ++i) {
        uint8_t bytes[8] = {static_cast<uint8_t>(i)};
        int32_t left = 7;
        EXPECT_EQ(_zorUniEtoA(bytes, 1, bytes + 1, &left), 0);
        // A shift gives no byte, a character that the native code page has not gives more.
        EXPECT_EQ(pcb.ebcdicTable[i], left == 7 ? i : left == 6 ? bytes[1] : 0x1AU) << i;
    }
    printf("%s", kit::hex(pcb.ebcdicTable + 0xC0, 3).c_str());
}

TEST(Collating, HasEbcdicTables) {
    const std::string failed =
        "ZOR222W  A conversion between code pages failed: status 15.\n\n"
        "ZOR230W  The conversion tables of the EBCDIC code page cannot be built. Comparisons in "
        "EBCDIC order are not reliable.\n\n";
    kit::expectChildren(
        {{"one byte", {locales::in("de_DE.ISO-8859-1"), "e44142"}, ebcdicTables},
         {"Turkish", {locales::in("tr_TR.ISO-8859-9", "QBX-1026"), "e74142"}, ebcdicTables},
         {"UTF-8", {locales::in("en_US.UTF-8"), "7b4142", failed}, ebcdicTables},
         {"mixed", {locales::in("ja_JP.UTF-8"), "7b4142", failed}, ebcdicTables}});
}

// Texts and their ranks, those of equal ones the same.
template <class Text> using Ranked = std::vector<std::pair<Text, int>>;

template <class Text> void expectOrder(decltype(&_zorcDBCSCmp) compare, const Ranked<Text> &texts) {
    for (const auto &[text, rank] : texts) {
        for (const auto &[other, otherRank] : texts) {
            EXPECT_EQ(sign(compare(text.data(), lengthOf(text), other.data(), lengthOf(other))),
                      sign(rank - otherRank))
                << "of ranks " << rank << " and " << otherRank;
        }
    }
}

CHILD_TEST(Collating, ComparesDoubleByteData, locales::in("ja_JP.SHIFT_JIS")) {
    expectOrder(_zorcDBCSCmp, Ranked<std::string>{{"", 0},
                                                  {"\x81\x40", 0},
                                                  {"\x82\xa0", 1},
                                                  {"\x82\xa0\x81\x40", 1},
                                                  {"\x82\xa2", 2},
                                                  {"\x82\xa2\x82\xa0", 3},
                                                  {"\x83\x41", 4}});
    std::string repeated;
    for (int i = 0; i < 150; ++i) { // past what is compared on the stack
        repeated += i % 2 == 0 ? "\x82\xa0" : "\x82\xa2";
        const int32_t length = lengthOf(repeated);
        EXPECT_EQ(_zorcDBCSCmpMultiByteFig(repeated.data(), length, "\x82\xa0\x82\xa2", 4), 0);
        EXPECT_LT(_zorcDBCSCmpMultiByteFig(repeated.data(), length, "\x82\xa2\x82\xa0", 4), 0);
        EXPECT_GT(_zorcDBCSCmp(repeated.data(), length, repeated.data(), length - 2), 0);
    }
    EXPECT_EQ(_zorcDBCSCmpMultiByteFig("\x82\xa0", -2, "\x82\xa2", 2), 0);
}

CHILD_TEST(NationalText, ComparesInTheOrderOfTheLocale, locales::in("de_DE.ISO-8859-1")) {
    expectOrder(_zorCompareUnicode, Ranked<std::u16string>{{u"", 0},
                                                           {u" ", 1},
                                                           {u"   ", 1},
                                                           {u"a", 2},
                                                           {u"A", 3},
                                                           {u"A   ", 3},
                                                           {u"ä", 4},
                                                           {u"a\u0308", 4},
                                                           {u"a b", 5},
                                                           {u"ab", 6},
                                                           {u"Äpfel", 7},
                                                           {u"b", 8},
                                                           {u"B", 9},
                                                           {u"Zebra", 10}});
}

} // namespace

// Collating tables, comparisons through them and against constants, and double-byte data.
#include <algorithm>
#include <clocale>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>

#include "collating.h"
#include "national.h"
#include "national/locales.h"
#include "support/kit.h"

namespace {

using Table = std::array<uint8_t, 256>;

int sign(int value) {
    return (value > 0) - (value < 0);
}

// An operand as the rules have it: repeated or cut where it is a constant, padded where it is
// shorter.
std::string broughtTo(const std::string &text, std::size_t length, bool constant) {
    std::string result = text;
    while (result.size() < length) {
        result += constant ? text : " ";
    }
    return constant ? result.substr(0, length) : result;
}

std::string randomText(std::minstd_rand &random, std::size_t least) {
    std::string text(least + random() % 20, ' ');
    std::generate(text.begin(), text.end(), [&] { return "aAb "[random() % 4]; });
    return text;
}

// Weights that make "a" and "A" equal and put the blank between them and "b".
Table foldedWeights() {
    Table table;
    std::iota(table.begin(), table.end(), uint8_t{0});
    table['a'] = table['A'] = 10;
    table[' '] = 11;
    table['b'] = 12;
    return table;
}

TEST(Collating, ComparesThroughATable) {
    const Table table = foldedWeights();
    std::minstd_rand random(3);
    for (int trial = 0; trial < 20000; ++trial) {
        const bool leftConstant = trial % 3 == 1;
        const bool rightConstant = trial % 3 == 2;
        const std::string left = randomText(random, leftConstant);
        std::string right = random() % 2 == 0 ? left : randomText(random, 1);
        right.resize(right.size() + (right.empty() || random() % 2 == 0 ? 3 : 0), ' ');
        const std::size_t length = leftConstant    ? right.size()
                                   : rightConstant ? left.size()
                                                   : std::max(left.size(), right.size());
        std::string leftModel = broughtTo(left, length, leftConstant);
        std::string rightModel = broughtTo(right, length, rightConstant);
        for (std::string *model : {&leftModel, &rightModel}) {
            std::transform(model->begin(), model->end(), model->begin(),
                           [&](unsigned char c) { return static_cast<char>(table[c]); });
        }
        const auto leftLength = static_cast<int32_t>(left.size()) * (leftConstant ? -1 : 1);
        const auto rightLength = static_cast<int32_t>(right.size()) * (rightConstant ? -1 : 1);
        ASSERT_EQ(_zorcCmpACS(left.data(), leftLength, right.data(), rightLength, table.data()),
                  sign(leftModel.compare(rightModel)))
            << '"' << left << "\" " << leftLength << " \"" << right << "\" " << rightLength;
    }
}

TEST(Collating, ComparesWithConstants) {
    std::minstd_rand random(5);
    for (int trial = 0; trial < 20000; ++trial) {
        const std::string literal = trial % 2 == 0 ? "a" : randomText(random, 1);
        const std::size_t length = random() % 24;
        std::string data = broughtTo(literal, length, true);
        if (length > 0 && random() % 3 != 0) {
            data[random() % length] = "A\xff"[random() % 2];
        }
        const auto bytes = static_cast<int32_t>(length);
        const int expected =
            sign(memcmp(data.data(), broughtTo(literal, length, true).data(), length));
        ASSERT_EQ(sign(_zorcCmpMultiByteFig(data.data(), bytes, literal.data(),
                                            static_cast<int32_t>(literal.size()))),
                  expected);
        if (literal == "a") {
            ASSERT_EQ(_zorcCmpToPad(data.data(), 'a', bytes), expected);
        }
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
    for (unsigned rank = 0; rank < 256; ++rank) {
        EXPECT_EQ(pcb.collatingWeights[pcb.collatingOrder[rank]], rank);
    }
    const uint8_t *weights = pcb.collatingWeights;
    const auto rises = [=](const std::string &bytes) {
        return std::is_sorted(bytes.begin(), bytes.end(), [=](unsigned char a, unsigned char b) {
            return weights[a] < weights[b];
        });
    };
    // Letters of one kind, like "a" and "A", change places with what stands behind them.
    printf("%d%d", rises("019aBcDxYz"), rises("09ABZabz"));
}

TEST(Collating, HasTheOrderOfTheLocale) {
    for (const auto &[locale, expected] :
         {std::pair{"C", "01"}, {"de_DE.ISO-8859-1", "10"}, {"en_US.UTF-8", "10"}}) {
        const auto child = kit::runChild(localeOrder, locales::in(locale));
        EXPECT_EQ(child.out, expected); // the race may show on stderr
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
        const auto byte = static_cast<uint8_t>(i);
        char native[8] = {};
        int32_t left = sizeof native;
        EXPECT_EQ(_zorUniEtoA(&byte, 1, native, &left), 0);
        const bool shift = left == sizeof native;
        const bool single = left == sizeof native - 1;
        EXPECT_EQ(pcb.ebcdicTable[i], shift    ? byte
                                      : single ? static_cast<uint8_t>(native[0])
                                               : 0x1A)
            << i;
    }
    printf("%s", kit::hex(pcb.ebcdicTable + 0xC0, 3).c_str());
}

TEST(Collating, HasEbcdicTables) {
    const std::string failed =
        "ZOR222W  A conversion between code pages failed: status 15.\n\n"
        "ZOR230W  The conversion tables of the EBCDIC code page cannot be built. Comparisons in "
        "EBCDIC order are not reliable.\n\n";
    const struct {
        const char *locale;
        const char *ebcdic;
        const char *expected;
        std::string err = {};
    } cases[] = {{"de_DE.ISO-8859-1", "", "e44142"},
                 {"tr_TR.ISO-8859-9", "QBX-1026", "e74142"},
                 {"en_US.UTF-8", "", "7b4142", failed},
                 {"ja_JP.UTF-8", "", "7b4142", failed}};
    for (const auto &[locale, ebcdic, expected, err] : cases) {
        kit::expectChild({locales::in(locale, ebcdic), expected, err}, ebcdicTables);
    }
}

void doubleByteCompares() {
    const struct {
        const char *left;
        const char *right;
        int expected;
    } cases[] = {{"\x82\xa0", "\x82\xa0\x81\x40", 0},
                 {"\x82\xa0\x81\x40", "\x82\xa0", 0},
                 {"\x82\xa0", "\x82\xa2", -1},
                 {"\x82\xa2\x82\xa0", "\x82\xa2", 1},
                 {"", "", 0},
                 {"\x83\x41", "\x82\xa0", 1}};
    for (const auto &[left, right, expected] : cases) {
        EXPECT_EQ(sign(_zorcDBCSCmp(left, static_cast<int32_t>(strlen(left)), right,
                                    static_cast<int32_t>(strlen(right)))),
                  expected);
    }
    std::string repeated;
    for (int i = 0; i < 150; ++i) { // past what is compared on the stack
        repeated += i % 2 == 0 ? "\x82\xa0" : "\x82\xa2";
        const auto length = static_cast<int32_t>(repeated.size());
        EXPECT_EQ(_zorcDBCSCmpMultiByteFig(repeated.data(), length, "\x82\xa0\x82\xa2", 4), 0);
        EXPECT_LT(_zorcDBCSCmpMultiByteFig(repeated.data(), length, "\x82\xa2\x82\xa0", 4), 0);
        EXPECT_GT(_zorcDBCSCmp(repeated.data(), length, repeated.data(), length - 2), 0);
    }
    EXPECT_EQ(_zorcDBCSCmpMultiByteFig("\x82\xa0", -2, "\x82\xa2", 2), 0);
}

TEST(Collating, ComparesDoubleByteData) {
    kit::expectChild({.environment = locales::in("ja_JP.SHIFT_JIS")}, doubleByteCompares);
}

void doubleByteMoves() {
    const struct {
        int32_t target;
        int32_t source;
        const char *expected;
    } cases[] = {{6, 2, "ab\x81\x40\x81\x40"},
                 {-6, 2,
                  "\x81\x40\x81\x40"
                  "ab"},
                 {6, -2, "ab@@@@"},
                 {-6, -2, "@@@@ab"},
                 {2, 4, "ab"},
                 {-2, 4, "ab"},
                 {5, 2, "ab\x81\x40\x81"},
                 {4, 4, "abcd"}};
    for (const auto &[target, source, expected] : cases) {
        // From the place itself, and from one byte above it.
        for (const std::size_t distance : {0U, 1U}) {
            std::string area = std::string(distance, '#') + "abcd#####";
            _zorcDBCSMoveVarLenOverlap(area.data(), target, area.data() + distance, source);
            EXPECT_EQ(area.substr(0, static_cast<std::size_t>(std::abs(target))), expected);
        }
        std::string area(strlen(expected) + 1, '#');
        _zorcDBCSMoveVarLenOverlap(area.data(), target, "abcd", source);
        EXPECT_EQ(area, expected + std::string("#"));
    }
}

TEST(Collating, MovesDoubleByteData) {
    kit::expectChild({.environment = locales::in("ja_JP.UTF-8")}, doubleByteMoves);
}

} // namespace

// Collating tables, comparisons through them and against constants, and double-byte data.
#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <numeric>
#include <random>
#include <thread>

#include "collating.h"
#include "national.h"
#include "national/locales.h"

namespace {

int sign(int value) {
    return (value > 0) - (value < 0);
}

int32_t lengthOf(const std::string &text) {
    return static_cast<int32_t>(text.size());
}

// An operand as the rules have it where the other one is longer: repeated where it is a constant,
// otherwise padded.
std::string broughtTo(const std::string &text, std::size_t length, bool constant) {
    std::string result = text;
    while (result.size() < length) {
        result += constant ? text : " ";
    }
    return result.substr(0, std::max(length, text.size()));
}

std::string randomText(std::minstd_rand &random, std::size_t least) {
    std::string text(least + random() % 20, ' ');
    std::generate(text.begin(), text.end(), [&] { return "aAb "[random() % 4]; });
    return text;
}

TEST(Collating, ComparesThroughATable) {
    // Weights that make "a" and "A" equal and put the blank between them and "b".
    std::array<uint8_t, 256> table;
    std::iota(table.begin(), table.end(), uint8_t{0});
    table['a'] = table['A'] = 10;
    table[' '] = 11;
    table['b'] = 12;
    std::minstd_rand random(3);
    for (int trial = 0; trial < 20000; ++trial) {
        const bool leftConstant = trial % 2 != 0;
        const bool rightConstant = trial % 4 >= 2;
        const std::string left = randomText(random, leftConstant);
        std::string right = random() % 2 == 0 ? left : randomText(random, 1);
        right.resize(right.size() + (right.empty() || random() % 2 == 0 ? 3 : 0), ' ');
        const std::size_t length = std::max(left.size(), right.size());
        const auto model = [&](const std::string &text, bool constant) {
            std::string weights = broughtTo(text, length, constant);
            for (char &c : weights) {
                c = static_cast<char>(table[static_cast<unsigned char>(c)]);
            }
            return weights;
        };
        const int32_t leftLength = lengthOf(left) * (leftConstant ? -1 : 1);
        const int32_t rightLength = lengthOf(right) * (rightConstant ? -1 : 1);
        ASSERT_EQ(_zorcCmpACS(left.data(), leftLength, right.data(), rightLength, table.data()),
                  sign(model(left, leftConstant).compare(model(right, rightConstant))))
            << '"' << left << "\" " << leftLength << " \"" << right << "\" " << rightLength;
    }
}

TEST(Collating, ComparesWithConstants) {
    std::minstd_rand random(5);
    for (int trial = 0; trial < 20000; ++trial) {
        const std::string literal = trial % 2 == 0 ? "a" : randomText(random, 1);
        const std::size_t length = random() % 24;
        const std::string constant = broughtTo(literal, length, true).substr(0, length);
        std::string data = constant;
        if (length > 0 && random() % 3 != 0) {
            data[random() % length] = "A\xff"[random() % 2];
        }
        const int expected = sign(data.compare(constant));
        ASSERT_EQ(sign(_zorcCmpMultiByteFig(data.data(), lengthOf(data), literal.data(),
                                            lengthOf(literal))),
                  expected);
        if (literal == "a") {
            ASSERT_EQ(_zorcCmpToPad(data.data(), 'a', lengthOf(data)), expected);
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

CHILD_TEST(Collating, ComparesDoubleByteData, locales::in("ja_JP.SHIFT_JIS")) {
    const struct {
        std::string left;
        std::string right;
        int expected;
    } cases[] = {{"\x82\xa0", "\x82\xa0\x81\x40", 0}, {"\x82\xa0\x81\x40", "\x82\xa0", 0},
                 {"\x82\xa0", "\x82\xa2", -1},        {"", "", 0},
                 {"\x82\xa2\x82\xa0", "\x82\xa2", 1}, {"\x83\x41", "\x82\xa0", 1}};
    for (const auto &[left, right, expected] : cases) {
        EXPECT_EQ(sign(_zorcDBCSCmp(left.data(), lengthOf(left), right.data(), lengthOf(right))),
                  expected);
    }
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

CHILD_TEST(Collating, MovesDoubleByteData, locales::in("ja_JP.UTF-8")) {
    const struct {
        int32_t target;
        int32_t source;
        std::string expected; // "?!" stands for the blank
    } cases[] = {{6, 2, "ab?!?!"}, {-6, 2, "?!?!ab"}, {6, -2, "ab@@@@"}, {-6, -2, "@@@@ab"},
                 {2, 4, "ab"},     {-2, 4, "ab"},     {5, 2, "ab?!?"},   {4, 4, "abcd"}};
    for (auto [target, source, expected] : cases) {
        std::replace(expected.begin(), expected.end(), '?', '\x81');
        std::replace(expected.begin(), expected.end(), '!', '\x40');
        // From the place itself, from one byte above it, and from elsewhere.
        for (const std::size_t distance : {0U, 1U, 9U}) {
            std::string area = std::string(distance, '#') + "abcd#####";
            const std::string rest = area.substr(expected.size());
            _zorcDBCSMoveVarLenOverlap(area.data(), target, &area[distance], source);
            EXPECT_EQ(area, expected + rest);
        }
    }
}

} // namespace

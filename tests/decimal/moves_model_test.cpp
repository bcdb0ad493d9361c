// The family of decimal moves against a plain model: random items of all forms under every switch
// that changes a result, at the edges of readable storage and with overlapping operands.
#include <cstdlib>
#include <random>
#include <sys/mman.h>
#include <unistd.h>

#include "moves_model.h"
#include "support/kit.h"

namespace {

using namespace moves;

#if defined(__SANITIZE_ADDRESS__)
constexpr int kCases = 60'000; // of each setting
#else
constexpr int kCases = 150'000;
#endif

std::mt19937 random32(1959);
int below(int limit) {
    return static_cast<int>(random32() % static_cast<unsigned>(limit));
}
bool oneIn(int count) {
    return below(count) == 0;
}

// A page between two that cannot be touched; items stand at its very ends.
class Page {
public:
    Page() {
        auto *mapped = static_cast<uint8_t *>(
            mmap(nullptr, 3 * kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(mapped + kSize, kSize, PROT_READ | PROT_WRITE);
        bytes_ = mapped + kSize;
        memset(bytes_, 0xEE, kSize);
    }
    uint8_t *room(int32_t bytes) { return oneIn(2) ? bytes_ : bytes_ + kSize - bytes; }
    uint8_t *middle() { return bytes_ + kSize / 2; }
    // The bytes up to 32 before and behind an item.
    std::pair<uint8_t *, uint8_t *> around(uint8_t *item, int32_t bytes) {
        return {std::max(bytes_, item - 32), std::min(bytes_ + kSize, item + bytes + 32)};
    }

private:
    static constexpr int32_t kSize = 4096;
    uint8_t *bytes_;
};

// Whether items are bytes of no meaning, of which no result is foretold.
const bool garbage = parameter("MOVES_GARBAGE") != 0;

int32_t randomCount() {
    if (garbage && oneIn(50)) {
        return 1 + below(1000);
    }
    return 1 + (oneIn(10) ? below(126) : oneIn(4) ? below(40) : below(19));
}

Bytes randomDigits(int32_t count) {
    Bytes digits(static_cast<size_t>(count), '0');
    const int shape = below(10);
    for (int32_t at = shape < 7 ? below(count + 1) : 0; at < count; ++at) {
        digits[static_cast<size_t>(at)] = static_cast<uint8_t>('0' + (shape == 0   ? 0
                                                                      : shape == 1 ? 9
                                                                      : shape == 2 ? 4 + below(2)
                                                                                   : below(10)));
    }
    return digits;
}

// Any byte that stands for a digit and a sign. Blank and null stand for zero.
uint8_t randomCarrier(int digit, bool negative) {
    const auto zone = [digit](int high) { return static_cast<uint8_t>(high << 4 | digit); };
    switch (below(8)) {
    case 0:
        return zone(negative ? 0xD : 0xC);
    case 1:
        return negative ? zone(0x7) : zone(0xF);
    case 2:
        return write(Znd, Bytes(1, zone(3)), negative, true)[0];
    case 3:
        return digit == 0 && !negative ? (oneIn(2) ? ' ' : 0x00) : zone(negative ? 0x7 : 0x3);
    default:
        return zone(negative ? 0x7 : 0x3);
    }
}

// An item of these digits in one of the ways in which data comes. odd allows leading zeros that are
// no "0".
Bytes randomItem(Form form, Bytes digits, bool negative, unsigned options, bool odd) {
    if (garbage) {
        Bytes bytes = write(form, digits, true);
        for (uint8_t &byte : bytes) { // a separate sign stays, for it is looked at unasked
            byte = separate(form) && byte == '-' ? byte : static_cast<uint8_t>(random32());
        }
        return bytes;
    }
    if (odd && form != Pckd && oneIn(16)) {
        for (size_t at = 0; at + 1 < digits.size() && digits[at] == '0'; ++at) {
            const bool strict = (options & kValidateMoves) != 0; // then a null passes in front only
            const bool mayBeBlank = !strict && (options & kNoValidate) != 0;
            digits[at] = oneIn(2) || (strict && at > 0) ? '0'
                         : mayBeBlank && oneIn(2)       ? 0x20
                                                        : 0x00;
        }
    }
    Bytes bytes = write(form, digits, negative);
    if (form == Pckd) {
        constexpr uint8_t kSigns[2][4] = {{0xA, 0xC, 0xE, 0xF}, {0xD, 0xB, 0xD, 0xD}};
        if (oneIn(3)) {
            bytes.back() = static_cast<uint8_t>((bytes.back() & 0xF0) | kSigns[negative][below(4)]);
        }
        if (digits.size() % 2 == 0 && oneIn(16)) {
            bytes[0] = static_cast<uint8_t>((bytes[0] & 0x0F) | below(10) << 4);
        }
    } else if (overpunched(form)) {
        const bool front = form == ZndLO;
        (front ? bytes.front() : bytes.back()) =
            randomCarrier(digitOf(front ? digits.front() : digits.back()), negative);
    } else if (oneIn(32)) { // a sign where there should be none
        bytes[digits.size() - (form == ZndLS ? 0 : 1)] =
            randomCarrier(digitOf(digits.back()), oneIn(2));
    }
    return bytes;
}

int mismatches = 0;

void report(const Function &f, const Bytes &source, int32_t sourceDigits, int32_t targetDigits,
            int32_t shift, const std::string &wanted, const std::string &got) {
    printf("%s source %s %d target %d shift %d\n  wanted %s\n  got    %s\n", f.name,
           kit::hex(source.data(), source.size()).c_str(), sourceDigits, targetDigits, shift,
           wanted.c_str(), got.c_str());
    if (++mismatches == 5) {
        exit(1);
    }
}

void checkRelation(const Function &f, unsigned options, Page &page1, Page &page2) {
    const int32_t digits1 = randomCount();
    int32_t digits2 = oneIn(2) ? digits1 : randomCount();
    Bytes value1 = randomDigits(digits1);
    Bytes value2 = randomDigits(digits2);
    if (oneIn(2)) { // nearly the same
        value2 = fit(value1, digits2);
        if (oneIn(2)) {
            value2[static_cast<size_t>(below(digits2))] = static_cast<uint8_t>('0' + below(10));
        }
    }
    const bool negative1 = oneIn(2);
    const bool negative2 = oneIn(3) ? !negative1 : negative1;
    const Bytes item1 = randomItem(f.from, value1, negative1, options, false);
    const Bytes item2 = randomItem(f.from, value2, negative2, options, false);
    uint8_t *room1 = page1.room(static_cast<int32_t>(item1.size()));
    uint8_t *room2 = page2.room(static_cast<int32_t>(item2.size()));
    memcpy(room1, item1.data(), item1.size());
    memcpy(room2, item2.data(), item2.size());
    const Item read1 = read(f.from, room1, digits1);
    int32_t wanted = 0;
    int32_t got = 0;
    if (f.kind == Kind::isZero) {
        wanted = zero(read1.digits);
        got = reinterpret_cast<ZeroTest>(f.address)(room1, digits1);
    } else {
        wanted = related(f.name, orderOf(read1, read(f.from, room2, digits2)));
        got = reinterpret_cast<Relation>(f.address)(room1, room2, digits2, digits1);
    }
    if (got != wanted && !garbage) {
        report(f, item1 + item2, digits1, digits2, 0, std::to_string(wanted), std::to_string(got));
    }
}

void checkMove(const Function &f, unsigned options, Page &page1, Page &page2) {
    int32_t sourceDigits = randomCount();
    const int32_t targetDigits = oneIn(3) ? sourceDigits : randomCount();
    const int32_t shift = garbage && oneIn(20) ? INT32_MAX - below(3)
                          : oneIn(8)           ? below(140)
                                               : below(1 + sourceDigits + oneIn(2));
    Bytes item = randomItem(f.from, randomDigits(sourceDigits), oneIn(2), options, true);
    if (f.from == ZndUS && f.to == Pckd && oneIn(4)) {
        constexpr uint8_t kStray[] = {'+', '-', ' '};
        if (oneIn(2)) {
            item.insert(item.begin(), kStray[below(3)]);
        }
        if (oneIn(2)) {
            item.push_back(kStray[below(2)]);
        }
        sourceDigits = static_cast<int32_t>(item.size());
    }
    const int32_t targetBytes = bytesOf(f.to, targetDigits);
    const bool overlaps = oneIn(4);
    Page &targetPage = overlaps ? page1 : page2;
    uint8_t *source = overlaps ? page1.middle() : page1.room(static_cast<int32_t>(item.size()));
    uint8_t *target = !overlaps  ? page2.room(targetBytes)
                      : oneIn(3) ? source
                                 : page1.middle() + below(128) - 64;
    const auto [from, to] = targetPage.around(target, targetBytes);
    memset(from, 0xEE, static_cast<size_t>(to - from));
    memcpy(source, item.data(), item.size());
    Bytes wanted(from, to);
    Bytes result;
    if (!garbage) {
        result = expected(f, options, source, sourceDigits, targetDigits, shift);
    }
    const uint8_t *returned =
        reinterpret_cast<Move>(f.address)(source, target, targetDigits, sourceDigits, shift);
    if (garbage) {
        result.assign(target, static_cast<size_t>(targetBytes));
    }
    wanted.replace(static_cast<size_t>(target - from), result.size(), result);
    const Bytes got(from, to);
    if (got != wanted || returned != target) {
        report(f, item, sourceDigits, targetDigits, shift, kit::hex(wanted.data(), wanted.size()),
               kit::hex(got.data(), got.size()));
    }
}

// The word of switches comes from the parent, which knows what the environment means.
void runModel() {
    const unsigned options = parameter("MOVES_OPTIONS");
    Page page1;
    Page page2;
    for (int i = 0; i < kCases; ++i) {
        const Function &f = kFunctions[below(std::size(kFunctions))];
        if (f.kind == Kind::relation || f.kind == Kind::isZero) {
            checkRelation(f, options, page1, page2);
        } else {
            checkMove(f, options, page1, page2);
        }
    }
}

struct Setting {
    kit::Environment environment;
    unsigned options;
};

TEST(DecimalMoves, AgreeWithTheModel) {
    const Setting settings[] = {
        {{}, 0},
        {{{"COBOL_BCD_NOVALIDATE", "1"}}, 0x01},
        {{{"COBOL_BCD_NOVALIDATE", "2"}}, 0x02},
        {{{"COBOL_BCD_NOVALIDATE", "4"}}, 0x04},
        {{{"COBOL_BCD_NOVALIDATE", "0xF"}}, 0x0F},
        {{{"COBOL_BCD_SAFE", "1"}}, 0x54},
        {{{"COBOL_BCD_FAST", "1"}}, 0x08},
        {{{"COBOL_BCD_EBCDIC", "1"}}, 0x80},
        {{{"COBOL_BCD_EBCDIC", "1"}, {"COBOL_BCD_NOVALIDATE", "0x52"}}, 0xD2},
        {{{"COBOL_BCD_EBCDIC", "1"}, {"COBOL_BCD_NOVALIDATE", "0x04"}}, 0x84},
    };
    for (const Setting &setting : settings) {
        kit::Environment environment = setting.environment;
        environment.emplace_back("MOVES_OPTIONS", std::to_string(setting.options));
        const kit::ChildResult result = kit::runChild(runModel, environment);
        EXPECT_EQ(result.status, 0) << "options " << setting.options;
        EXPECT_EQ(result.out, "") << "options " << setting.options;
        EXPECT_EQ(result.err, "") << "options " << setting.options;
    }
}

// Bytes of no meaning must do no harm; the pages show a byte read or written outside.
TEST(DecimalMoves, GarbageDoesNoHarm) {
    for (const char *options : {"1", "0x8F"}) {
        const kit::ChildResult result = kit::runChild(
            runModel, kit::Environment{{"COBOL_BCD_NOVALIDATE", options}, {"MOVES_GARBAGE", "1"}});
        EXPECT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_EQ(result.out, "");
    }
}

} // namespace

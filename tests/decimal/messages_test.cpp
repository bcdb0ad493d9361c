// The messages about bad data, of a catalogue in which they only warn: the call goes on with the
// bytes as they stand. A body writes on stdout what is to come on stderr.
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "arithmetic_model.h"
#include "decimal_convert.h"
#include "moves_model.h"
#include "support/kit.h"

namespace {

using namespace model;

constexpr int kRounds = 60'000;

// ---- the rules of validation

// The forms in which a digit carries a sign.
bool carriesSign(int byte) {
    const int zone = byte >> 4 & 0x0F;
    const bool hasZone = zone == 0x3 || zone == 0x7 || zone == 0xC || zone == 0xD || zone == 0xF;
    return byte == 0x00 || byte == ' ' || isLetter(byte) || (hasZone && (byte & 0x0F) <= 9);
}

bool packedIsBad(std::string_view item, bool strict) {
    while (!strict && item.size() > 1 && item[0] == 0) {
        item.remove_prefix(1);
    }
    const int sign = item.back() & 0x0F;
    if (item.size() == 1 && sign == 0) {
        return false;
    }
    const auto digits = static_cast<int>(item.size()) * 2 - 1;
    const std::string text = decode(Pckd, std::string(item), digits).digits;
    return sign < 0xA || text.find_first_not_of("0123456789") != std::string::npos;
}

// Within a word only "0" to "9" pass; which bytes are within one follows the address.
bool zonedIsBad(std::string_view item, bool strict) {
    const char *start = item.data();
    const char *end = &item.back();
    while (!strict && start < end && (*start & 0x0F) == 0) {
        ++start;
    }
    bool isBad = !carriesSign(*end);
    for (const int width : {8, 4, 2, 1}) {
        const bool aligned = reinterpret_cast<uintptr_t>(end) % static_cast<unsigned>(width) == 0;
        while (aligned && end - start > (width == 1 ? 0 : width)) {
            for (int left = width; left > 0; --left) {
                --end;
                const bool passesAlone = *end == 0 || (end == item.data() && carriesSign(*end));
                const bool isDigit = *end >= '0' && *end <= '9';
                isBad = isBad || !(isDigit || (width == 1 && passesAlone));
            }
        }
    }
    return isBad;
}

bool isBad(Form form, std::string_view digits, Validation validation) {
    const bool strict = validation == Validation::strict;
    return validation != Validation::none && !digits.empty() &&
           (form == Pckd ? packedIsBad(digits, strict) : zonedIsBad(digits, strict));
}

// ---- calls

constexpr const char *kCatalogue = "$set 40\n1 1 sign\n$set 902\n1 1 zero\n$set 903\n1 1 bad\n";
constexpr const char *kSign = "ZOR040W  sign\n\n";
constexpr const char *kZero = "ZOR902W  zero\n\n";
constexpr const char *kBad = "ZOR903W  bad\n\n";

// What is to be called, and the messages that it is to issue.
void announce(const std::string &call, const std::string &messages) {
    fprintf(stderr, "%s\n", call.c_str());
    printf("%s\n%s", call.c_str(), messages.c_str());
}

// An item at random that is nearly valid: with at most two stray bytes.
std::string_view strayItem(Form form, int digits, Room &room, Random &random) {
    std::string item =
        random.item(form, random.digits(digits), random.oneIn(2), Validation::lenient);
    for (int strays = random.below(3); strays > 0; --strays) {
        const auto any = static_cast<size_t>(random.below(static_cast<int>(item.size())));
        char &byte = random.oneIn(3) ? item.front() : random.oneIn(3) ? item.back() : item[any];
        byte = static_cast<char>(random.oneIn(4) ? 0 : random.below(256));
    }
    return {reinterpret_cast<const char *>(room.put(item, random)), item.size()};
}

void callMove(unsigned options, Room (&rooms)[2], Random &random) {
    const Function &f = random.among(kMoves);
    const int digits = random.count(40);
    const std::string_view op1 = strayItem(f.from, digits, rooms[0], random);
    const std::string_view op2 = strayItem(f.from, digits, rooms[1], random);
    const Validation validation = validationOf(f, options);
    std::string messages;
    std::string_view read = op1;
    if (separate(f.from)) {
        const char sign = f.from == ZndLS ? op1.front() : op1.back();
        messages = testsSeparateSign(f, options) && sign != '+' && sign != '-' ? kSign : "";
        read = op1.substr(f.from == ZndLS ? 1 : 0, static_cast<size_t>(digits));
    } else if (f.from == ZndUS && f.to == Pckd) {
        read = withoutStraySigns(op1);
    }
    if (isBad(f.from, read, validation)) {
        const std::string shown = std::to_string(digits) + " 0x" + kit::hex(op1.data(), op1.size());
        const bool isShown = f.from == ZndUS && f.to == Pckd;
        messages += (isShown ? "Invalid zoned data " + shown + "\n" : "") + kBad;
    }
    if (f.kind == Kind::relation && isBad(f.from, op2, validation)) {
        messages += kBad;
    }
    announce(f.name, messages);
    uint8_t target[64];
    call(f, address(op1), digits, isRelation(f) ? address(op2) : target, digits, 1);
}

// Conversions to numbers, as operations of one item.
template <auto convert, auto... decs>
uint8_t *convertItem(const uint8_t *item, const uint8_t *, uint8_t *target, int32_t, int32_t,
                     int32_t digits) {
    convert(item, digits, decs...);
    return target;
}
constexpr Operation kConversions[] = {
    {"Pckd_To_Int4", Pckd, '=', convertItem<_zorcBCD_CONV_Pckd_To_Int4>, 32},
    {"Pckd_To_Uns8", Pckd, '=', convertItem<_zorcBCD_CONV_Pckd_To_Uns8>, 64},
    {"Znd_To_Int8", Znd, '=', convertItem<_zorcBCD_CONV_Znd_To_Int8>, 64},
    {"Pckd_To_LFlt", Pckd, '=', convertItem<_zorcBCD_CONV_Pckd_To_LFlt, 0>, 64},
    {"Pckd_To_SFlt", Pckd, '=', convertItem<_zorcBCD_CONV_Pckd_To_SFlt, 0>, 32},
    {"Pckd_To_DFlt", Pckd, '=', convertItem<_zorcBCD_CONV_Pckd_To_DFlt, 0>, 32},
    {"Znd_To_BFlt32", Znd, '=', convertItem<_zorcBCD_CONV_Znd_To_BFlt32, 0>, 32},
    {"Znd_To_DFlt128", Znd, '=', convertItem<_zorcBCD_CONV_Znd_To_DFlt128, 0>, 128},
};

void callOperation(unsigned options, Room (&rooms)[2], Random &random) {
    const Operation &f = random.oneIn(3)   ? random.among(kOperations)
                         : random.oneIn(2) ? random.among(kIncrements)
                                           : random.among(kConversions);
    const auto validation = (options & kNoValidate) == 0 ? Validation::lenient : Validation::none;
    const int digits1 = random.count(40);
    const int digits2 = random.oneIn(2) ? 1 : digits1;
    const std::string_view op1 = strayItem(f.form, digits1, rooms[0], random);
    const std::string_view op2 = strayItem(f.form, digits2, rooms[1], random);
    const int64_t value = random.below(2); // if nothing is to be added, the item is looked at too
    const bool divides = f.operation == '/' || f.operation == '%';
    std::string messages = isBad(f.form, op1, validation) ? kBad : "";
    messages += f.bits == 0 && isBad(f.form, op2, validation) ? kBad : "";
    messages += divides && valueOf(f.form, std::string(op2), digits2).isZero() ? kZero : "";
    announce(f.name, messages);
    uint8_t target[64];
    f.call(address(op1), f.bits == 0 ? address(op2) : reinterpret_cast<const uint8_t *>(&value),
           f.bits == 0 ? target : const_cast<uint8_t *>(address(op1)), digits1, digits2, digits1);
}

// What stray digits count for.
void convertStrays(const std::string &found) {
    announce("strays", found + found + found + found + found + found);
    fprintf(stderr, "%d %lld %g %g %s %s\n", _zorcBCD_CONV_Pckd_To_Int4(address(unhex("3a5c")), 3),
            static_cast<long long>(_zorcBCD_CONV_Znd_To_Int8(address("5:5"), 3)),
            _zorcBCD_CONV_Pckd_To_LFlt(address(unhex("3a5c")), 3, 0),
            _zorcBCD_CONV_Pckd_To_LFlt(address(unhex("00000000000000b6789c")), 19, 0),
            bitsOf(_zorcBCD_CONV_Pckd_To_DFlt64(address(unhex("012b4d")), 4, 0)).c_str(),
            bitsOf(_zorcBCD_CONV_Pckd_To_DFlt(address(unhex("b2345c")), 5, 0)).c_str());
    printf("305 605 305 100789 b1c00000000004b4 328187f9\n");
    announce("a letter in front", "");
    fprintf(stderr, "%s %s\n",
            bitsOf(_zorcBCD_CONV_Znd_To_DFlt32(address("J000000"), 7, 0)).c_str(),
            bitsOf(_zorcBCD_CONV_Znd_To_DFlt32(address("J000016"), 7, 0)).c_str());
    printf("330f4240 330f4242\n");
}

template <unsigned options> void callAll() {
    Room rooms[2];
    Random random(11);
    convertStrays((options & kNoValidate) == 0 ? kBad : "");
    for (int round = 0; round < kRounds; ++round) {
        random.oneIn(3) ? callOperation(options, rooms, random) : callMove(options, rooms, random);
    }
}

TEST(Messages, FollowTheSwitches) {
    const kit::TemporaryDirectory directory;
    kit::writeFile(directory.file("source.msg"), kCatalogue);
    const std::string command =
        "gencat " + directory.file("cobol2run.cat ") + directory.file("source.msg");
    ASSERT_EQ(std::system(command.c_str()), 0);
    const struct {
        const char *variable, *value;
        void (*body)();
    } settings[] = {
        {"COBOL_BCD_SAFE", "", callAll<0>},
        {"COBOL_BCD_SAFE", "1", callAll<kSafe>},
        {"COBOL_BCD_NOVALIDATE", "1", callAll<kNoValidate>},
    };
    for (const auto &[variable, value, body] : settings) {
        // The library's own catalogue comes first, but not under this locale's name.
        const auto [status, out, err] =
            kit::runChild(body, kit::Environment{{"LC_ALL", "C.UTF-8"},
                                                 {"NLSPATH", directory.path() + "/%N"},
                                                 {variable, value}});
        const auto same = std::mismatch(out.begin(), out.end(), err.begin(), err.end()).first;
        const auto at = static_cast<size_t>(same - out.begin());
        EXPECT_TRUE(out == err) << variable << " " << value << ": expected "
                                << out.substr(at < 80 ? 0 : at - 80, 160);
        EXPECT_EQ(status, 0);
    }
}

// The message of the library's own catalogue ends the run.
TEST(Messages, EndTheRun) {
    const auto result = kit::runChild([] { _zorcBCD_CONV_Pckd_To_Int4(address("\x12\x34"), 3); });
    EXPECT_NE(result.err.find("ZOR903S"), std::string::npos) << result.err;
    EXPECT_NE(result.status, 0);
}

} // namespace

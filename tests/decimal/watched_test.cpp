// Calls that are watched: the trace of a call, and the messages about bad data. A body writes on
// stdout what is to come on stderr.
#include <cstdio>
#include <cstdlib>
#include <regex>

#include "decimal/arithmetic_model.h"
#include "decimal/moves_model.h"
#include "decimal_convert.h"
#include "support/kit.h"

namespace {

using namespace model;

// ---- trace

// The line of an item.
std::string line(const char *label, const std::string &item, int digits,
                 const char *behind = ": ") {
    return label + ("@ " + std::to_string(digits)) + behind + kit::hex(item) + "\n";
}

void expectTrace(const std::string &header, const std::string &lines) {
    printf("%s...\n%s", header.c_str(), lines.c_str());
}

// The name of a function before the first "_", in small letters.
std::string verbOf(const char *name) {
    std::string verb(name, strcspn(name, "_"));
    std::transform(verb.begin(), verb.end(), verb.begin(), tolower);
    return verb;
}

void traceArithmetic() {
    uint8_t target[5];
    uint8_t remainder[2];
    for (const Operation &f : kOperations) {
        const std::string op1 = encode(f.form, "123", true);
        const std::string op2 = encode(f.form, "5", true);
        f.call(address(op1), address(op2), target, 5, 1, 3);
        if (f.form == Pckd || f.operation != '%') { // the zoned remainder has no trace
            const Value value = result(f.operation, {123, true}, {5, true});
            expectTrace(verbOf(f.name) + (f.form == Pckd ? " packed" : " zoned"),
                        line("op1: ", op1, 3) + line("op2: ", op2, 1) +
                            line("dst: ", stored(f.form, value, 5), 5));
        }
    }
    _zorcBCD_DIVR_Znd(address("12s"), address("u"), target, remainder, 2, 5, 1, 3); // nor this
    _zorcBCD_DIVR_Pckd(address("\x12\x3D"), address("\x5D"), target, remainder, 2, 5, 1, 3);
    expectTrace("div packed remainder", "op1: @ 3: 123d\nop2: @ 1: 5d\n"
                                        "dst: @ 5: 00024c\nrem: @ 2: 003d\n");
    _zorcBCD_DIVR_Pckd(address("\x5C"), address("\x3C"), nullptr, remainder, 1, 0, 1, 1);
    expectTrace("div packed remainder", "op1: @ 1: 5c\nop2: @ 1: 3c\n"
                                        "dst: (nil) 0: \nrem: @ 1: 2c\n");
    for (const Operation &f : kIncrements) {
        const int64_t minusOne = -1;
        const std::string item = encode(f.form, "99", false);
        const std::string sum = encode(f.form, f.operation == '+' ? "98" : "00", false);
        std::copy(item.begin(), item.end(), target);
        f.call(target, reinterpret_cast<const uint8_t *>(&minusOne), target, 2, 0, 2);
        const bool isOdd = f.name == std::string("ADD_Znd_Int4");
        expectTrace((f.operation == '+' ? "inc " : "dec ") +
                        std::string(f.form == Pckd ? "packed" : "zoned") + (isOdd ? "_" : "_int") +
                        std::to_string(f.bits),
                    line("op1: ", item, 2) + "op2: -1\n" + line("dst: ", sum, 2));
    }
}

void traceMoves() {
    const struct {
        std::string copy, shift, conversion;
    } labels[] = {{"packed ", "packed", "packed"},    {"zoned ", "zoned", "zonedto"},
                  {"zoned lo", "zonedlo", "zonedlo"}, {"zoned ts", "zonedts", "zonedts"},
                  {"zoned ls", "zonedls", "zonedls"}, {"zoned us", "zonedus", "zonedus"}};
    for (const Function &f : kMoves) {
        const std::string op1 = encode(f.from, "005", true);
        const std::string op2 = encode(f.from, "5", true);
        const bool isPacked = f.from == Pckd; // of relations and signs only packed ones are traced
        if (isRelation(f)) {
            const auto result = static_cast<int>(call(f, address(op1), 3, address(op2), 1));
            if (isPacked) {
                expectTrace(verbOf(f.name) + " packed",
                            line("op1: ", op1, 3) +
                                (f.kind == Kind::relation ? line("op2: ", op2, 1) : "") +
                                "res: " + std::to_string(result) + "\n");
            }
            continue;
        }
        uint8_t target[8];
        call(f, address(op1), 3, target, 2, 1);
        const std::string moved = expected(f, 0, op1, 3, 2, 1);
        const auto lines = [&](const char *in, const char *out, const char *behind) {
            return line(in, op1, 3, behind) + line(out, moved, 2, behind);
        };
        const auto &[copy, shift, from] = labels[f.from];
        if (f.kind == Kind::copy) {
            expectTrace("Copy " + copy, lines("op1: ", "res: ", " "));
        } else if (f.kind == Kind::convert) {
            const std::string blank = isPacked && f.to == ZndTO ? " " : "";
            expectTrace(from + " to " + labels[f.to].conversion + blank,
                        lines("in:  ", "out: ", " "));
        } else if (f.kind == Kind::abs || f.kind == Kind::neg) {
            if (isPacked) {
                expectTrace(verbOf(f.name) + " packed", lines("src: ", "dst: ", ": "));
            }
        } else {
            const char *direction = f.kind == Kind::left    ? " left 1 "
                                    : f.kind == Kind::right ? " right 1 "
                                                            : " right round 1 ";
            expectTrace("Shift " + shift + direction,
                        lines("op1: ", isPacked ? "res: " : "op2: ", " "));
        }
    }
}

void traceConversions() {
    uint8_t target[4];
    _zorcBCD_CONV_Int1_To_Pckd(-5, target, 3);
    printf("int8 to packed...\nin:  -5\nout: @ 3 005d\n");
    _zorcBCD_CONV_Uns8_To_Pckd(UINT64_MAX, target, 3);
    printf("uint64 to packed...\nin:  18446744073709551615\nout: @ 3 615c\n");
    _zorcBCD_CONV_UInt4_To_Znd(UINT32_MAX, target, 3);
    printf("uint32 to zoned...\nin:  4294967295\nout: @ 3 323935\n");
    _zorcBCD_CONV_Pckd_To_Uns2(address("\x99\x99\x9C"), 5);
    printf("packed to uint16...\nin:  @ 5 99999c\nout: 34463\n");
    _zorcBCD_CONV_Znd_To_Int4(address("12s"), 3);
    printf("zoned to int32...\nin:  @ 3 313273\nout: -123\n");
    _zorcBCD_CONV_LFlt_To_PckdRnd(-1.5, target, 3, 1);
    printf("double to packed rounded... prec 3  decs 1\n"
           "in:   -1.50000000000000000E+00\nout: @ 3 015d\n");
    _zorcBCD_CONV_BFlt32_To_Znd(0.5, target, 3, 1);
    printf("float to zoned... prec 3  decs 1\n"
           "in:    5.0000000000000000000000000000000000000E-01\nout: @ 3 303035\n");
    _zorcBCD_CONV_BFlt128_To_Znd(0.5, target, 3, 1);
    printf("quad to zoned... prec 3  decs 1\n"
           "in:    5.0000000000000000000000000000000000000E-01\nout: @ 3 303035\n");
    const ZorDecimal64 decimal = _zorcBCD_CONV_Pckd_To_DFlt64(address("\x12\x5C"), 3, 1);
    printf("packed to Decimal164... prec 3  decs 1\nin:  @ 3 125c\n"
           "dst:   12.5000000000000000000000000000000000\n");
    _zorcBCD_CONV_DFlt64_To_PckdRnd(decimal, target, 3, 0);
    printf("Decimal64_to packed rounded... prec 3  decs 0\n"
           "in:    1.2500000000000000000000000000000000E+01\nout: @ 3 013c\n");
    _zorcBCD_CONV_Znd_To_BFlt64(address("185"), 3, 1);
    printf("zoned to double... prec 3 decs 1\nin:  @ 3 313835\n"
           "dst  1.8500000000000000000000000000000000000E+01\n");
    _zorcBCD_CONV_Pckd_To_EFlt(address("\x12\x5C"), 3, 1);
    printf("packed to quad... prec 3 decs 1\nin:  @ 3 125c\n"
           "dst  1.2500000000000000000000000000000000000E+01\n");
}

TEST(Trace, IsWrittenLineByLine) {
    for (void (*body)() : {traceArithmetic, traceMoves, traceConversions}) {
        const auto result = kit::runChild(body, kit::Environment{{"COBOL_BCD_DEBUG", "1"}});
        std::string trace = std::regex_replace(result.err, std::regex("0x[0-9a-f]+"), "@");
        // The address sanitizer remarks on formats that it does not know.
        trace = std::regex_replace(trace, std::regex("==[^\n]*\n"), "");
        EXPECT_EQ(trace, result.out);
        EXPECT_NE(trace, "");
        EXPECT_EQ(result.status, 0);
    }
}

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

// ---- messages, of a catalogue in which they only warn: the call goes on with the bytes as they
// stand

constexpr const char *kCatalogue =
    "$set 40\n1 \"1 sign\"\n$set 902\n1 \"1 zero\"\n$set 903\n1 \"1 bad\"\n";
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

// Conversions to numbers, as operations of one item; the bits are those of the result.
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
    messages += divides && isZero(decode(f.form, std::string(op2), digits2).digits) ? kZero : "";
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
    for (int round = 0; round < 60'000; ++round) {
        random.oneIn(3) ? callOperation(options, rooms, random) : callMove(options, rooms, random);
    }
}

TEST(Messages, FollowTheSwitches) {
    const kit::TemporaryDirectory directory;
    kit::buildCatalog(directory, "C.UTF-8", kCatalogue);
    const std::pair<kit::Environment::value_type, void (*)()> settings[] = {
        {{"COBOL_BCD_SAFE", ""}, callAll<0>},
        {{"COBOL_BCD_SAFE", "1"}, callAll<kSafe>},
        {{"COBOL_BCD_NOVALIDATE", "1"}, callAll<kNoValidate>},
    };
    for (const auto &[setting, body] : settings) {
        // The library's own catalogue comes first, but not under this locale's name.
        const auto [status, out, err] = kit::runChild(
            body, kit::Environment{
                      {"LC_ALL", "C.UTF-8"}, {"NLSPATH", directory.path() + "/%L/%N"}, setting});
        const auto same = std::mismatch(out.begin(), out.end(), err.begin(), err.end()).first;
        const auto at = static_cast<size_t>(same - out.begin());
        EXPECT_TRUE(out == err) << setting.first << " " << setting.second << ": expected "
                                << out.substr(at < 80 ? 0 : at - 80, 160);
        EXPECT_EQ(status, 0);
    }
}

// The message of the library's own catalogue ends the run.
CHILD_TEST(Messages, EndTheRun, .errHolds = "ZOR903S", .status = 134) {
    _zorcBCD_CONV_Pckd_To_Int4(address("\x12\x34"), 3);
}

} // namespace

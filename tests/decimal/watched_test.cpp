// Calls that are watched: the trace of a call, and the messages about bad data, each family in a
// process with its switches set. A body writes on stdout what is to come on stderr.
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <vector>

#include "arithmetic_model.h"
#include "decimal_convert.h"
#include "moves_model.h"
#include "support/kit.h"

namespace {

using namespace model;

// ---- trace

struct Line {
    const char *label;
    std::string item;
    int digits;
};

void expectTrace(const std::string &header, const std::vector<Line> &lines,
                 const char *behind = ": ") {
    printf("%s...\n", header.c_str());
    for (const auto &[label, item, digits] : lines) {
        printf("%s@ %d%s%s\n", label, digits, behind, kit::hex(item).c_str());
    }
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
            const Value value = result(f.operation, {"123", true}, {"5", true});
            expectTrace(
                verbOf(f.name) + (f.form == Pckd ? " packed" : " zoned"),
                {{"op1: ", op1, 3}, {"op2: ", op2, 1}, {"dst: ", stored(f.form, value, 5), 5}});
        }
    }
    _zorcBCD_DIVR_Znd(address("12s"), address("u"), target, remainder, 2, 5, 1, 3); // nor this
    _zorcBCD_DIVR_Pckd(address("\x12\x3D"), address("\x5D"), target, remainder, 2, 5, 1, 3);
    expectTrace("div packed remainder", {{"op1: ", "\x12\x3D", 3},
                                         {"op2: ", "\x5D", 1},
                                         {"dst: ", unhex("00024c"), 5},
                                         {"rem: ", unhex("003d"), 2}});
    for (const Increment &f : kIncrements) {
        const std::string accumulator = encode(f.form, "99", false);
        const std::string sum = encode(f.form, f.operation == '+' ? "98" : "00", false);
        std::copy(accumulator.begin(), accumulator.end(), target);
        f.call(target, 2, -1);
        const bool isOdd = f.name == std::string("ADD_Znd_Int4");
        expectTrace((f.operation == '+' ? "inc " : "dec ") +
                        std::string(f.form == Pckd ? "packed" : "zoned") + (isOdd ? "_" : "_int") +
                        std::to_string(f.bits),
                    {{"op1: ", accumulator, 2}});
        printf("op2: -1\ndst: @ 2: %s\n", kit::hex(sum).c_str());
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
            const int32_t result = callRelation(f, address(op1), 3, address(op2), 1);
            std::vector<Line> lines = {{"op1: ", op1, 3}, {"op2: ", op2, 1}};
            lines.resize(f.kind == Kind::relation ? 2 : 1);
            if (isPacked) {
                expectTrace(verbOf(f.name) + " packed", lines);
                printf("res: %d\n", result);
            }
            continue;
        }
        uint8_t target[8];
        callMove(f, address(op1), 3, target, 2, 1);
        const std::string moved = expected(f, 0, op1, 3, 2, 1);
        const auto &[copy, shift, from] = labels[f.from];
        if (f.kind == Kind::copy) {
            expectTrace("Copy " + copy, {{"op1: ", op1, 3}, {"res: ", moved, 2}}, " ");
        } else if (f.kind == Kind::convert) {
            const std::string blank = isPacked && f.to == ZndTO ? " " : "";
            expectTrace(from + " to " + labels[f.to].conversion + blank,
                        {{"in:  ", op1, 3}, {"out: ", moved, 2}}, " ");
        } else if (f.kind == Kind::abs || f.kind == Kind::neg) {
            if (isPacked) {
                expectTrace(verbOf(f.name) + " packed", {{"src: ", op1, 3}, {"dst: ", moved, 2}});
            }
        } else {
            const char *direction = f.kind == Kind::left    ? " left 1 "
                                    : f.kind == Kind::right ? " right 1 "
                                                            : " right round 1 ";
            expectTrace("Shift " + shift + direction,
                        {{"op1: ", op1, 3}, {isPacked ? "res: " : "op2: ", moved, 2}}, " ");
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

// ---- messages, of a catalogue in which they only warn: the call goes on with the bytes as they
// stand

constexpr const char *kCatalogue = "$set 40\n1 1 sign\n$set 902\n1 1 zero\n$set 903\n1 1 bad\n";
constexpr const char *kSign = "ZOR040W  sign\n\n";
constexpr const char *kZero = "ZOR902W  zero\n\n";
constexpr const char *kBad = "ZOR903W  bad\n\n";

// What is to be called, and the messages that it is to issue.
void announce(const std::string &call, const std::string &messages) {
    fprintf(stderr, "%s\n", call.c_str());
    printf("%s\n%s", call.c_str(), messages.c_str());
}

// With a bad digit in the middle, or at the end, where a zoned one may carry a sign and a packed
// one has one.
std::string badItem(Form form, bool atEnd = false) {
    std::string item = encode(form, "555", false);
    const size_t middle = form == Pckd ? 0 : form == ZndLS ? 2 : 1;
    item[middle + (atEnd ? 1 : 0)] = atEnd ? '!' : ':';
    item[0] = form == ZndUS ? '+' : item[0]; // which a conversion takes off
    return item;
}

void callMoves(unsigned options) {
    uint8_t target[8];
    for (const Function &f : kMoves) {
        const auto call = [&](const char *what, const std::string &op1, const std::string &op2,
                              const std::string &messages) {
            announce(f.name + std::string(what), messages);
            if (isRelation(f)) {
                callRelation(f, address(op1), 3, address(op2), 3);
            } else {
                callMove(f, address(op1), 3, target, 3, 1);
            }
        };
        const std::string good = encode(f.from, "555", false);
        const Validation validation = validationOf(f, options);
        const std::string found = validation == Validation::none ? "" : kBad;
        for (const bool atEnd : {false, true}) {
            const std::string item = badItem(f.from, atEnd);
            const bool isShown = !found.empty() && f.from == ZndUS && f.to == Pckd;
            const std::string shown = "Invalid zoned data 3 0x" + kit::hex(item) + "\n";
            call(" bad", item, good, (isShown ? shown : "") + found);
        }
        call(" bad op2", good, badItem(f.from), f.kind == Kind::relation ? found : "");
        if (f.from == Pckd) {
            const std::string zeros(2, '\0');
            call(" binary zeros", zeros, good, validation == Validation::strict ? kBad : "");
        } else if (separate(f.from)) {
            std::string item = good;
            (f.from == ZndLS ? item.front() : item.back()) = ' ';
            call(" bad sign", item, good, testsSeparateSign(f, options) ? kSign : "");
        }
    }
}

void callArithmetic(unsigned options) {
    const std::string found = (options & kNoValidate) == 0 ? kBad : "";
    uint8_t target[8];
    for (const Operation &f : kOperations) {
        const std::string good = encode(f.form, "555", false);
        const std::string bad = badItem(f.form);
        announce(f.name, found);
        f.call(address(bad), address(good), target, 3, 3, 3);
        announce("bad op2", found);
        f.call(address(good), address(bad), target, 3, 3, 3);
    }
    for (const Increment &f : kIncrements) {
        for (const int value : {0, 1}) { // 0 is nothing to add, and the item is looked at
            std::string item = badItem(f.form);
            announce(f.name, found);
            f.call(reinterpret_cast<uint8_t *>(item.data()), 3, value);
        }
    }
    const struct {
        const char *function, *op1, *op2;
        std::string messages;
        const char *result;
    } strays[] = {
        {"ADD_Pckd", "1a2c", "110a", found, "0000312c"}, // a nibble counts by its value
        {"ADD_Pckd", "404040", "2c", found, "0040406c"}, // blanks are digits with a sign of 0
        {"MPY_Pckd", "202020", "6c", found, "0121212c"},
        {"DIV_Pckd", "1a2c", "000d", found + kZero, "0000000c"},
    };
    for (const auto &[function, op1, op2, messages, result] : strays) {
        const auto digits = [](const char *hex) { return static_cast<int>(strlen(hex)) - 1; };
        announce(function, messages);
        named(kOperations, function)
            .call(address(unhex(op1)), address(unhex(op2)), target, 7, digits(op2), digits(op1));
        fprintf(stderr, "%s\n", kit::hex(target, 4).c_str());
        printf("%s\n", result);
    }
}

void callConversions(unsigned options) {
    const std::string found = (options & kNoValidate) == 0 ? kBad : "";
    const std::string packed = badItem(Pckd);
    const std::string zoned = badItem(Znd);
    announce("conversions", found + found + found + found + found + found);
    _zorcBCD_CONV_Pckd_To_DFlt(address("\xFF\xFF\xFF\xFC"), 7, 0); // above any seven digits
    _zorcBCD_CONV_Znd_To_BFlt32(address(zoned), 3, 0);
    _zorcBCD_CONV_Znd_To_DFlt128(address(zoned), 3, 0);
    fprintf(stderr, "%d %lld %g\n", _zorcBCD_CONV_Pckd_To_Int4(address(packed), 3),
            static_cast<long long>(_zorcBCD_CONV_Znd_To_Int8(address(zoned), 3)),
            _zorcBCD_CONV_Pckd_To_LFlt(address(packed), 3, 0));
    printf("305 605 305\n");
}

template <unsigned options> void callAll() {
    callMoves(options);
    callArithmetic(options);
    callConversions(options);
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
        {"COBOL_BCD_SAFE", "1", callAll<kRezone | kValidateMoves | kValidateCompares>},
        {"COBOL_BCD_NOVALIDATE", "1", callAll<kNoValidate>},
    };
    for (const auto &[variable, value, body] : settings) {
        // The library's own catalogue comes first, but not under this locale's name.
        const auto result =
            kit::runChild(body, kit::Environment{{"LC_ALL", "C.UTF-8"},
                                                 {"NLSPATH", directory.path() + "/%N"},
                                                 {variable, value}});
        EXPECT_EQ(result.err, result.out) << variable << " " << value;
        EXPECT_EQ(result.status, 0);
    }
}

// The message of the library's own catalogue ends the run.
TEST(Messages, EndTheRun) {
    const auto result = kit::runChild([] { callMoves(0); });
    EXPECT_NE(result.err.find("ZOR903S"), std::string::npos) << result.err;
    EXPECT_NE(result.status, 0);
}

} // namespace

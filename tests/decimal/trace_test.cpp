// The trace of calls. A body writes on stdout what is to come on stderr.
#include <cstdio>
#include <regex>

#include "arithmetic_model.h"
#include "decimal_convert.h"
#include "moves_model.h"
#include "support/kit.h"

namespace {

using namespace model;

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
            const Value value = result(f.operation, {"123", true}, {"5", true});
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

} // namespace

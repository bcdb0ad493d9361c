// Decimal moves one by one: cases worked out by hand, which items are validated when, and the
// trace.
#include <cstdlib>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

#include "moves_model.h"
#include "support/kit.h"

namespace {

using namespace moves;

Bytes unhex(const char *text) {
    Bytes bytes;
    for (; text[0] != 0; text += 2) {
        const char pair[] = {text[0], text[1], 0};
        bytes += static_cast<uint8_t>(strtoul(pair, nullptr, 16));
    }
    return bytes;
}

// ---- cases by hand

struct Case {
    const char *name;
    const char *source; // hexadecimal, as the result; of a relation op1 and op2
    int32_t sourceDigits;
    int32_t targetDigits; // of a relation those of op2
    int32_t shift;
    const char *result;
};

constexpr Case kDefault[] = {
    {"EQU_Pckd", "0c000d", 1, 3, 0, "01"},
    {"LES_Pckd", "0b0a", 1, 1, 0, "00"},
    {"EQU_Pckd", "00012c012f", 5, 2, 0, "01"},
    {"GRT_Pckd", "5c5d", 1, 1, 0, "01"},
    {"LES_Pckd", "5d5c", 1, 1, 0, "01"},
    {"LES_Pckd", "3d00005c", 1, 5, 0, "01"},
    {"GEQ_Pckd", "123d012d", 3, 2, 0, "00"},
    {"LEQ_Znd", "307d30", 2, 1, 0, "01"},
    {"NEQ_Znd", "303132314b", 3, 2, 0, "01"},
    {"SHFD_Pckd_RightRnd", "015c", 2, 2, 1, "002c"},
    {"SHFD_Pckd_RightRnd", "015d", 2, 2, 1, "002d"},
    {"SHFD_Pckd_RightRnd", "014c", 2, 2, 1, "001c"},
    {"SHFD_Pckd_RightRnd", "149c", 3, 3, 2, "001c"},
    {"SHFD_Pckd_RightRnd", "5c", 1, 1, 1, "1c"},
    {"SHFD_Pckd_RightRnd", "4d", 1, 1, 1, "0c"},
    {"SHFD_Pckd_RightRnd", "005d", 3, 3, 2, "000c"},
    {"SHFD_Pckd_RightRnd", "999c", 3, 2, 1, "000c"},
    {"SHFD_Pckd_RightRnd", "999d", 3, 3, 1, "100d"},
    {"SHFD_Pckd_RightRnd", "123f", 3, 5, 0, "00123c"},
    {"SHFD_Pckd_Right", "12345b", 5, 3, 1, "234d"},
    {"SHFD_Pckd_Right", "012d", 3, 3, 2, "000c"},
    {"SHFD_Pckd_Left", "123d", 3, 4, 3, "03000d"},
    {"SHFD_Pckd_Left", "123d", 3, 3, 3, "000c"},
    {"SHFD_Pckd_Left", "123e", 3, 6, 2, "0012300c"},
    {"SHFD_Znd_RightRnd", "313575", 3, 3, 1, "303176"},
    {"SHFD_Znd_RightRnd", "393939", 3, 2, 1, "3030"},
    {"SHFD_Znd_Left", "313273", 3, 4, 2, "32333070"},
    {"SHFD_Znd_Left", "313273", 3, 3, 3, "303030"},
    {"SHFD_ZndLO_RightRnd", "793939", 3, 4, 1, "70313030"}, // -999 rounds over the sign's byte
    {"SHFD_ZndLO_Right", "503030", 3, 3, 2, "703037"},      // 0x50 is -7
    {"SHFD_ZndLO_Left", "75", 1, 3, 1, "703530"},
    {"SHFD_ZndTS_Right", "3132332d", 3, 3, 3, "3030302b"},
    {"SHFD_ZndLS_RightRnd", "2d353439", 3, 3, 1, "2d303535"},
    {"Cpy_Pckd", "100d", 3, 2, 0, "000c"},
    {"Cpy_Pckd", "91234f", 4, 4, 0, "01234c"},
    {"Cpy_Znd", "314c", 2, 3, 0, "303173"},
    {"Cpy_ZndLO", "7132", 2, 4, 0, "70303132"},
    {"Cpy_ZndLS", "2a3132", 2, 3, 0, "2a303132"}, // a bad sign stays
    {"Cpy_ZndTS", "31302d", 2, 1, 0, "302b"},
    {"ABS_ZndLO", "4a32", 2, 4, 0, "30303132"},
    {"NEG_Pckd", "0c", 1, 3, 0, "000c"},
    {"NEG_Pckd", "100c", 3, 2, 0, "000d"}, // the source is not zero
    {"NEG_ZndLO", "503030", 3, 4, 0, "30373030"},
    {"NEG_ZndLO", "3030", 2, 3, 0, "303030"},
    {"CONV_ZndTS_To_ZndTO", "30303132332d", 5, 5, 0, "3030313273"},
    {"CONV_ZndTO_To_Pckd", "314c", 2, 2, 0, "01cc"},
    {"CONV_ZndTO_To_ZndTO", "313070", 3, 2, 0, "3030"},
    {"CONV_Pckd_To_ZndTO", "100d", 3, 2, 0, "3070"},
    {"CONV_Pckd_To_ZndTO", "010d", 2, 1, 0, "30"},
    {"CONV_Pckd_To_ZndLO", "5d", 1, 1, 0, "75"},
    {"CONV_Pckd_To_ZndLO", "0d", 1, 1, 0, "30"},
    {"CONV_Pckd_To_ZndLO", "100d", 3, 2, 0, "7030"},
    {"CONV_Pckd_To_ZndTS", "010d", 2, 1, 0, "302d"},
    {"CONV_ZndLO_To_ZndTS", "713233", 3, 2, 0, "32332d"},
    {"CONV_ZndLO_To_ZndTO", "713233", 3, 3, 0, "313273"},
    {"CONV_ZndLO_To_ZndUS", "4a32", 2, 2, 0, "3132"},
    {"CONV_ZndLO_To_Pckd", "4a32", 2, 3, 0, "012d"},
    {"CONV_ZndLO_To_Pckd", "4a", 1, 1, 0, "1d"},
    {"CONV_ZndTO_To_ZndLO", "75", 1, 1, 0, "75"},
    {"CONV_ZndUS_To_Pckd", "2b313233", 4, 3, 0, "123c"},
    {"CONV_ZndUS_To_Pckd", "3132332d", 4, 4, 0, "00123c"},
    {"CONV_ZndUS_To_Pckd", "2b", 1, 3, 0, "000c"},
    {"CONV_ZndUS_To_Pckd", "202d", 2, 2, 0, "000c"},
};

constexpr Case kKeep[] = {
    {"Cpy_Pckd", "100d", 3, 2, 0, "000d"},        {"NEG_Pckd", "0c", 1, 1, 0, "0d"},
    {"CONV_Pckd_To_ZndTO", "0d", 1, 1, 0, "70"},  {"CONV_Pckd_To_ZndTO", "0d", 1, 3, 0, "303070"},
    {"SHFD_Pckd_Right", "012d", 3, 3, 2, "000c"}, // no digit is kept
    {"SHFD_Pckd_Right", "100d", 3, 1, 1, "0d"},   {"SHFD_Znd_Left", "73", 1, 2, 2, "3030"},
    {"SHFD_ZndLO_Left", "73", 1, 2, 2, "7030"},
};

constexpr Case kLetterCases[] = {
    {"CONV_ZndTS_To_ZndTO", "30303132332d", 5, 5, 0, "303031324c"},
    {"CONV_ZndTO_To_Pckd", "314c", 2, 2, 0, "013d"},
    {"CONV_Pckd_To_ZndLO", "120c", 3, 3, 0, "413230"},
    {"CONV_ZndTO_To_ZndTO", "307d", 2, 2, 0, "307d"}, // a letter stays, also of a negative zero
    {"CONV_ZndLO_To_ZndLO", "4a32", 2, 3, 0, "7d3132"},
    {"CONV_ZndUS_To_ZndTO", "3132", 2, 2, 0, "3132"},
    {"Cpy_Znd", "314c", 2, 2, 0, "3173"},
};

constexpr Case kRezoned[] = {
    {"CONV_ZndTO_To_ZndUS", "317132", 3, 3, 0, "313132"},
    {"CONV_ZndTO_To_ZndLS", "317132", 3, 3, 0, "2b317132"},
};

constexpr Case kFast[] = {{"CONV_ZndUS_To_ZndUS", "313273", 3, 2, 0, "3273"}};

struct Table {
    const char *variable;
    const char *value;
    const Case *cases;
    size_t count;
};
const Table kTables[] = {
    {"COBOL_BCD_SAFE", "", kDefault, std::size(kDefault)}, // empty: as if it were not set
    {"COBOL_BCD_NOVALIDATE", "2", kKeep, std::size(kKeep)},
    {"COBOL_BCD_EBCDIC", "1", kLetterCases, std::size(kLetterCases)},
    {"COBOL_BCD_NOVALIDATE", "4", kRezoned, std::size(kRezoned)},
    {"COBOL_BCD_FAST", "1", kFast, std::size(kFast)},
};

void runTable() {
    const Table &table = kTables[parameter("MOVES_TABLE")];
    for (const Case *c = table.cases; c < table.cases + table.count; ++c) {
        const Function *f = functionOf(c->name);
        const Bytes source = unhex(c->source);
        Bytes target(static_cast<size_t>(bytesOf(f->to, c->targetDigits)), 0xEE);
        if (f->kind == Kind::relation) {
            target.assign(1, static_cast<uint8_t>(reinterpret_cast<Relation>(f->address)(
                                 source.data(), source.data() + bytesOf(f->from, c->sourceDigits),
                                 c->targetDigits, c->sourceDigits)));
        } else {
            reinterpret_cast<Move>(f->address)(source.data(), target.data(), c->targetDigits,
                                               c->sourceDigits, c->shift);
        }
        if (target != unhex(c->result)) {
            printf("%s %s %d to %d shift %d: %s\n", c->name, c->source, c->sourceDigits,
                   c->targetDigits, c->shift, kit::hex(target.data(), target.size()).c_str());
        }
    }
}

TEST(DecimalMove, GivesTheResultsWorkedOutByHand) {
    for (size_t at = 0; at < std::size(kTables); ++at) {
        const kit::ChildResult result =
            kit::runChild(runTable, kit::Environment{{kTables[at].variable, kTables[at].value},
                                                     {"MOVES_TABLE", std::to_string(at)}});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out, "");
    }
}

// ---- validation

// Calls a function with a source of the given bytes in a process of its own, and gives the numbers
// of the messages that it issues.
std::string messagesOf(const Function &f, const Bytes &source, int32_t digits) {
    FILE *output = tmpfile();
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(fileno(output), STDERR_FILENO);
        uint8_t target[16];
        const Bytes other = write(f.from, Bytes(3, '1'), false);
        if (f.kind == Kind::relation) { // as the second operand, beside a good first one
            reinterpret_cast<Relation>(f.address)(other.data(), source.data(), digits, 3);
        } else if (f.kind == Kind::isZero) {
            reinterpret_cast<ZeroTest>(f.address)(source.data(), digits);
        } else {
            reinterpret_cast<Move>(f.address)(source.data(), target, 3, digits, 1);
        }
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    char text[4096] = {};
    rewind(output);
    fread(text, 1, sizeof text - 1, output);
    fclose(output);
    std::string numbers;
    const std::regex number("ZOR(\\d+)[A-Z]  ");
    for (std::cregex_iterator at(text, text + strlen(text), number), end; at != end; ++at) {
        numbers += (numbers.empty() ? "" : " ") + (*at)[1].str();
    }
    return numbers;
}

// Whether a bad digit of the source is to be found.
bool validates(const Function &f, unsigned options) {
    const bool arithmetic = (options & kNoValidate) == 0;
    const bool moves = (options & kValidateMoves) != 0;
    switch (f.kind) {
    case Kind::relation:
    case Kind::isZero:
        return (options & 0x40) != 0;
    case Kind::copy:
        return moves;
    case Kind::abs:
        return f.from == Pckd ? arithmetic : moves;
    case Kind::neg:
        return arithmetic;
    case Kind::convert:
        return f.from == Pckd ? arithmetic : moves;
    default:
        return false;
    }
}

void checkValidation() {
    const unsigned options = parameter("MOVES_OPTIONS");
    const auto expect = [](const Function &f, const char *what, const std::string &got,
                           const std::string &wanted) {
        if (got != wanted) {
            printf("%s %s: messages \"%s\", not \"%s\"\n", f.name, what, got.c_str(),
                   wanted.c_str());
        }
    };
    for (const Function &f : kFunctions) {
        Bytes item = write(f.from, Bytes(3, '5'), false);
        expect(f, "good", messagesOf(f, item, 3), "");
        if (f.from == Pckd) {
            item[0] = 0x5A;
        } else {
            item[1] = 'X';
            if (f.from == ZndLS) {
                item = {'+', '5', 'X', '5'};
            }
        }
        expect(f, "bad digit", messagesOf(f, item, 3), validates(f, options) ? "903" : "");
        if (separate(f.from)) {
            item = write(f.from, Bytes(3, '5'), false);
            item[f.from == ZndLS ? 0 : 3] = ' ';
            const bool tests = f.kind == Kind::convert
                                   ? f.to != ZndUS
                                   : f.kind == Kind::copy && validates(f, options);
            expect(f, "bad sign", messagesOf(f, item, 3), tests ? "040" : "");
        }
        // Binary zeros pass where validation is not strict.
        const bool strict =
            f.kind == Kind::relation || f.kind == Kind::isZero || f.kind == Kind::copy;
        if (f.from == Pckd) {
            expect(f, "binary zeros", messagesOf(f, Bytes(2, 0), 3),
                   strict && validates(f, options) ? "903" : "");
        }
    }
}

TEST(DecimalMove, ValidatesAsTheSwitchesSay) {
    const std::pair<kit::Environment, unsigned> settings[] = {
        {{}, 0},
        {{{"COBOL_BCD_SAFE", "1"}}, 0x54},
        {{{"COBOL_BCD_NOVALIDATE", "1"}}, 0x01},
    };
    for (const auto &[environment, options] : settings) {
        kit::Environment all = environment;
        all.emplace_back("MOVES_OPTIONS", std::to_string(options));
        const kit::ChildResult result = kit::runChild(checkValidation, all);
        EXPECT_EQ(result.out, "") << "options " << options;
        EXPECT_EQ(result.status, 0);
    }
}

TEST(DecimalMove, ShowsABadUnsignedItemWhole) {
    const kit::ChildResult result = kit::runChild(
        [] {
            uint8_t target[4];
            _zorcBCD_CONV_ZndUS_To_Pckd(reinterpret_cast<const uint8_t *>("+1X3"), target, 3, 4);
        },
        kit::Environment{{"COBOL_BCD_SAFE", "1"}});
    EXPECT_EQ(result.err.find("Invalid zoned data 4 0x2b315833\n"), 0U) << result.err;
    EXPECT_NE(result.err.find("ZOR903S"), std::string::npos) << result.err;
}

// ---- trace

void runTraced() {
    uint8_t target[8];
    const auto call = [&target](const char *name, const char *source, int32_t digits,
                                int32_t targetDigits, int32_t shift = 0) {
        const Bytes bytes = unhex(source);
        reinterpret_cast<Move>(functionOf(name)->address)(bytes.data(), target, targetDigits,
                                                          digits, shift);
    };
    const Bytes five = unhex("005c");
    _zorcBCD_LEQ_Pckd(five.data(), five.data() + 1, 1, 3);
    _zorcBCD_NOT_Pckd(five.data(), 3);
    _zorcBCD_NOT_Znd(five.data(), 1);
    call("ABS_Pckd", "005d", 3, 2);
    call("NEG_Pckd", "005d", 3, 1);
    call("NEG_ZndLO", "3535", 2, 2);
    call("Cpy_Pckd", "005d", 3, 1);
    call("Cpy_ZndLS", "2d3132", 2, 3);
    call("SHFD_Pckd_Left", "005d", 3, 3, 1);
    call("SHFD_ZndTS_RightRnd", "31352d", 2, 2, 1);
    call("SHFD_Znd_Right", "3135", 2, 2, 1);
    call("CONV_Pckd_To_ZndTO", "005d", 3, 2);
    call("CONV_Pckd_To_ZndLS", "005d", 3, 2);
    call("CONV_ZndUS_To_ZndTS", "3132", 2, 2);
    call("CONV_ZndLO_To_Pckd", "7132", 2, 3);
}

TEST(DecimalMove, TracesOperandsAndResults) {
    const kit::ChildResult result =
        kit::runChild(runTraced, kit::Environment{{"COBOL_BCD_DEBUG", "1"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(std::regex_replace(result.err, std::regex("0x[0-9a-f]{7,8}"), "@"),
              "leq packed...\nop1: @ 3: 005c\nop2: @ 1: 5c\nres: 1\n"
              "not packed...\nop1: @ 3: 005c\nres: 0\n"
              "abs packed...\nsrc: @ 3: 005d\ndst: @ 2: 005c\n"
              "neg packed...\nsrc: @ 3: 005d\ndst: @ 1: 5c\n"
              "Copy packed ...\nop1: @ 3 005d\nres: @ 1 5d\n"
              "Copy zoned ls...\nop1: @ 2 2d3132\nres: @ 3 2d303132\n"
              "Shift packed left 1 ...\nop1: @ 3 005d\nres: @ 3 050d\n"
              "Shift zonedts right round 1 ...\nop1: @ 2 31352d\nop2: @ 2 30322d\n"
              "Shift zoned right 1 ...\nop1: @ 2 3135\nop2: @ 2 3031\n"
              "packed to zonedto ...\nin:  @ 3 005d\nout: @ 2 3075\n"
              "packed to zonedls...\nin:  @ 3 005d\nout: @ 2 2d3035\n"
              "zonedus to zonedts...\nin:  @ 2 3132\nout: @ 2 31322b\n"
              "zonedlo to packed...\nin:  @ 2 7132\nout: @ 3 012d\n");
}

} // namespace

// The arithmetic functions under the environment's switches, each case in a process of its own, and
// under the callers and data that generated code may come with.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "decimal.h"
#include "decimal/model.h"
#include "support/kit.h"

namespace {

using Binary = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);

const kit::Environment kTraced = {{"COBOL_BCD_DEBUG", "1"}};

// ---- trace: the body writes on stdout what it expects on stderr

void expectLine(const char *label, const uint8_t *item, int32_t digits, const char *bytes) {
    std::printf("%s: %p %d: %s\n", label, static_cast<const void *>(item), digits, bytes);
}

void traceBinaries() {
    struct Case {
        Binary call;
        const char *header;
        bool packed;
        const char *result;
    };
    const Case cases[] = {
        {_zorcBCD_ADD_Pckd, "add packed...", true, "00128d"},
        {_zorcBCD_SUB_Pckd, "sub packed...", true, "00118d"},
        {_zorcBCD_MPY_Pckd, "mpy packed...", true, "00615c"},
        {_zorcBCD_DIV_Pckd, "div packed...", true, "00024c"},
        {_zorcBCD_MOD_Pckd, "mod packed...", true, "00003d"},
        {_zorcBCD_ADD_Znd, "add zoned...", false, "3030313278"},
        {_zorcBCD_SUB_Znd, "sub zoned...", false, "3030313178"},
        {_zorcBCD_MPY_Znd, "mpy zoned...", false, "3030363135"},
        {_zorcBCD_DIV_Znd, "div zoned...", false, "3030303234"},
        {_zorcBCD_MOD_Znd, nullptr, false, "3030303073"},
    };
    const uint8_t packed1[] = {0x12, 0x3B};
    const uint8_t packed2[] = {0x5D};
    const uint8_t zoned1[] = {'1', '2', 'L'};
    const uint8_t zoned2[] = {'u'};
    uint8_t target[5];
    for (const Case &c : cases) {
        const uint8_t *op1 = c.packed ? packed1 : zoned1;
        const uint8_t *op2 = c.packed ? packed2 : zoned2;
        if (c.header != nullptr) {
            std::printf("%s\n", c.header);
            expectLine("op1", op1, 3, c.packed ? "123b" : "31324c");
            expectLine("op2", op2, 1, c.packed ? "5d" : "75");
            expectLine("dst", target, 5, c.result);
        }
        c.call(op1, op2, target, 5, 1, 3);
    }
    uint8_t remainder[2];
    std::printf("div packed remainder...\n");
    expectLine("op1", packed1, 3, "123b");
    expectLine("op2", packed2, 1, "5d");
    expectLine("dst", target, 5, "00024c");
    expectLine("rem", remainder, 2, "003d");
    _zorcBCD_DIVR_Pckd(packed1, packed2, target, remainder, 2, 5, 1, 3);
    _zorcBCD_DIVR_Znd(zoned1, zoned2, target, remainder, 2, 5, 1, 3);
}

template <class Integer>
void traceIncrement(uint8_t *(*call)(uint8_t *, int32_t, Integer), const char *header, bool packed,
                    const char *result) {
    uint8_t item[] = {'9', '9'};
    if (packed) {
        std::memcpy(item, "\x09\x9C", 2);
    }
    std::printf("%s\n", header);
    expectLine("op1", item, 2, packed ? "099c" : "3939");
    std::printf("op2: -1\n");
    expectLine("dst", item, 2, result);
    call(item, 2, -1);
}

void traceIncrements() {
    traceIncrement<int64_t>(_zorcBCD_ADD_Pckd_Int8, "inc packed_int64...", true, "098c");
    traceIncrement<int32_t>(_zorcBCD_ADD_Pckd_Int4, "inc packed_int32...", true, "098c");
    traceIncrement<int64_t>(_zorcBCD_SUB_Pckd_Int8, "dec packed_int64...", true, "000c");
    traceIncrement<int32_t>(_zorcBCD_SUB_Pckd_Int4, "dec packed_int32...", true, "000c");
    traceIncrement<int64_t>(_zorcBCD_ADD_Znd_Int8, "inc zoned_int64...", false, "3938");
    traceIncrement<int32_t>(_zorcBCD_ADD_Znd_Int4, "inc zoned_32...", false, "3938");
    traceIncrement<int64_t>(_zorcBCD_SUB_Znd_Int8, "dec zoned_int64...", false, "3030");
    traceIncrement<int32_t>(_zorcBCD_SUB_Znd_Int4, "dec zoned_int32...", false, "3030");
}

TEST(Trace, IsWrittenLineByLine) {
    for (void (*body)() : {traceBinaries, traceIncrements}) {
        const kit::ChildResult result = kit::runChild(body, kTraced);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, result.out);
        EXPECT_NE(result.err, "");
    }
}

// ---- validation

void addBadDigit() {
    const uint8_t bad[] = {0x1A, 0x2C};
    const uint8_t good[] = {0x1C};
    uint8_t target[2];
    _zorcBCD_ADD_Pckd(good, bad, target, 3, 3, 1);
    std::printf("done");
}

void incrementBadZoned() {
    uint8_t bad[] = {'1', ' ', '2'};
    _zorcBCD_SUB_Znd_Int4(bad, 3, 0); // nothing to subtract, and looked at all the same
    std::printf("done");
}

void divideByZero() {
    const uint8_t dividend[] = {0x12, 0x3C};
    const uint8_t divisor[] = {0x00, 0x00, 0x0D};
    uint8_t target[2];
    _zorcBCD_DIV_Pckd(dividend, divisor, target, 3, 5, 3);
    std::printf("done");
}

TEST(Validation, FollowsTheSwitches) {
    struct Case {
        void (*body)();
        kit::Environment environment;
        const char *message; // null: the call is done
    };
    const Case cases[] = {
        {addBadDigit, {}, "ZOR903"},
        {addBadDigit, {{"COBOL_BCD_NOVALIDATE", "1"}}, nullptr},
        {addBadDigit, {{"COBOL_BCD_NOVALIDATE", "2"}}, "ZOR903"},
        {addBadDigit, {{"COBOL_BCD_NOVALIDATE", "1"}, {"COBOL_BCD_SAFE", "1"}}, "ZOR903"},
        {addBadDigit, {{"COBOL_BCD_NOVALIDATE", "1"}, {"COBOL_BCD_FAST", "1"}}, "ZOR903"},
        {incrementBadZoned, {}, "ZOR903"},
        {incrementBadZoned, {{"COBOL_BCD_NOVALIDATE", "0x1"}}, nullptr},
        {divideByZero, {}, "ZOR902"},
        {divideByZero, {{"COBOL_BCD_NOVALIDATE", "1"}}, "ZOR902"},
    };
    for (const Case &c : cases) {
        const kit::ChildResult result = kit::runChild(c.body, c.environment);
        if (c.message == nullptr) {
            EXPECT_EQ(result.out, "done");
            EXPECT_EQ(result.err, "");
            EXPECT_EQ(result.status, 0);
        } else {
            EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
        }
    }
}

// ---- a catalogue in which the messages only warn: the call goes on with the bytes as they stand

void compute(Binary call, std::string op1, std::string op2) {
    uint8_t target[4] = {0x77, 0x77, 0x77, 0x77};
    const auto address = [](std::string &item) { return reinterpret_cast<uint8_t *>(item.data()); };
    const auto digits = [](const std::string &item) {
        return static_cast<int32_t>(item.size()) * 2 - 1;
    };
    const bool answered =
        call(address(op1), address(op2), target, 7, digits(op2), digits(op1)) == target;
    std::fprintf(stderr, "%s %d\n", kit::hex(target, sizeof target).c_str(), answered);
}

void computeOnStrays() {
    compute(_zorcBCD_ADD_Pckd, "\x1A\x2C", "\xB1\x1D");
    compute(_zorcBCD_ADD_Pckd, "\x1A\x2C", "\x11\x0A"); // a nibble counts by its value
    compute(_zorcBCD_ADD_Pckd, "\x40\x40\x40", "\x2C"); // blanks are digits with a sign of 0
    compute(_zorcBCD_MPY_Pckd, "\x20\x20\x20", "\x6C");
    compute(_zorcBCD_DIV_Pckd, "\x1A\x2C", std::string("\x00\x0D", 2));
    uint8_t item[] = {0x1A, 0x2F};
    _zorcBCD_ADD_Pckd_Int4(item, 3, 0);
    std::fprintf(stderr, "%s\n", kit::hex(item, sizeof item).c_str());
}

TEST(Validation, GoesOnWhereMessagesOnlyWarn) {
    const kit::TemporaryDirectory directory;
    kit::writeFile(directory.file("source.msg"), "$set 902\n1 1 zero\n$set 903\n1 1 bad\n");
    const std::string command =
        "gencat " + directory.file("cobol2run.cat ") + directory.file("source.msg");
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string bad = "ZOR903W  bad\n\n";
    const std::string zero = "ZOR902W  zero\n\n";
    for (const bool validated : {true, false}) {
        // The library's own catalogue comes first, but not under this locale's name.
        const kit::ChildResult result = kit::runChild(
            computeOnStrays, kit::Environment{{"LC_ALL", "C.UTF-8"},
                                              {"NLSPATH", directory.path() + "/%N"},
                                              {"COBOL_BCD_NOVALIDATE", validated ? "0" : "1"}});
        const std::string one = validated ? bad : "";
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, one + one + "0000899d 1\n" + one + "0000312c 1\n" + one +
                                  "0040406c 1\n" + one + "0121212c 1\n" + one + zero +
                                  "0000000c 1\n" + one + "1a2f\n");
    }
}

// ---- data that is no number: no fault, and no byte written beyond a target

void computeOnGarbage() {
    const Binary functions[] = {_zorcBCD_ADD_Pckd, _zorcBCD_SUB_Pckd, _zorcBCD_MPY_Pckd,
                                _zorcBCD_DIV_Pckd, _zorcBCD_MOD_Pckd, _zorcBCD_ADD_Znd,
                                _zorcBCD_SUB_Znd,  _zorcBCD_MPY_Znd,  _zorcBCD_DIV_Znd,
                                _zorcBCD_MOD_Znd};
    model::Generator random(21);
    auto garbage = [&](std::size_t size) {
        std::string bytes;
        const unsigned kind = random.below(3); // any bytes, high ones, blanks and digits
        for (std::size_t i = 0; i < size; ++i) {
            bytes += static_cast<char>(kind == 0   ? random.below(256)
                                       : kind == 1 ? 0xF0 + random.below(16)
                                                   : 0x20 + random.below(26));
        }
        bytes.back() = '\x99'; // no zero divisor
        return bytes;
    };
    for (int round = 0; round < 20000; ++round) {
        const unsigned which = random.below(10);
        const model::Form form = which < 5 ? model::Form::packed : model::Form::zoned;
        const std::size_t digits1 = 1 + random.below(126);
        const std::size_t digits2 = 1 + random.below(random.oneIn(2) ? 126 : 12);
        const std::size_t targetDigits = 1 + random.below(140);
        model::Field op1(garbage(model::bytesOf(form, digits1)), random.below(16));
        model::Field op2(garbage(model::bytesOf(form, digits2)), random.below(16));
        model::Field target(garbage(model::bytesOf(form, targetDigits)), random.below(16));
        functions[which](op1.data(), op2.data(), target.data(), static_cast<int32_t>(targetDigits),
                         static_cast<int32_t>(digits2), static_cast<int32_t>(digits1));
        if (!target.surroundingsAreWhole()) {
            std::printf("function %u wrote beyond %zu digits\n", which, targetDigits);
        }
    }
    std::printf("done");
}

TEST(Garbage, StaysWithinBounds) {
    const kit::ChildResult result =
        kit::runChild(computeOnGarbage, kit::Environment{{"COBOL_BCD_NOVALIDATE", "1"}});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "done");
}

// ---- callers whose stack is aligned to 4 bytes only

uint8_t *callWithStack(uint32_t shift, Binary call, const uint32_t (&arguments)[6]) {
    auto result = reinterpret_cast<uint32_t>(call);
    asm volatile("movl %%esp, %%ebx\n\t"
                 "andl $-16, %%esp\n\t"
                 "subl %%ecx, %%esp\n\t"
                 "pushl 20(%%esi)\n\tpushl 16(%%esi)\n\tpushl 12(%%esi)\n\t"
                 "pushl 8(%%esi)\n\tpushl 4(%%esi)\n\tpushl (%%esi)\n\t"
                 "call *%%eax\n\t"
                 "movl %%ebx, %%esp"
                 : "+a"(result), "+c"(shift)
                 : "S"(arguments)
                 : "ebx", "edx", "cc", "memory", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5",
                   "xmm6", "xmm7");
    return reinterpret_cast<uint8_t *>(result);
}

TEST(Callers, MayAlignTheStackToFourBytes) {
    const std::string a = kit::pckd("1234567890123456789012345678901", 31);
    const std::string b = kit::pckd("9876543210987654", 31);
    std::string target(32, '\0');
    for (const Binary call : {_zorcBCD_ADD_Pckd, _zorcBCD_MPY_Pckd, _zorcBCD_DIV_Pckd}) {
        auto address = [](const std::string &bytes) {
            return reinterpret_cast<uint32_t>(bytes.data());
        };
        const uint32_t arguments[] = {address(a), address(b), address(target), 62, 31, 31};
        std::string first;
        for (uint32_t shift = 0; shift < 16; shift += 4) {
            target.assign(target.size(), '\0');
            EXPECT_EQ(callWithStack(shift, call, arguments),
                      reinterpret_cast<uint8_t *>(target.data()));
            first = shift == 0 ? target : first;
            EXPECT_EQ(kit::hex(target), kit::hex(first));
        }
        EXPECT_NE(target, std::string(32, '\0'));
    }
}

} // namespace

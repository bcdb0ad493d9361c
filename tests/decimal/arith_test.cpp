// Decimal arithmetic through its exported functions, against plain arithmetic on digit texts.
#include "arithmetic_model.h"
#include "support/kit.h"

namespace {

using namespace model;

// Division with both targets, one of them at a time.
template <Form form, char operation>
uint8_t *divide(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                int32_t op2Digits, int32_t op1Digits) {
    uint8_t other[140];
    uint8_t *quotient = operation == '/' ? target : other;
    uint8_t *remainder = operation == '/' ? other : target;
    if constexpr (form == Pckd) {
        _zorcBCD_DIVR_Pckd(op1, op2, quotient, remainder, targetDigits, targetDigits, op2Digits,
                           op1Digits);
    } else {
        EXPECT_EQ(_zorcBCD_DIVR_Znd(op1, op2, quotient, remainder, targetDigits, targetDigits,
                                    op2Digits, op1Digits),
                  quotient);
    }
    return target;
}
constexpr Operation kDivisions[] = {{"DIVR_Pckd", Pckd, '/', divide<Pckd, '/'>},
                                    {"DIVR_Pckd", Pckd, '%', divide<Pckd, '%'>},
                                    {"DIVR_Znd", Znd, '/', divide<Znd, '/'>},
                                    {"DIVR_Znd", Znd, '%', divide<Znd, '%'>}};

// Calls with a stack that is aligned to 4 bytes alone, as callers may.
uint8_t *callWithStack(int shift, const Operation &f, const uint8_t *op1, const uint8_t *op2,
                       uint8_t *target, int digits, int digits2, int digits1) {
    const uint32_t arguments[] = {
        reinterpret_cast<uint32_t>(op1),    reinterpret_cast<uint32_t>(op2),
        reinterpret_cast<uint32_t>(target), static_cast<uint32_t>(digits),
        static_cast<uint32_t>(digits2),     static_cast<uint32_t>(digits1)};
    auto result = reinterpret_cast<uint32_t>(f.call);
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

enum Place { onFirst, onSecond, apart };

bool areAsExpected(const Room (&rooms)[3]) {
    return rooms[0].isAsExpected() && rooms[1].isAsExpected() && rooms[2].isAsExpected();
}

class Arithmetic : public testing::Test {
protected:
    // One call, with every operand at an address of its own kind. On an operand the target has its
    // length.
    void check(const Operation &f, const std::string &a, int digitsA, const std::string &b,
               int digitsB, int digits, Place place) {
        digits = place == onFirst ? digitsA : place == onSecond ? digitsB : digits;
        const int bytes = bytesOf(f.form, digits);
        uint8_t *const at[] = {rooms_[onFirst].put(a, random_), rooms_[onSecond].put(b, random_),
                               rooms_[apart].put(bytes, random_)};
        const Value value =
            result(f.operation, valueOf(f.form, a, digitsA), valueOf(f.form, b, digitsB));
        rooms_[place].expect(at[place], stored(f.form, value, digits));
        EXPECT_EQ(callWithStack(4 * random_.below(4), f, at[onFirst], at[onSecond], at[place],
                                digits, digitsB, digitsA),
                  at[place]);
        EXPECT_TRUE(areAsExpected(rooms_))
            << f.name << " " << kit::hex(a) << " (" << digitsA << ") " << kit::hex(b) << " ("
            << digitsB << ") into " << digits << " digits, place " << place << ": "
            << kit::hex(at[place], static_cast<size_t>(bytes));
    }
    std::string item(Form form, int digits) {
        return random_.item(form, random_.digits(digits), random_.oneIn(2), Validation::lenient);
    }

    Random random_{5};
    Room rooms_[3]; // by Place
};

TEST_F(Arithmetic, AgreesWithPlainArithmetic) {
    for (int round = 0; round < 220'000 && !HasFailure(); ++round) {
        const Operation &f = random_.oneIn(8) ? kDivisions[random_.below(std::size(kDivisions))]
                                              : kOperations[random_.below(std::size(kOperations))];
        // Factors may have any length.
        const bool isLong = f.operation == '*' && random_.oneIn(50);
        const auto count = [&] { return isLong ? 1 + random_.below(300) : random_.count(); };
        const int digitsA = count();
        int digitsB = random_.oneIn(3) ? digitsA : count();
        const std::string a = item(f.form, digitsA);
        std::string b = item(f.form, digitsB);
        if (random_.oneIn(8)) { // equal magnitudes, in items of different widths
            digitsB = std::min(digitsA + random_.below(9), 125) | (f.form == Pckd ? 1 : 0);
            const Value value = valueOf(f.form, a, digitsA);
            b = random_.item(f.form, fit(value.digits, digitsB), random_.oneIn(2),
                             Validation::lenient);
        }
        const bool divides = f.operation == '/' || f.operation == '%';
        if (divides && valueOf(f.form, b, digitsB).isZero()) {
            continue;
        }
        const bool mayOverlap =
            f.operation != '*' || digitsA + digitsB <= (f.form == Pckd ? 64 : 126);
        const auto place = mayOverlap ? static_cast<Place>(random_.below(3)) : apart;
        check(f, a, digitsA, b, digitsB, isLong ? count() : 1 + random_.below(140), place);
    }
}

TEST_F(Arithmetic, IncrementsAgreeWithSums) {
    for (int round = 0; round < 60'000 && !HasFailure(); ++round) {
        const Increment &f = kIncrements[random_.below(std::size(kIncrements))];
        const int digits = random_.count();
        const std::string accumulator = item(f.form, digits);
        const uint64_t magnitude = random_.integer();
        auto value = static_cast<int64_t>(random_.oneIn(2) ? 0 - magnitude : magnitude);
        value = f.bits == 32 ? static_cast<int32_t>(value) : value;
        uint8_t *at = rooms_[onFirst].put(accumulator, random_);
        if (value != 0) { // which leaves the bytes as they are
            const Value sum =
                result(f.operation, valueOf(f.form, accumulator, digits), valueOf(value));
            rooms_[onFirst].expect(at, stored(f.form, sum, digits));
        }
        EXPECT_EQ(f.call(at, digits, value), at);
        EXPECT_TRUE(rooms_[onFirst].isAsExpected())
            << f.name << " " << kit::hex(accumulator) << " and " << value << ": "
            << kit::hex(at, accumulator.size());
    }
}

// Signs worked out by hand, and bytes that plain arithmetic does not know, in hexadecimal.
TEST_F(Arithmetic, SignsAndOddBytes) {
    const struct {
        const char *function, *op1, *op2, *wanted;
    } examples[] = {
        {"ADD_Pckd", "999d", "1d", "000d"}, // the sign of the true result
        {"ADD_Pckd", "5d", "5c", "0d"},     // a zero keeps the first sign
        {"MPY_Pckd", "007b", "000e", "00000d"},
        {"MOD_Pckd", "6d", "3c", "0d"}, // after long division
        {"MOD_Pckd", "6d", "6c", "0c"}, // equal magnitudes
        {"DIV_Pckd", "2d", "3c", "0c"},
        {"MOD_Pckd", "2b", "3c", "2d"},
        {"ADD_Znd", "310042", "31", "310033"}, // a byte that no carry reaches stays as it is
        {"ADD_Znd", "4a323330", "31", "4a323331"},
        {"SUB_Znd", "4a35", "3131", "3934"},     // a letter in front counts by its low half
        {"MOD_Znd", "4173", "3939", "30304173"}, // copied as it is
    };
    for (const auto &[function, op1, op2, wanted] : examples) {
        const Operation &f = named(kOperations, function);
        const auto digits = [&f](const char *hex) {
            const auto nibbles = static_cast<int>(strlen(hex));
            return f.form == Pckd ? nibbles - 1 : nibbles / 2;
        };
        uint8_t *target = rooms_[apart].put(bytesOf(f.form, digits(wanted)), random_);
        rooms_[apart].expect(target, unhex(wanted));
        f.call(rooms_[onFirst].put(unhex(op1), random_), rooms_[onSecond].put(unhex(op2), random_),
               target, digits(wanted), digits(op2), digits(op1));
        EXPECT_TRUE(rooms_[apart].isAsExpected()) << function << " " << op1 << " " << op2;
    }
    // Packed division tells whether the dividend reached the divisor.
    uint8_t targets[2];
    const auto divided = [&targets](const char *dividend) {
        return _zorcBCD_DIVR_Pckd(address(dividend), address("\x3C"), targets, targets + 1, 1, 1, 1,
                                  1);
    };
    EXPECT_EQ(divided("\x2C"), 0);
    EXPECT_EQ(divided("\x3C"), 1);
    EXPECT_EQ(divided("\x7D"), 1);
}

void calculateGarbage() {
    Random random(21);
    Room rooms[3];
    for (int round = 0; round < 20'000 && !testing::Test::HasFailure(); ++round) {
        const Operation &f = kOperations[random.below(std::size(kOperations))];
        const int digits1 = random.count();
        const int digits2 = random.count();
        const int bytes = 1 + random.below(80);
        std::string divisor = random.garbage(bytesOf(f.form, digits2));
        divisor.back() = '\x99'; // not zero
        uint8_t *op1 = rooms[onFirst].put(random.garbage(bytesOf(f.form, digits1)), random);
        uint8_t *op2 = rooms[onSecond].put(divisor, random);
        uint8_t *target = rooms[apart].put(bytes, random);
        f.call(op1, op2, target, f.form == Pckd ? bytes * 2 - 1 : bytes, digits2, digits1);
        rooms[apart].expect(target, std::string(target, target + bytes));
        EXPECT_TRUE(areAsExpected(rooms))
            << f.name << " " << digits1 << " " << digits2 << " into " << bytes << " bytes";
    }
}

TEST(Garbage, StaysWithinBounds) {
    const auto result =
        kit::runChild(calculateGarbage, kit::Environment{{"COBOL_BCD_NOVALIDATE", "1"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
}

} // namespace

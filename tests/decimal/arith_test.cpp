// Decimal arithmetic through its exported functions, against integers of any length.
#include "decimal/arithmetic_model.h"
#include "support/kit.h"

namespace {

using namespace model;

// Division with both targets, one of them at a time. The packed one tells whether the dividend
// reached the divisor.
template <Form form, char operation>
uint8_t *divideBoth(const uint8_t *op1, const uint8_t *op2, uint8_t *target, int32_t targetDigits,
                    int32_t op2Digits, int32_t op1Digits) {
    uint8_t other[140];
    uint8_t *quotient = operation == '/' ? target : other;
    uint8_t *remainder = operation == '/' ? other : target;
    const auto call = [&](auto function) {
        return function(op1, op2, quotient, remainder, targetDigits, targetDigits, op2Digits,
                        op1Digits);
    };
    if constexpr (form == Pckd) {
        const auto magnitude = [](const uint8_t *item, int digits) {
            return valueOf(Pckd, {item, item + bytesOf(Pckd, digits)}, digits).magnitude;
        };
        const bool reached = magnitude(op1, op1Digits) >= magnitude(op2, op2Digits);
        EXPECT_EQ(call(_zorcBCD_DIVR_Pckd), reached ? 1 : 0);
    } else {
        EXPECT_EQ(call(_zorcBCD_DIVR_Znd), quotient);
    }
    return target;
}
constexpr Operation kDivisions[] = {{"DIVR_Pckd", Pckd, '/', divideBoth<Pckd, '/'>},
                                    {"DIVR_Pckd", Pckd, '%', divideBoth<Pckd, '%'>},
                                    {"DIVR_Znd", Znd, '/', divideBoth<Znd, '/'>},
                                    {"DIVR_Znd", Znd, '%', divideBoth<Znd, '%'>}};

enum Place { onFirst, onSecond, apart };

struct Operand {
    std::string bytes;
    int digits;
};

// One call, with every operand at an address of its own kind.
void check(const Operation &f, const Operand &a, const Operand &b, int digits, Place place,
           const std::string &wanted, Random &random) {
    static Room rooms[3]; // by Place
    const int bytes = bytesOf(f.form, digits);
    uint8_t *const at[] = {rooms[onFirst].put(a.bytes, random),
                           rooms[onSecond].put(b.bytes, random), rooms[apart].put(bytes, random)};
    EXPECT_EQ(f.call(at[onFirst], at[onSecond], at[place], digits, b.digits, a.digits), at[place]);
    const std::string got(at[place], at[place] + bytes);
    rooms[place].expect(at[place], wanted);
    EXPECT_TRUE(std::all_of(rooms, rooms + 3, [](const Room &r) { return r.isAsExpected(); }))
        << f.name << " " << kit::hex(a.bytes) << " (" << a.digits << ") " << kit::hex(b.bytes)
        << " (" << b.digits << ") into " << digits << " digits, place " << place << ": "
        << kit::hex(got);
}

// The second operand: any, or one with which the carries of a sum, a product or a quotient go far.
std::string secondOperand(const Operation &f, const Value &a, int digits, Random &random) {
    if (f.bits != 0) {
        auto value = static_cast<int64_t>(random.oneIn(2) ? random.integer() : -random.integer());
        value = f.bits == 32 ? static_cast<int32_t>(value) : value;
        return {reinterpret_cast<const char *>(&value), sizeof value};
    }
    std::string magnitude = random.digits(digits);
    if (random.oneIn(8)) { // equal magnitudes, in items of different widths
        magnitude = fit(a.magnitude.str(), digits);
    } else if (f.operation == '*' && a.magnitude != 0 && random.oneIn(4)) {
        // The product is next to one with runs of zeros.
        const int places = static_cast<int>(a.magnitude.str().size()) + digits;
        const Integer product = integerOf(random.digits(places));
        magnitude = fit(Integer(product / a.magnitude + 1).str(), digits);
    }
    return random.item(f.form, magnitude, random.oneIn(2), Validation::lenient);
}

void checkRandom(Random &random) {
    const Operation &f = random.oneIn(8)   ? random.among(kDivisions)
                         : random.oneIn(4) ? random.among(kIncrements)
                                           : random.among(kOperations);
    // Factors may have any length.
    const bool isLong = f.operation == '*' && random.oneIn(50);
    const auto count = [&] { return isLong ? 1 + random.below(300) : random.count(); };
    const int digitsA = count();
    const int digitsB = random.oneIn(3)   ? digitsA
                        : random.oneIn(6) ? std::min(digitsA + random.below(9), 126)
                                          : count();
    const int digits = isLong ? count() : 1 + random.below(140);
    const std::string a =
        random.item(f.form, random.digits(digitsA), random.oneIn(2), Validation::lenient);
    const Value valueA = valueOf(f.form, a, digitsA);
    const std::string b = secondOperand(f, valueA, digitsB, random);
    const Value valueB = secondValue(f, b, digitsB);
    if (valueB.magnitude == 0 && (f.operation == '/' || f.operation == '%')) {
        return;
    }
    const bool mayOverlap = f.operation != '*' || digitsA + digitsB <= (f.form == Pckd ? 64 : 126);
    const auto place = f.bits != 0  ? onFirst
                       : mayOverlap ? static_cast<Place>(random.below(3))
                                    : apart;
    // On an operand the target has its length.
    const int targetDigits = place == onFirst ? digitsA : place == onSecond ? digitsB : digits;
    const bool isNothing = f.bits != 0 && valueB.magnitude == 0; // which leaves the bytes alone
    const std::string wanted =
        isNothing ? a : stored(f.form, result(f.operation, valueA, valueB), targetDigits);
    check(f, {a, digitsA}, {b, digitsB}, targetDigits, place, wanted, random);
}

// Bytes that are no digits, in hexadecimal.
constexpr struct {
    Form form;
    decltype(Operation::call) call;
    const char *op1, *op2, *wanted;
} kExamples[] = {
    {Pckd, _zorcBCD_ADD_Pckd, "1a2c", "110a", "0000312c"}, // a nibble counts by its value
    {Pckd, _zorcBCD_ADD_Pckd, "404040", "2c", "0040406c"}, // blanks are digits with a sign of 0
    {Pckd, _zorcBCD_MPY_Pckd, "202020", "6c", "0121212c"},
    {Znd, _zorcBCD_ADD_Znd, "310042", "31", "310033"}, // where no carry goes it stays as it is
    {Znd, _zorcBCD_ADD_Znd, "4a323330", "31", "4a323331"},
    {Znd, _zorcBCD_SUB_Znd, "4a35", "3131", "3934"},     // a letter in front counts by its low half
    {Znd, _zorcBCD_MOD_Znd, "4173", "3939", "30304173"}, // copied as it is
};

void runModel() {
    Random random(5);
    for (int round = 0; round < 140'000 && !testing::Test::HasFailure(); ++round) {
        checkRandom(random);
    }
}

void runWithExamples() {
    Random random(5);
    for (const auto &example : kExamples) {
        const auto operand = [&](const char *hex) {
            const std::string bytes = unhex(hex);
            const auto size = static_cast<int>(bytes.size());
            return Operand{bytes, example.form == Pckd ? 2 * size - 1 : size};
        };
        const auto [wanted, digits] = operand(example.wanted);
        check({"example", example.form, 0, example.call}, operand(example.op1),
              operand(example.op2), digits, apart, wanted, random);
    }
    runModel();
}

TEST(Arithmetic, AgreesWithTheModel) {
    kit::expectChild({.environment = {{"COBOL_BCD_NOVALIDATE", ""}}}, runModel);
    kit::expectChild({.environment = {{"COBOL_BCD_NOVALIDATE", "1"}}}, runWithExamples);
}

} // namespace

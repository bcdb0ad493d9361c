// Decimal arithmetic through its exported functions, against plain arithmetic on digit texts.
#include <cstring>
#include <limits>

#include "decimal.h"
#include "decimal/model.h"
#include "support/kit.h"

using namespace model;

namespace {

using Binary = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);

int32_t count(std::size_t digits) {
    return static_cast<int32_t>(digits);
}

struct Function {
    const char *name;
    Form form;
    char operation;
    Binary call;
};
std::ostream &operator<<(std::ostream &stream, const Function &f) {
    return stream << f.name;
}

Value negated(Value value) {
    value.negative = !value.negative;
    return value;
}

// What the target holds; a remainder is that of the long division or the dividend itself.
Value expected(char operation, const Value &a, const Value &b) {
    const bool differ = a.negative != b.negative;
    std::string rest;
    switch (operation) {
    case '+':
        return sum(a, b);
    case '-':
        return sum(a, negated(b));
    case '*':
        return {multiply(a.digits, b.digits), differ};
    default:
        break;
    }
    const int order = compare(a.digits, b.digits);
    const std::string quotient = divide(a.digits, b.digits, rest);
    if (operation == '/') {
        return {quotient, order >= 0 && differ};
    }
    return {rest, order != 0 && a.negative};
}

enum class Place { apart, onFirst, onSecond };

// One call, with every operand at an address of its own kind.
void checkCall(const Function &f, Generator &random, Item a, Item b, std::size_t digits,
               Place place) {
    if (place != Place::apart) {
        digits = place == Place::onFirst ? a.digits : b.digits;
    }
    const Value result = expected(f.operation, a.value, b.value);
    Field first(a.bytes, random.below(16));
    Field second(b.bytes, random.below(16));
    Field apart(std::string(bytesOf(f.form, digits), '\xEE'), random.below(16));
    Field &target = place == Place::apart ? apart : place == Place::onFirst ? first : second;
    uint8_t *answer = f.call(first.data(), second.data(), target.data(), count(digits),
                             count(b.digits), count(a.digits));
    EXPECT_EQ(answer, target.data());
    EXPECT_EQ(kit::hex(target.bytes()), kit::hex(stored(f.form, result, digits)))
        << f.name << " " << kit::hex(a.bytes) << " (" << a.digits << ") " << kit::hex(b.bytes)
        << " (" << b.digits << ") into " << digits << " digits, place " << static_cast<int>(place);
    for (const Field *field : {&first, &second, &apart}) {
        EXPECT_TRUE(field->surroundingsAreWhole()) << f.name;
    }
    if (place != Place::onFirst) {
        EXPECT_EQ(first.bytes(), a.bytes);
    }
    if (place != Place::onSecond) {
        EXPECT_EQ(second.bytes(), b.bytes);
    }
}

class Arithmetic : public testing::TestWithParam<Function> {};

TEST_P(Arithmetic, AgreesWithPlainArithmetic) {
    const Function &f = GetParam();
    Generator random(static_cast<unsigned>(f.operation));
    constexpr std::size_t kWidths[] = {1,  2,  3,  4,  5,  7,  8,  9,  15, 16,
                                       17, 18, 31, 32, 33, 62, 63, 64, 65, 126};
    const std::size_t widest = f.operation == '*' ? 63 : 126;
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        // Widths around those at which a core changes its way, and any others.
        auto width = [&](std::size_t limit) {
            const std::size_t some =
                random.oneIn(2) ? kWidths[random.below(std::size(kWidths))] : 1 + random.below(126);
            return std::min(some, limit);
        };
        Item a = random.item(f.form, width(widest));
        Item b =
            random.oneIn(3) ? random.item(f.form, a.digits) : random.item(f.form, width(widest));
        if (random.oneIn(8)) { // equal magnitudes, in items of different widths
            const std::size_t wider = std::min(widest, a.digits + random.below(9));
            const std::string digits = a.value.digits;
            if (digits.size() <= wider) {
                const std::size_t places = f.form == Form::packed ? wider | 1U : wider;
                b = random.withDigits(f.form, places, lowDigits(digits, places));
            }
        }
        if ((f.operation == '/' || f.operation == '%') && b.value.isZero()) {
            continue;
        }
        const std::size_t sumDigits = a.digits + b.digits;
        const bool mayOverlap =
            f.operation != '*' || sumDigits <= (f.form == Form::packed ? 64 : 126);
        const auto place = mayOverlap ? static_cast<Place>(random.below(3)) : Place::apart;
        checkCall(f, random, a, b, width(140), place);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Arithmetic,
                         testing::Values(Function{"ADD_Pckd", Form::packed, '+', _zorcBCD_ADD_Pckd},
                                         Function{"SUB_Pckd", Form::packed, '-', _zorcBCD_SUB_Pckd},
                                         Function{"MPY_Pckd", Form::packed, '*', _zorcBCD_MPY_Pckd},
                                         Function{"DIV_Pckd", Form::packed, '/', _zorcBCD_DIV_Pckd},
                                         Function{"MOD_Pckd", Form::packed, '%', _zorcBCD_MOD_Pckd},
                                         Function{"ADD_Znd", Form::zoned, '+', _zorcBCD_ADD_Znd},
                                         Function{"SUB_Znd", Form::zoned, '-', _zorcBCD_SUB_Znd},
                                         Function{"MPY_Znd", Form::zoned, '*', _zorcBCD_MPY_Znd},
                                         Function{"DIV_Znd", Form::zoned, '/', _zorcBCD_DIV_Znd},
                                         Function{"MOD_Znd", Form::zoned, '%', _zorcBCD_MOD_Znd}),
                         [](const auto &testInfo) { return std::string(testInfo.param.name); });

TEST(Multiply, TakesFactorsOfAnyLength) {
    Generator random(5);
    for (const Form form : {Form::packed, Form::zoned}) {
        for (const unsigned most : {128U, 131U, 300U}) {
            const Function f{"MPY", form, '*',
                             form == Form::packed ? _zorcBCD_MPY_Pckd : _zorcBCD_MPY_Znd};
            for (int round = 0; round < 40; ++round) {
                checkCall(f, random, random.item(form, most),
                          random.item(form, 1 + random.below(most)), 1 + random.below(2 * most),
                          Place::apart);
            }
        }
    }
}

TEST(DivideWithRemainder, GivesBothTargets) {
    Generator random(9);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const Form form = random.oneIn(2) ? Form::packed : Form::zoned;
        Item a = random.item(form, 1 + random.below(random.oneIn(4) ? 126 : 31));
        Item b = random.item(form, 1 + random.below(random.oneIn(4) ? 126 : 18));
        if (b.value.isZero()) {
            continue;
        }
        const std::size_t quotientDigits = 1 + random.below(40);
        const std::size_t remainderDigits = random.oneIn(3) ? a.digits : 1 + random.below(40);
        const Value quotient = expected('/', a.value, b.value);
        const Value remainder = expected('%', a.value, b.value);
        Field first(a.bytes, random.below(16));
        Field second(b.bytes, random.below(16));
        Field quotientField(std::string(bytesOf(form, quotientDigits), '\x11'), random.below(16));
        Field apart(std::string(bytesOf(form, remainderDigits), '\x22'), random.below(16));
        Field &remainderField = remainderDigits == a.digits ? first : apart;
        uint8_t *q = quotientField.data();
        uint8_t *r = remainderField.data();
        if (form == Form::packed) {
            const int32_t status =
                _zorcBCD_DIVR_Pckd(first.data(), second.data(), q, r, count(remainderDigits),
                                   count(quotientDigits), count(b.digits), count(a.digits));
            EXPECT_EQ(status, compare(a.value.digits, b.value.digits) >= 0 ? 1 : 0);
        } else {
            EXPECT_EQ(_zorcBCD_DIVR_Znd(first.data(), second.data(), q, r, count(remainderDigits),
                                        count(quotientDigits), count(b.digits), count(a.digits)),
                      q);
        }
        EXPECT_EQ(kit::hex(quotientField.bytes()), kit::hex(stored(form, quotient, quotientDigits)))
            << kit::hex(a.bytes) << " / " << kit::hex(b.bytes);
        EXPECT_EQ(kit::hex(remainderField.bytes()),
                  kit::hex(stored(form, remainder, remainderDigits)))
            << kit::hex(a.bytes) << " / " << kit::hex(b.bytes);
        for (const Field *field : {&first, &second, &quotientField, &apart}) {
            EXPECT_TRUE(field->surroundingsAreWhole());
        }
    }
}

// ---- increments

Value valueOf(int64_t value) {
    const std::string text = std::to_string(value);
    return value < 0 ? Value{text.substr(1), true} : Value{text, false};
}

// One value through all functions of its width; Int4 takes those that fit.
void checkIncrement(Generator &random, const Item &item, Form form, int64_t value) {
    struct Case {
        Value result;
        uint8_t *(*eight)(uint8_t *, int32_t, int64_t);
        uint8_t *(*four)(uint8_t *, int32_t, int32_t);
    };
    const Value operand = valueOf(value);
    const bool packed = form == Form::packed;
    const Case cases[] = {
        {sum(item.value, operand), packed ? _zorcBCD_ADD_Pckd_Int8 : _zorcBCD_ADD_Znd_Int8,
         packed ? _zorcBCD_ADD_Pckd_Int4 : _zorcBCD_ADD_Znd_Int4},
        {sum(item.value, negated(operand)), packed ? _zorcBCD_SUB_Pckd_Int8 : _zorcBCD_SUB_Znd_Int8,
         packed ? _zorcBCD_SUB_Pckd_Int4 : _zorcBCD_SUB_Znd_Int4},
    };
    for (const Case &c : cases) {
        const std::string wanted = value == 0 ? item.bytes : stored(form, c.result, item.digits);
        for (const bool wide : {true, false}) {
            if (!wide && value != static_cast<int32_t>(value)) {
                continue;
            }
            Field field(item.bytes, random.below(16));
            uint8_t *answer =
                wide ? c.eight(field.data(), count(item.digits), value)
                     : c.four(field.data(), count(item.digits), static_cast<int32_t>(value));
            EXPECT_EQ(answer, field.data());
            EXPECT_EQ(kit::hex(field.bytes()), kit::hex(wanted))
                << kit::hex(item.bytes) << " and " << value << (wide ? " Int8" : " Int4");
            EXPECT_TRUE(field.surroundingsAreWhole());
        }
    }
}

TEST(Increment, AgreesWithPlainArithmetic) {
    constexpr int64_t kEdges[] = {0,
                                  1,
                                  -1,
                                  9,
                                  10,
                                  99,
                                  100,
                                  9999999,
                                  10000000,
                                  99999999,
                                  100000000,
                                  std::numeric_limits<int32_t>::min(),
                                  std::numeric_limits<int32_t>::max(),
                                  999999999999999,
                                  1000000000000000,
                                  -999999999999999999,
                                  std::numeric_limits<int64_t>::min(),
                                  std::numeric_limits<int64_t>::max()};
    Generator random(3);
    std::mt19937_64 values(4);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const Form form = random.oneIn(2) ? Form::packed : Form::zoned;
        const Item item = random.item(form, 1 + random.below(random.oneIn(4) ? 126 : 22));
        const int64_t value = random.oneIn(3) ? kEdges[random.below(std::size(kEdges))]
                                              : static_cast<int64_t>(values()) >> random.below(64);
        checkIncrement(random, item, form, value);
    }
}

// ---- named cases

struct Example {
    Function function;
    std::string op1, op2, wanted; // bytes in hexadecimal
    int32_t digits1, digits2, targetDigits;
};

TEST(Arithmetic, SignsPadsAndCuts) {
    const Function add{"ADD_Pckd", Form::packed, '+', _zorcBCD_ADD_Pckd};
    const Function sub{"SUB_Pckd", Form::packed, '-', _zorcBCD_SUB_Pckd};
    const Function mpy{"MPY_Pckd", Form::packed, '*', _zorcBCD_MPY_Pckd};
    const Function div{"DIV_Pckd", Form::packed, '/', _zorcBCD_DIV_Pckd};
    const Function mod{"MOD_Pckd", Form::packed, '%', _zorcBCD_MOD_Pckd};
    const Function addZoned{"ADD_Znd", Form::zoned, '+', _zorcBCD_ADD_Znd};
    const Function subZoned{"SUB_Znd", Form::zoned, '-', _zorcBCD_SUB_Znd};
    const Function divZoned{"DIV_Znd", Form::zoned, '/', _zorcBCD_DIV_Znd};
    const Function modZoned{"MOD_Znd", Form::zoned, '%', _zorcBCD_MOD_Znd};
    const Example examples[] = {
        {add, "999C", "1C", "000C", 3, 1, 3},
        {add, "999D", "1D", "000D", 3, 1, 3}, // the sign of the true result
        {add, "999C", "1C", "01000C", 3, 1, 5},
        {add, "5C", "5D", "0C", 1, 1, 1},
        {add, "5D", "5C", "0D", 1, 1, 1}, // a zero keeps the first sign
        {sub, "0D", "0D", "0D", 1, 1, 1},
        {add, "000000", "007F", "00007C", 5, 3, 5}, // binary zeros count as zero
        {add, "0000", "000000", "000C", 3, 5, 3},
        {add, "0050", "1C", "006C", 3, 1, 3},     // so does a lone last byte without a sign
        {add, "91234F", "1A", "01235C", 4, 1, 4}, // the pad is read, and never stored
        {mpy, "007B", "000E", "00000D", 3, 3, 5},
        {mpy, "91234C", "10C", "12340C", 4, 2, 5},
        {div, "7D", "2C", "3D", 1, 1, 1},
        {mod, "7D", "2C", "1D", 1, 1, 1},
        {div, "7C", "2D", "3D", 1, 1, 1},
        {mod, "7C", "2D", "1C", 1, 1, 1},
        {mod, "6D", "3C", "0D", 1, 1, 1}, // after long division
        {div, "6D", "6C", "1D", 1, 1, 1},
        {mod, "6D", "6C", "0C", 1, 1, 1}, // equal magnitudes
        {div, "2D", "3C", "0C", 1, 1, 1},
        {mod, "2B", "3C", "2D", 1, 1, 1},
        {addZoned, "310042", "31", "310033", 3, 1,
         3}, // a byte that no carry reaches stays as it is
        {addZoned, "310042", "3939", "323031", 3, 2, 3}, // a null is a zero digit
        {addZoned, "41313233", "35", "41313238", 4, 1, 4},
        {addZoned, "4A323330", "31", "4A323331", 4, 1, 4},
        {subZoned, "4A35", "3131", "3934", 2, 2, 2}, // a letter in front counts by its low half
        {addZoned, "3920", "31", "3931", 2, 1, 2},   // a blank at the end is zero
        {addZoned, "397D", "3031", "3879", 2, 2, 2},
        {divZoned, "3170", "35", "72", 2, 1, 1},
        {divZoned, "75", "35", "71", 1, 1, 1},
        {modZoned, "75", "35", "30", 1, 1, 1},
        {modZoned, "4173", "3939", "30304173", 2, 2, 4},     // copied as it is,
        {modZoned, "20003173", "3939", "30303173", 4, 2, 4}, // but for zeros in front
    };
    auto bytes = [](std::string text) {
        return packNibbles(text.size() % 2 == 0 ? text : "0" + text);
    };
    for (const Example &e : examples) {
        std::string op1 = bytes(e.op1);
        std::string op2 = bytes(e.op2);
        const std::string wanted = bytes(e.wanted);
        Field target(std::string(wanted.size(), '\x77'), 1);
        e.function.call(reinterpret_cast<uint8_t *>(op1.data()),
                        reinterpret_cast<uint8_t *>(op2.data()), target.data(), e.targetDigits,
                        e.digits2, e.digits1);
        EXPECT_EQ(kit::hex(target.bytes()), kit::hex(wanted))
            << e.function.name << " " << e.op1 << " " << e.op2;
    }
}

} // namespace

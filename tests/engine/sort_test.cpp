// Random sorts beside a plain model: records are made of values, the model orders by the values.
#include <algorithm>
#include <cstdint>
#include <random>
#include <variant>

#include "engine_kit.h"

using namespace engine_kit;

namespace {

std::mt19937 random(20261);

int pick(int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

using Value = std::variant<std::string, std::u16string, int64_t, double>;

// A kind of key: what its text is, how a value is made, and how it lies in a record.
struct Kind {
    char letter;
    const char *sign;
    int length;
    Value (*make)();
    std::string (*encode)(const Value &value);
};

Value number(int digits, bool isSigned) {
    int64_t value = 0;
    for (int count = pick(0, digits); count > 0; --count) {
        value = value * 10 + pick(0, 9);
    }
    return isSigned && pick(0, 1) == 1 ? -value : value;
}

std::string digitsOf(const Value &value, int digits) {
    std::string text = std::to_string(std::abs(std::get<int64_t>(value)));
    return std::string(static_cast<std::size_t>(digits) - text.size(), '0') + text;
}

bool isNegative(const Value &value) {
    return std::get<int64_t>(value) < 0;
}

template <class Plain> std::string bytesOf(Plain value) {
    return std::string(reinterpret_cast<const char *>(&value), sizeof value);
}

std::string packed(const Value &value, char positive) {
    const std::string digits = digitsOf(value, 5);
    const char sign = isNegative(value) ? '\x0D' : positive;
    return {static_cast<char>((digits[0] & 15) << 4 | (digits[1] & 15)),
            static_cast<char>((digits[2] & 15) << 4 | (digits[3] & 15)),
            static_cast<char>((digits[4] & 15) << 4 | sign)};
}

std::string overpunched(std::string digits, std::size_t at, bool negative) {
    digits[at] = static_cast<char>(digits[at] + (negative ? 0x40 : 0));
    return digits;
}

Value textOf(int length, int low, int high) {
    std::string text;
    for (int at = 0; at < length; ++at) {
        text += static_cast<char>(pick(low, high));
    }
    return text;
}

const Kind kKinds[] = {
    {'t', "", 3, [] { return textOf(3, 'a', 'd'); },
     [](const Value &value) { return std::get<std::string>(value); }},
    {'t', "", 40,
     [] { return Value(std::string(30, 'x') + std::get<std::string>(textOf(10, 0, 255))); },
     [](const Value &value) { return std::get<std::string>(value); }},
    {'t', "", 300,
     [] { return Value(std::string(294, '=') + std::get<std::string>(textOf(6, 0, 3))); },
     [](const Value &value) { return std::get<std::string>(value); }},
    {'z', "", 5, [] { return number(5, false); },
     [](const Value &value) { return digitsOf(value, 5); }},
    {'z', "L", 6, [] { return number(5, true); },
     [](const Value &value) { return (isNegative(value) ? "-" : "+") + digitsOf(value, 5); }},
    {'z', "T", 6, [] { return number(5, true); },
     [](const Value &value) { return digitsOf(value, 5) + (isNegative(value) ? "-" : "+"); }},
    {'z', "l", 5, [] { return number(5, true); },
     [](const Value &value) { return overpunched(digitsOf(value, 5), 0, isNegative(value)); }},
    {'z', "t", 5, [] { return number(5, true); },
     [](const Value &value) { return overpunched(digitsOf(value, 5), 4, isNegative(value)); }},
    {'p', "s", 3, [] { return number(5, true); },
     [](const Value &value) { return packed(value, '\x0C'); }},
    {'p', "", 3, [] { return number(5, false); },
     [](const Value &value) { return packed(value, '\x0F'); }},
    {'b', "s", 2, [] { return number(4, true); },
     [](const Value &value) { return bytesOf(static_cast<int16_t>(std::get<int64_t>(value))); }},
    {'b', "", 4, [] { return Value(static_cast<int64_t>(random())); },
     [](const Value &value) { return bytesOf(static_cast<uint32_t>(std::get<int64_t>(value))); }},
    {'b', "s", 8, [] { return number(18, true); },
     [](const Value &value) { return bytesOf(std::get<int64_t>(value)); }},
    {'f', "", 4, [] { return Value(pick(-500, 500) / 4.0); },
     [](const Value &value) { return bytesOf(static_cast<float>(std::get<double>(value))); }},
    {'f', "", 8, [] { return Value(pick(-500, 500) * 1e200); },
     [](const Value &value) { return bytesOf(std::get<double>(value)); }},
    {'n', "", 4,
     [] {
         return Value(std::u16string{static_cast<char16_t>(pick(250, 260)),
                                     static_cast<char16_t>(pick(0, 0xFFFF))});
     },
     [](const Value &value) {
         return std::string(reinterpret_cast<const char *>(std::get<std::u16string>(value).data()),
                            4);
     }},
};

struct Field {
    const Kind *kind;
    bool ascending;
};

struct Made {
    std::vector<Value> values;
    std::string record;
};

int compareValues(const Value &left, const Value &right, const uint8_t *weights) {
    if (weights != nullptr && std::holds_alternative<std::string>(left)) {
        const auto weighed = [weights](std::string text) {
            for (char &byte : text) {
                byte = static_cast<char>(weights[static_cast<uint8_t>(byte)]);
            }
            return text;
        };
        return weighed(std::get<std::string>(left)).compare(weighed(std::get<std::string>(right)));
    }
    return left < right ? -1 : right < left ? 1 : 0;
}

// A sort of random keys; the tail of each record tells where it stood.
struct Scenario {
    std::vector<Field> fields{};
    std::vector<Made> made{};
    bool variable = false;
    uint32_t longest = 0;
    uint8_t weights[256]{};
    bool weighed = false;

    Scenario(int keys, std::size_t count, bool variableRecords) : variable(variableRecords) {
        for (int key = 0; key < keys; ++key) {
            fields.push_back({&kKinds[pick(0, std::size(kKinds) - 1)], pick(0, 1) == 1});
        }
        weighed = pick(0, 2) == 0;
        for (int byte = 0; byte < 256; ++byte) {
            weights[byte] = static_cast<uint8_t>(255 - byte / 2);
        }
        for (std::size_t number = 0; number < count; ++number) {
            Made one;
            for (const Field &field : fields) {
                one.values.push_back(field.kind->make());
                one.record += field.kind->encode(one.values.back());
            }
            one.record += bytesOf(static_cast<uint32_t>(number));
            one.record += std::string(variable ? static_cast<std::size_t>(pick(0, 90)) : 31, '.');
            longest = std::max(longest, static_cast<uint32_t>(one.record.size()));
            made.push_back(std::move(one));
        }
        longest = std::max(longest, 400U);
        if (!variable) {
            for (Made &one : made) {
                one.record.resize(longest, ' ');
            }
        }
    }

    std::string keytext(bool ownWeights) const {
        std::string text = weighed ? "w" : "";
        for (int byte = 0; weighed && ownWeights && byte < 256; ++byte) {
            text += kit::hex(&weights[byte], 1);
        }
        text += weighed ? ";" : "";
        std::size_t offset = 0;
        for (const Field &field : fields) {
            text += std::string(offset == 0 ? "" : ";") + (field.ascending ? 'a' : 'd') +
                    field.kind->letter + std::to_string(offset) + "+" +
                    std::to_string(field.kind->length) + field.kind->sign;
            offset += static_cast<std::size_t>(field.kind->length);
        }
        return text;
    }

    Records records() const {
        Records all;
        for (const Made &one : made) {
            all.push_back(one.record);
        }
        return all;
    }

    Records sorted() const {
        std::vector<const Made *> order;
        for (const Made &one : made) {
            order.push_back(&one);
        }
        std::stable_sort(order.begin(), order.end(), [this](const Made *left, const Made *right) {
            for (std::size_t key = 0; key < fields.size(); ++key) {
                const int result = compareValues(left->values[key], right->values[key],
                                                 weighed ? weights : nullptr);
                if (result != 0) {
                    return fields[key].ascending == (result < 0);
                }
            }
            return false;
        });
        Records all;
        for (const Made *one : order) {
            all.push_back(one->record);
        }
        return all;
    }
};

Call callFor(const Scenario &scenario) {
    const RecordDesc record{scenario.variable ? SORT_VARIABLE : 0, 0,
                            scenario.variable ? 0 : scenario.longest};
    return {.record = record,
            .outRecord = record,
            .keytext = scenario.keytext(true),
            .keycount = static_cast<int32_t>(scenario.fields.size())};
}

} // namespace

// Every source into every target, in memory and with runs on disk, in as many passes as a megabyte
// needs, on one thread and on two.
TEST(Engine, SortsAsTheModelDoes) {
    const kit::TemporaryDirectory directory;
    const std::string in = directory.file("in");
    const std::string out = directory.file("out");
    for (int round = 0; round < 120; ++round) {
        const bool many = round % 13 == 12;
        const Scenario scenario(pick(1, 5), static_cast<std::size_t>(many ? 30000 : pick(0, 300)),
                                round % 2 == 0);
        Call call = callFor(scenario);
        call.options = static_cast<uint32_t>(many || round % 3 == 0 ? 1 : 0) |
                       static_cast<uint32_t>(round % 8 < 4 ? SORT_ONE_THREAD : 0);
        call.folder = directory.path();
        const Records records = scenario.records();
        const std::size_t half = records.size() / 2;
        const Records parts[2] = {{records.begin(), records.begin() + static_cast<long>(half)},
                                  {records.begin() + static_cast<long>(half), records.end()}};
        TestFile first(scenario.longest, scenario.variable, parts[0]);
        TestFile second(scenario.longest, scenario.variable, parts[1]);
        TestFile target(scenario.longest, scenario.variable, {"old"});
        TestFile copy(scenario.longest, scenario.variable);
        const int source = round / 3 % 3;
        const int goal = many ? round / 26 % 2 : round / 9 % 3;
        if (source == 0) {
            call.inputs = {&first, &second};
        } else if (source == 1) {
            call.inputWork = in.c_str();
            kit::writeFile(in, stored(parts[0], scenario.variable));
            call.buffer = stored(parts[1], scenario.variable);
        }
        if (source == 2 || goal == 2) {
            call.inputs = {};
            call.inputWork = nullptr;
            call.buffer = stored(records, scenario.variable);
        }
        if (goal == 0) {
            call.outputs = {&target, &copy};
        } else if (goal == 1) {
            call.outputWork = out.c_str();
        }
        ASSERT_EQ(call.run(), SORT_GOOD) << call.word << " " << call.value << " " << call.keytext;
        const std::string expected = stored(scenario.sorted(), scenario.variable);
        const std::string got = goal == 0   ? stored(target.records, scenario.variable)
                                : goal == 1 ? kit::readFile(out)
                                            : call.buffer;
        ASSERT_TRUE(got == expected) << round << " " << call.keytext << " " << records.size();
        ASSERT_TRUE(copy.records == target.records || goal != 0);
    }
}

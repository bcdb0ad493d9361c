// Random sorts beside a plain model: records are made of values, the model orders by the values.
#include <algorithm>
#include <cstdint>
#include <random>

#include "engine_kit.h"

using namespace engine_kit;

namespace {

std::mt19937 random(20261);

int pick(int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

// A kind of key as its text tells it.
struct Kind {
    char letter;
    const char *sign;
    std::size_t length;
};

constexpr Kind kKinds[] = {{'t', "", 3},  {'t', "", 40}, {'t', "", 300}, {'z', "", 5},
                           {'z', "L", 6}, {'z', "T", 6}, {'z', "l", 5},  {'z', "t", 5},
                           {'p', "s", 3}, {'p', "", 3},  {'b', "s", 2},  {'b', "", 4},
                           {'b', "s", 8}, {'f', "", 4},  {'f', "", 8},   {'n', "", 4}};

// What a key compares by: the ranks of its characters, or its number.
using Value = std::pair<std::u32string, long double>;

// Long texts differ far behind only.
Value putText(std::size_t length, const uint8_t *weights, std::string &record) {
    Value value;
    for (std::size_t at = 0; at < length; ++at) {
        const int byte = at + 6 < length ? '=' : length == 40 ? pick(0, 255) : pick('a', 'd');
        record += static_cast<char>(byte);
        value.first += weights != nullptr ? weights[byte] : static_cast<char32_t>(byte);
    }
    return value;
}

Value putNational(std::string &record) {
    const char16_t units[] = {static_cast<char16_t>(pick(250, 260)),
                              static_cast<char16_t>(pick(0, 0xFFFF))};
    record.append(reinterpret_cast<const char *>(units), sizeof units);
    return {{units[0], units[1]}, 0};
}

template <class Plain> Value putPlain(Plain plain, std::string &record) {
    record.append(reinterpret_cast<const char *>(&plain), sizeof plain);
    return {{}, static_cast<long double>(plain)};
}

// Five digits, with a sign where there is one.
Value putDecimal(const Kind &kind, std::string &record) {
    const int value = pick(0, 99999) % (pick(0, 1) == 1 ? 100000 : 100);
    const bool negative = *kind.sign != '\0' && pick(0, 1) == 1;
    std::string digits = std::to_string(100000 + value).substr(1);
    const char sign = negative ? '-' : '+';
    if (kind.letter == 'p') {
        const int nibble = negative ? 13 : *kind.sign == '\0' ? 15 : 12;
        for (std::size_t at = 0; at < 5; at += 2) {
            const int low = at == 4 ? nibble : digits[at + 1] - '0';
            record += static_cast<char>((digits[at] - '0') << 4 | low);
        }
    } else if (*kind.sign == 'L' || *kind.sign == 'T') {
        record += *kind.sign == 'L' ? sign + digits : digits + sign;
    } else {
        char &overpunched = *kind.sign == 'l' ? digits.front() : digits.back();
        overpunched = static_cast<char>(overpunched + (negative ? 0x40 : 0));
        record += digits;
    }
    return {{}, static_cast<long double>(negative ? -value : value)};
}

Value put(const Kind &kind, const uint8_t *weights, std::string &record) {
    switch (kind.letter) {
    case 't':
        return putText(kind.length, weights, record);
    case 'n':
        return putNational(record);
    case 'b':
        return kind.length == 2 ? putPlain(static_cast<int16_t>(random()), record)
               : kind.length == 4
                   ? putPlain(static_cast<uint32_t>(random()), record)
                   : putPlain(static_cast<int64_t>(random()) * pick(-9999, 9999), record);
    case 'f':
        return kind.length == 4 ? putPlain(static_cast<float>(pick(-500, 500)) / 4, record)
                                : putPlain(pick(-500, 500) * 1e200, record);
    default:
        return putDecimal(kind, record);
    }
}

// A sort of random keys; a number in each record tells where it stood.
struct Scenario {
    std::string keytext;
    int32_t keys = 0;
    uint32_t longest = 400;
    Records records;
    Records sorted;
    uint8_t weights[256];

    Scenario(int count, bool variable) {
        const bool weighed = pick(0, 2) == 0;
        for (int byte = 0; byte < 256; ++byte) {
            weights[byte] = static_cast<uint8_t>(255 - byte / 2);
        }
        const bool byProgram = pick(0, 1) == 1; // the weights are those of the program
        keytext = weighed ? "w" + (byProgram ? "" : kit::hex(weights, sizeof weights)) + ";" : "";
        std::vector<std::pair<const Kind *, bool>> fields;
        std::size_t offset = 0;
        for (keys = pick(1, 5); fields.size() < static_cast<std::size_t>(keys);) {
            fields.emplace_back(&kKinds[pick(0, std::size(kKinds) - 1)], pick(0, 1) == 1);
            const auto &[kind, ascending] = fields.back();
            keytext += std::string(offset == 0 ? "" : ";") + (ascending ? 'a' : 'd') +
                       kind->letter + std::to_string(offset) + "+" + std::to_string(kind->length) +
                       kind->sign;
            offset += kind->length;
        }
        longest = std::max(longest, static_cast<uint32_t>(offset) + 100);
        std::vector<std::vector<Value>> values;
        std::vector<std::size_t> order;
        for (int number = 0; number < count; ++number) {
            std::string record;
            values.emplace_back();
            for (const auto &field : fields) {
                values.back().push_back(put(*field.first, weighed ? weights : nullptr, record));
            }
            putPlain(number, record);
            record.resize(variable ? record.size() + static_cast<unsigned>(pick(0, 90)) : longest);
            records.push_back(record);
            order.push_back(order.size());
        }
        std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
            for (std::size_t key = 0; key < fields.size(); ++key) {
                if (values[left][key] != values[right][key]) {
                    return fields[key].second == (values[left][key] < values[right][key]);
                }
            }
            return false;
        });
        for (const std::size_t place : order) {
            sorted.push_back(records[place]);
        }
    }
};

} // namespace

// Every source into every target, in memory and with runs on disk, in as many passes as a megabyte
// needs, on one thread and on two.
TEST(Engine, SortsAsTheModelDoes) {
    const kit::TemporaryDirectory directory;
    const std::string in = directory.file("in");
    const std::string out = directory.file("out");
    kit::Program program("SORTER");
    program.ipcb[0].pcb = &program.pcb;
    for (int round = 0; round < 120; ++round) {
        const bool many = round % 13 == 12;
        const bool variable = round % 2 == 0;
        const Scenario scenario(many ? 30000 : round < 20 ? round / 4 : pick(0, 300), variable);
        const int goal = many ? round / 26 % 2 : round / 9 % 3;
        const int source = goal == 2 ? 2 : round / 3 % 3;
        const auto half = scenario.records.begin() + scenario.records.size() / 2;
        const Records firstHalf(scenario.records.begin(), half);
        const Records secondHalf(half, scenario.records.end());
        TestFile first(scenario.longest, variable, firstHalf);
        TestFile second(scenario.longest, variable, secondHalf);
        TestFile target(scenario.longest, variable, {"old"});
        TestFile copy(scenario.longest, variable);
        const RecordDesc record{variable ? SORT_VARIABLE : 0, 0, variable ? 0 : scenario.longest};
        Call call{.record = record,
                  .outRecord = record,
                  .keytext = scenario.keytext,
                  .keycount = scenario.keys};
        call.options = static_cast<uint32_t>(many || round % 3 == 0 ? 1 : 0) |
                       static_cast<uint32_t>(round % 8 < 4 ? SORT_ONE_THREAD : 0);
        call.folder = directory.path();
        call.ipcb = program.ipcb;
        program.pcb.collatingWeights = scenario.weights;
        if (source == 0) {
            call.inputs = {&first, &second};
        } else {
            kit::writeFile(in, stored(firstHalf, variable));
            call.inputWork = source == 1 ? in.c_str() : nullptr;
            call.buffer = stored(source == 1 ? secondHalf : scenario.records, variable);
        }
        if (goal == 0) {
            call.outputs = {&target, &copy};
        } else if (goal == 1) {
            call.outputWork = out.c_str();
        }
        ASSERT_EQ(call.run(), SORT_GOOD) << call.word << " " << call.value << " " << call.keytext;
        const std::string got = goal == 0   ? stored(target.records, variable)
                                : goal == 1 ? kit::readFile(out)
                                            : call.buffer;
        ASSERT_TRUE(got == stored(scenario.sorted, variable)) << round << " " << call.keytext;
        ASSERT_TRUE(copy.records == target.records || goal != 0);
    }
}

// Random sorts beside a plain model: records are made of values, the model orders by the values.
#include <cmath>

#include "engine_kit.h"
#include "sort/fields.h"

using namespace engine_kit;
using namespace sort_fields;

namespace {

// What the engine takes in another way than tables do: packed keys without a sign, and the order of
// national ones by their units.
SortKey engineKey(uint32_t offset) {
    SortKey key = randomKey(offset);
    key.format = key.type == SORT_KEY_PACKED ? oneOf<uint8_t>({0, 1}) : key.format;
    key.length = key.type == SORT_KEY_NATIONAL ? 4 : key.length;
    return key;
}

Field engineField(const SortKey &key, bool weighed) {
    Field field = randomField(key, weighed);
    if (key.type == SORT_KEY_PACKED && key.format == 0) {
        field.rank.first = std::abs(field.rank.first);
    } else if (key.type == SORT_KEY_NATIONAL) {
        const std::string &units = field.bytes;
        field.rank.second = {units[1], units[0], units[3], units[2]};
    }
    return field;
}

std::string textOf(const SortKey &key) {
    const char sign = key.type == SORT_KEY_ZONED ? "?LT?l???t"[key.format] : 's';
    std::string text{key.order != 0 ? 'a' : 'd', "?tzbpfn"[key.type]};
    text += std::to_string(key.offset) + "+" + std::to_string(key.length);
    return key.format == 0 ? text : text + sign;
}

// A sort of random keys; a number in each record tells where it stood.
struct Scenario {
    std::string keytext;
    std::vector<SortKey> keys;
    uint32_t longest = 400;
    Records records;
    Records sorted;

    Scenario(unsigned count, bool variable) {
        const bool weighed = random(3) == 0;
        const bool byProgram = random(2) == 1; // the weights are those of the program
        keytext = weighed ? "w" + (byProgram ? "" : kit::hex(&weights, sizeof weights)) + ";" : "";
        uint32_t offset = 0;
        for (unsigned wanted = 1 + random(5); keys.size() < wanted; offset += keys.back().length) {
            keys.push_back(engineKey(offset));
            keytext += (offset == 0 ? "" : ";") + textOf(keys.back());
        }
        longest = std::max(longest, offset + 100);
        std::vector<std::pair<std::vector<Rank>, std::string>> made(count);
        for (auto &[ranks, record] : made) {
            for (const SortKey &key : keys) {
                const Field field = engineField(key, weighed);
                record += field.bytes;
                ranks.push_back(field.rank);
            }
            record += bytesOf(records.size());
            record.resize(variable ? record.size() + random(91) : longest);
            records.push_back(record);
        }
        std::stable_sort(made.begin(), made.end(), [&](const auto &left, const auto &right) {
            return isAhead(left.first, right.first, keys);
        });
        std::transform(made.begin(), made.end(), std::back_inserter(sorted),
                       [](const auto &each) { return each.second; });
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
    for (unsigned round = 0; round < 120; ++round) {
        const bool many = round % 13 == 12;
        const bool variable = round % 2 == 0;
        const Scenario scenario(many ? 30000 : round < 20 ? round / 4U : random(301), variable);
        const unsigned goal = many ? round / 26 % 2 : round / 9 % 3;
        const unsigned source = goal == 2 ? 2 : round / 3 % 3;
        const auto half = scenario.records.begin() + scenario.records.size() / 2;
        const Records firstHalf(scenario.records.begin(), half);
        const Records secondHalf(half, scenario.records.end());
        TestFile first(scenario.longest, variable, firstHalf);
        TestFile second(scenario.longest, variable, secondHalf);
        TestFile target(scenario.longest, variable, {"old"});
        TestFile copy(scenario.longest, variable);
        const RecordDesc record{variable ? SORT_VARIABLE : 0, 0, variable ? 0 : scenario.longest};
        Call call{.record = record,
                  .keytext = scenario.keytext,
                  .keycount = static_cast<int32_t>(scenario.keys.size())};
        call.options =
            (many || round % 3 == 0 ? 1U : 0U) | (round % 8 < 4 ? uint32_t{SORT_ONE_THREAD} : 0U);
        call.folder = directory.path();
        call.ipcb = program.ipcb;
        program.pcb.collatingWeights = weights.data();
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

// Random histories of a group beside a small model of it.
#include <random>
#include <set>

#include "file/groups/operations.h"
#include "group_kit.h"

namespace {

using namespace group;
using namespace zor::groups;

std::string file(int number) {
    return generation("G", static_cast<uint32_t>(number));
}

// Generations by age: the wraps of the numbers, which may fall below 0, and the number.
struct Model {
    std::vector<std::pair<int, int>> entries;
    std::set<int> files;
    int limit = 5;
    bool empty = false;
    bool scratch = true;

    int size() const { return static_cast<int>(entries.size()); }
    int last() const { return entries.empty() ? 0 : entries.back().second; }
    void leave(int at) {
        if (scratch) {
            files.erase(entries[static_cast<std::size_t>(at)].second);
        }
        entries.erase(entries.begin() + at);
    }
    void dropMissing() {
        std::erase_if(entries, [&](const auto &entry) { return files.count(entry.second) == 0; });
    }
    void makeRoom(int extra) {
        if (size() + extra <= limit) {
            return;
        }
        if (!empty) {
            dropMissing();
        }
        for (int gone = empty ? size() : size() + extra - limit; gone > 0 && size() > 0; --gone) {
            leave(0);
        }
    }
    void add(int number) {
        const auto is = [=](const auto &entry) { return entry.second == number; };
        if (std::any_of(entries.begin(), entries.end(), is)) {
            return;
        }
        makeRoom(1);
        const int wraps = entries.empty()                   ? 0
                          : last() > 8999 && number <= 999  ? entries.back().first + 1
                          : last() <= 999 && number >= 9000 ? entries.back().first - 1
                                                            : entries.back().first;
        entries.emplace_back(wraps, number);
        std::sort(entries.begin(), entries.end());
    }
};

int wrapped(int number) {
    return (number + 9998) % 9999 + 1;
}

// One step in the group and in the model.
void step(Model &model, std::mt19937 &random) {
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const auto create = [&](const std::string &reference, int number) {
        model.add(number);
        model.files.insert(number);
        EXPECT_EQ(resolve(reference, "sys", 1), file(number)) << reference;
        kit::writeFile(file(number), "");
    };
    const int kind = below(8);
    if (kind == 0 && model.size() > 0) {
        const int back = below(model.size());
        EXPECT_TRUE(gdgRemove(("G(" + std::to_string(back) + ")").c_str(), "sys"));
        model.leave(model.size() - 1 - back);
    } else if (kind == 1) {
        model.limit = 1 + below(7);
        model.empty = below(6) == 0;
        model.scratch = below(3) > 0;
        EXPECT_TRUE(gdgAlter("G", {model.limit, -1, model.empty, model.scratch}, ""));
        model.makeRoom(0);
    } else if (kind == 2 && !model.files.empty()) {
        fs::remove(file(*model.files.begin()));
        model.files.erase(model.files.begin());
        EXPECT_TRUE(gdgMaintain("G", ""));
        model.dropMissing();
        model.makeRoom(0);
    } else if (kind == 3 && model.size() > 0) { // an older one comes late
        const int number = wrapped(model.last() - 1 - below(4));
        create(file(number), number);
    } else {
        const int steps = below(3) == 0 ? 1 + below(600) : 1;
        create("G(+" + std::to_string(steps) + ")", wrapped(model.last() + steps));
    }
}

void compare(const Model &model) {
    const Entries found = entriesOf("G.catalogue");
    EXPECT_TRUE(std::equal(found.begin(), found.end(), model.entries.begin(), model.entries.end(),
                           [](uint32_t entry, const auto &expected) {
                               return static_cast<int>(entry & 0x3FFF) == expected.second;
                           }))
        << testing::PrintToString(found) << testing::PrintToString(model.entries);
    std::set<int> files;
    for (const auto &each : fs::directory_iterator(".")) {
        if (const std::string name = each.path().filename(); name.starts_with("G.g")) {
            files.insert(std::stoi(name.substr(3)));
        }
    }
    EXPECT_EQ(files, model.files);
}

} // namespace

TEST(GroupHistories, AreThoseOfTheModel) {
    for (unsigned seed = 0; seed < 12 && !HasFailure(); ++seed) {
        const Place place;
        const uint32_t era = seed % 2 == 0 ? 0 : 0xFFFF8000; // where eras run out below and above
        const int start = seed % 3 == 0 ? 9995 : 2;
        make("G", makeBlock(5, {era | static_cast<uint32_t>(start)}));
        Model model{.entries = {{0, start}}, .files = {start}};
        std::mt19937 random(seed);
        for (int i = 0; i < 60 && !HasFailure(); ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(i));
            step(model, random);
            compare(model);
        }
    }
}

// What is not said, and what is not there.
TEST(GroupOperations, KeepWhatTheyAreNotTold) {
    const Place place;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(gdgCreate("G", {0, -5, -1, -1}, "sys"));
    EXPECT_EQ(read("G.catalogue"), makeBlock(255, {}, 0x02000002));
    make("G", makeBlock(3, {1, 2, 3}, 1, 7));
    kit::writeFile(file(9), "");
    EXPECT_FALSE(gdgRemove("G.g0009v00", "sys")); // it is none of the group
    EXPECT_EQ(read("G.catalogue"), makeBlock(3, {1, 2, 3}, 1, 7));
    EXPECT_TRUE(gdgAlter("G", {0, -1, -1, -1}, ""));
    EXPECT_EQ(read("G.catalogue"), makeBlock(255, {1, 2, 3}, 0x03000001, 7));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: GDS G.g0009v00 not found.\n");
}

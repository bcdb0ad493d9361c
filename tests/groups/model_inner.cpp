// Random histories of a group beside a small model of it.
#include <random>
#include <set>

#include "file/groups/operations.h"
#include "group_kit.h"

namespace {

using namespace group;
namespace fs = std::filesystem;

// Generations by age: the wraps of the numbers, which may fall below 0, and the number.
struct Model {
    std::vector<std::pair<int, int>> entries;
    std::set<int> files;
    int limit = 5;
    bool empty = false;
    bool scratch = true;

    int last() const { return entries.empty() ? 0 : entries.back().second; }
    bool has(int number) const {
        return std::any_of(entries.begin(), entries.end(),
                           [=](const auto &entry) { return entry.second == number; });
    }
    void leave(std::size_t at) {
        if (scratch) {
            files.erase(entries[at].second);
        }
        entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(at));
    }
    void dropMissing() {
        std::erase_if(entries, [&](const auto &entry) { return files.count(entry.second) == 0; });
    }
    void rollOff(int extra) {
        if (!empty) {
            dropMissing();
        }
        while (!entries.empty() && (empty || static_cast<int>(entries.size()) + extra > limit)) {
            leave(0);
        }
    }
    void add(int number) {
        if (has(number)) {
            return;
        }
        if (static_cast<int>(entries.size()) >= limit) {
            rollOff(1);
        }
        int wraps = entries.empty() ? 0 : entries.back().first;
        wraps += last() > 8999 && number <= 999 ? 1 : last() <= 999 && number >= 9000 ? -1 : 0;
        entries.emplace_back(wraps, number);
        std::sort(entries.begin(), entries.end());
        if (entries.size() == 1) {
            entries[0].first = 0;
        }
    }
    std::vector<int> numbers() const {
        std::vector<int> found;
        for (const auto &entry : entries) {
            found.push_back(entry.second);
        }
        return found;
    }
};

int wrapped(int number) {
    return (number + 9998) % 9999 + 1;
}

class History {
public:
    explicit History(unsigned seed) : random_(seed) {
        fs::current_path(directory_.path());
        const uint32_t era = seed % 2 == 0 ? 0 : 0xFFFF8000; // where eras run out below and above
        const int start = seed % 3 == 0 ? 9995 : 2;
        make("G", makeBlock(5, {era | static_cast<uint32_t>(start)}));
        model_.entries = {{0, start}};
        model_.files = {start};
    }
    ~History() { fs::current_path("/"); }

    void step() {
        switch (below(8)) {
        case 0:
            return removeOne();
        case 1:
            return alter();
        case 2:
            return loseFile();
        case 3:
            return late();
        default:
            return forward();
        }
    }

    void compare() {
        std::vector<int> numbers;
        for (const uint32_t entry : entriesOf("G.catalogue")) {
            numbers.push_back(static_cast<int>(entry & 0x3FFF));
        }
        EXPECT_EQ(numbers, model_.numbers());
        std::set<int> files;
        for (const auto &file : fs::directory_iterator(".")) {
            if (file.path().filename().string().starts_with("G.g")) {
                files.insert(std::stoi(file.path().filename().string().substr(3)));
            }
        }
        EXPECT_EQ(files, model_.files);
    }

private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    void create(const std::string &reference, int number) {
        model_.add(number);
        model_.files.insert(number);
        const std::string file = generation("G", static_cast<uint32_t>(number));
        EXPECT_EQ(resolve(reference, "sys", 1), file) << reference;
        kit::writeFile(file, "");
    }
    void forward() {
        const int steps = below(3) == 0 ? 1 + below(600) : 1;
        create("G(+" + std::to_string(steps) + ")", wrapped(model_.last() + steps));
    }
    void late() {
        const int number = wrapped(model_.last() - 1 - below(4));
        if (!model_.entries.empty()) {
            create(generation("G", static_cast<uint32_t>(number)), number);
        }
    }
    void removeOne() {
        const int count = static_cast<int>(model_.entries.size());
        if (count > 0) {
            const int back = below(count);
            EXPECT_TRUE(zor::groups::gdgRemove(("G(" + std::to_string(back) + ")").c_str(), "sys"));
            model_.leave(static_cast<std::size_t>(count - 1 - back));
        }
    }
    void alter() {
        model_.limit = 1 + below(7);
        model_.empty = below(6) == 0;
        model_.scratch = below(3) > 0;
        EXPECT_TRUE(zor::groups::gdgAlter(
            "G", {model_.limit, -1, model_.empty ? 1 : 0, model_.scratch ? 1 : 0}, ""));
        if (static_cast<int>(model_.entries.size()) > model_.limit) {
            model_.rollOff(0);
        }
    }
    void loseFile() {
        if (!model_.files.empty()) {
            const int number = *model_.files.begin();
            model_.files.erase(number);
            fs::remove(generation("G", static_cast<uint32_t>(number)));
        }
        EXPECT_TRUE(zor::groups::gdgMaintain("G", ""));
        model_.dropMissing();
        if (static_cast<int>(model_.entries.size()) > model_.limit) {
            model_.rollOff(0);
        }
    }

    kit::TemporaryDirectory directory_;
    std::mt19937 random_;
    Model model_;
};

} // namespace

TEST(GroupHistories, AreThoseOfTheModel) {
    for (unsigned seed = 0; seed < 12 && !testing::Test::HasFailure(); ++seed) {
        History history(seed);
        for (int step = 0; step < 60 && !testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
            history.step();
            history.compare();
        }
    }
}

// Files in an order that only their ages tell come back into one.
TEST(GroupHistories, AreRebuiltFromTheFiles) {
    const kit::TemporaryDirectory directory;
    fs::current_path(directory.path());
    for (const char *name : {"G.g9998v00", "G.g9999v00", "G.g0001v00", "G.g0002v00", "G.g00x1v00",
                             "G.g0001v01", "GG.g0003v00", "G.g0000v00"}) {
        kit::writeFile(name, "");
    }
    EXPECT_TRUE(zor::groups::gdgRebuild("G", ""));
    EXPECT_EQ(entriesOf("G.catalogue"), (std::vector<uint32_t>{9998, 9999, 0x8001, 0x8002}));
    EXPECT_TRUE(zor::groups::gdgAlter("G", {2, -1, -1, 0}, ""));
    EXPECT_TRUE(zor::groups::gdgAlter("G", {1, -1, -1, 1}, ""));
    EXPECT_TRUE(zor::groups::gdgRebuild("G", "")); // the newest stays, not the highest
    EXPECT_EQ(entriesOf("G.catalogue"), (std::vector<uint32_t>{2}));
    EXPECT_TRUE(fs::exists("G.g0002v00") && !fs::exists("G.g9999v00"));
    fs::current_path("/");
}

// EXTERNAL data items: one storage for a name, from the first program that has it to the end of the
// run unit.
#include <atomic>
#include <set>

#include "calls.h"
#include "external_data.h"

namespace {

using Item = std::pair<std::string, uint32_t>;
const std::string kLongName = "LONG-NAME-OF-31-BYTES-0123456789";

// What a program gets for its items.
std::vector<char *> addressesOf(const std::vector<Item> &items) {
    std::vector<ExternalDataItem> layout(items.size() + 1); // the first holds the table's head
    auto *table = reinterpret_cast<ExternalDataTable *>(layout.data());
    static_assert(sizeof(ExternalDataTable) == sizeof(ExternalDataItem));
    table->count = static_cast<int32_t>(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        table->items[i].length = items[i].second;
        strncpy(table->items[i].name, items[i].first.c_str(), sizeof table->items[i].name);
    }
    std::vector<char *> addresses(items.size());
    _zorExtVarInit(table, reinterpret_cast<void **>(addresses.data()));
    return addresses;
}

char *addressOf(const std::string &name, uint32_t length) {
    return addressesOf({{name, length}})[0];
}

} // namespace

PROGRAM_TEST(ExternalData, IsSharedByName) {
    const auto first = addressesOf({{"A", 10}, {"B", 0}, {kLongName, 7}});
    memcpy(first[0], "0123456789", 10);
    const auto second = addressesOf({{kLongName, 7}, {"C", 4096}, {"A", 10}, {"A", 10}, {"B", 0}});
    EXPECT_EQ(second, (std::vector{first[2], second[1], first[0], first[0], first[1]}));
    EXPECT_EQ(std::string(second[1], 4096), std::string(4096, '\0'));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(second[1]) % 8, 0U);
    uint64_t length = 0;
    memcpy(&length, second[1] - 8, sizeof length);
    EXPECT_EQ(length, 4096U);
    EXPECT_TRUE(addressesOf({}).empty());
}

CHILD_TEST(ExternalData, BelongsToItsRunUnit, .out = "two units") {
    EXPECT_EQ(addressOf("A", 4), nullptr);
    for (const char *told : {"two ", "units"}) {
        kit::Program main(told);
        kit::runMainProgram(main, [] {
            char *outer = addressOf("A", 4);
            EXPECT_EQ(std::exchange(*outer, 'X'), '\0');
            _zorCOBOLLink();
            kit::Program nested("NESTED");
            kit::runMainProgram(nested, [] { addressOf("A", 99)[0] = 'Y'; });
            EXPECT_EQ(std::tuple(addressOf("A", 4), *outer), std::tuple(outer, 'X'));
            printf("%s", _zorProccom->runcom->main->name);
        });
    }
}

// Many more items than the table has slots, with several threads that ask for all of them.
PROGRAM_TEST(ExternalData, IsOneForAllThreads, .errMatches = failure::kContention) {
    static std::vector<char *> seen[4];
    static std::atomic<int> begun;
    failure::onThreadsAtOnce(4, [] {
        std::vector<char *> &mine = seen[begun++];
        for (int i = 0; i < 5000; ++i) {
            mine.push_back(addressOf("ITEM-" + std::to_string(i * 7919 % 5000), 8));
        }
    });
    for (const std::vector<char *> &other : seen) {
        EXPECT_EQ(other, seen[0]);
    }
    EXPECT_EQ(std::set<char *>(seen[0].begin(), seen[0].end()).size(), 5000U);
}

TEST(ExternalData, EndsTheRunByItsMessages) {
    const kit::Expected noRoom{.errHolds = "ZOR907S", .status = failure::kAborted};
    const kit::Expected otherLength = failure::endBy(
        "ZOR066S  EXTERNAL item RATES was defined with another length by a program that ran "
        "earlier. Define it alike in all programs.");
    kit::expectChildren({
        {"longer", otherLength, kit::inProgram([] {
             addressesOf({{"RATES", 8}, {"RATES", 9}});
         })},
        {"shorter", otherLength, kit::inProgram([] {
             addressesOf({{"RATES", 8}, {"RATES", 7}});
         })},
        {"no room", noRoom, kit::inProgram([] { addressOf("A", 0xFFFFFFF0); })},
        {"no length at all", noRoom, kit::inProgram([] { addressOf("A", 0xFFFFFFFF); })},
    });
}

PROGRAM_TEST(ExternalData, IsShownAtTheEnd, .environment = {{"__ZORDEBUG", "2"}},
             .errMatches = "[^]*\nExternal Variables\nHash table @.* contents:\nEntries: 2\n"
                           "State:   (@|0x).*\nSlot # [0-9]+\n"
                           "\tName: NO-DATA\n\tLen:  0\n\tData: \nSlot # [0-9]+\n"
                           "\tName: RATES\n\tLen:  6\n\tData:   1.25\n"
                           "External Programs - RunUnit PLLE\n[^]*") {
    memcpy(addressOf("RATES", 6), "1.25", 4);
    addressOf("NO-DATA", 0);
}

// Storage that runs out at any allocation of CALL and EXTERNAL data counts as an exception or ends
// the run by a message.
TEST(DynamicPrograms, EveryAllocationMayFail) {
    const calls::Programs programs("SUB.so");
    const auto body = kit::inProgram([] {
        calls::showCalls({"SUB", "SUB"});
        addressOf("A", 100);
    });
    failure::expectEachFailureTold(body,
                                   {.environment = {{"LD_PRELOAD", FAILING_ALLOCATOR}},
                                    .directory = programs.directory.path()},
                                   "COBOL_CPM_CACHE", "(12|01) ");
}

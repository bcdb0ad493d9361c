// EXTERNAL data items: one storage for a name, from the first program that has it to the end of the
// run unit.
#include <atomic>
#include <regex>
#include <set>
#include <thread>

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

CHILD_TEST(ExternalData, BelongsToItsRunUnit, .out = "(nil) 1 1 1") {
    printf("%p", static_cast<void *>(addressOf("A", 4)));
    kit::Program main("MAIN");
    for (int unit = 0; unit < 2; ++unit) {
        kit::runMainProgram(main, [] {
            char *outer = addressOf("A", 4);
            printf(" %d", outer[0] == '\0' ? 1 : 0);
            outer[0] = 'X';
        });
    }
    kit::runMainProgram(main, [] {
        char *outer = addressOf("A", 4);
        outer[0] = 'X';
        _zorCOBOLLink();
        static kit::Program nested("NESTED");
        kit::runMainProgram(nested, [] { addressOf("A", 99)[0] = 'Y'; });
        printf(" %d", outer[0] == 'X' && addressOf("A", 4) == outer ? 1 : 0);
    });
}

// Many more items than the table has slots, with several threads that ask for all of them.
TEST(ExternalData, IsOneForAllThreads) {
    const auto child = kit::runProgram({}, [] {
        static std::vector<std::vector<char *>> seen(4);
        static std::atomic<int> waiting{4};
        std::vector<std::thread> threads;
        for (std::vector<char *> &mine : seen) {
            threads.emplace_back([&mine] {
                for (--waiting; waiting > 0;) {
                }
                for (int i = 0; i < 5000; ++i) {
                    mine.push_back(addressOf("ITEM-" + std::to_string(i * 7919 % 5000), 8));
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
        for (const std::vector<char *> &other : seen) {
            EXPECT_EQ(other, seen[0]);
        }
        printf("%zu", std::set<char *>(seen[0].begin(), seen[0].end()).size());
    });
    EXPECT_EQ(child.out, "5000");
    EXPECT_EQ(std::regex_replace(child.err, std::regex("pthread_mutex_trylock rc 16 .*\n"), ""),
              "");
}

TEST(ExternalData, EndsTheRunByItsMessages) {
    const kit::Expected noRoom{.errHolds = "ZOR907S", .status = failure::kAborted};
    const kit::Expected otherLength{
        .err = failure::kTraceback +
               "ZOR066S  EXTERNAL item RATES was defined with another length by a program that ran "
               "earlier. Define it alike in all programs.\n" +
               failure::kClosing + "\n",
        .status = failure::kAborted};
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

TEST(ExternalData, IsShownAtTheEnd) {
    const auto child = kit::runProgram({{"__ZORDEBUG", "2"}}, [] {
        memcpy(addressOf("RATES", 6), "1.25", 4);
        addressOf("NO-DATA", 0);
    });
    const std::regex shown("\nExternal Variables\nHash table @.* contents:\nEntries: 2\n"
                           "State:   0x.*\nSlot # [0-9]+\n"
                           "\tName: NO-DATA\n\tLen:  0\n\tData: \nSlot # [0-9]+\n"
                           "\tName: RATES\n\tLen:  6\n\tData:   1.25\n"
                           "External Programs - RunUnit PLLE\n");
    EXPECT_TRUE(std::regex_search(child.err, shown)) << child.err;
}

// Storage that runs out at any allocation of CALL and EXTERNAL data counts as an exception or ends
// the run by a message.
TEST(DynamicPrograms, EveryAllocationMayFail) {
    if (ZOR_UNDER_SANITIZER != 0) {
        GTEST_SKIP() << "the sanitizer has the allocator to itself";
    }
    const calls::Programs programs("SUB.so");
    const std::string marker = programs.directory.file("marker");
    int at = 1;
    for (bool failed = true; failed; ++at) {
        kit::writeFile(marker, "");
        const auto child = programs.run(
            [] {
                calls::showCalls({"SUB", "SUB"});
                addressOf("A", 100);
            },
            {{"LD_PRELOAD", FAILING_ALLOCATOR},
             {"FAIL_AT", std::to_string(at)},
             {"FAIL_MARKER", marker},
             {"COBOL_CPM_CACHE", at % 2 == 0 ? "1" : "0"}});
        failed = !std::filesystem::exists(marker);
        const bool told = child.err.find("907") != std::string::npos ||
                          child.err.find("Insufficient") != std::string::npos;
        EXPECT_TRUE(child.status == 0 ? child.out == "12 " || child.out == "01 "
                                      : child.status == failure::kAborted && told)
            << "allocation " << at << ": " << child.status << child.out << child.err;
        ASSERT_LT(at, 200);
    }
    EXPECT_GT(at, 8) << "the allocator was not in force";
}

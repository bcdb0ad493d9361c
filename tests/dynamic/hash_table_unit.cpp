// The hash table against a plain model, and the program lists over it.
#include <array>
#include <cstring>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dynamic/hash_functions.h"
#include "dynamic/hash_table.h"
#include "dynamic/program_list.h"
#include "support/kit.h"

using namespace zor;

namespace {

using TableOwner = std::unique_ptr<HashTable, decltype(&hashTableDestroy)>;

TableOwner makeTable(const HashTableParameters &parameters = {}) {
    return {hashTableCreate(parameters), hashTableDestroy};
}

HashElement *put(HashTable *table, const std::string &key, const std::string &value,
                 bool duplicates = false, bool toparent = false) {
    HashInsertion insertion{};
    insertion.key = key.data();
    insertion.keylen = static_cast<uint32_t>(key.size());
    insertion.value = const_cast<char *>(value.c_str());
    insertion.valuelen = static_cast<int32_t>(value.size()) + 1;
    insertion.duplicates = duplicates;
    insertion.toparent = toparent;
    return hashTableInsert(table, insertion);
}

HashElement *get(HashTable *table, const std::string &key, Touch touch = Touch::none,
                 bool fallthrough = false) {
    return hashTableLookup(table, key.data(), static_cast<uint32_t>(key.size()), touch,
                           fallthrough);
}

std::string keyOf(const HashElement *element) {
    return {static_cast<const char *>(element->key), element->keylen};
}
std::string valueOf(const HashElement *element) {
    return static_cast<const char *>(hashElementValue(element));
}

std::vector<std::string> mruOrder(const HashTable *table) {
    std::vector<std::string> keys;
    const HashElement *last = nullptr;
    for (const HashElement *e = table->mruhead; e != nullptr; last = e, e = e->mrunext) {
        EXPECT_EQ(e->mruprev, last);
        keys.push_back(keyOf(e));
    }
    EXPECT_EQ(table->mrutail, last);
    return keys;
}

std::string statisticsOf(const HashTable *table) {
    testing::internal::CaptureStderr();
    hashTableStatistics(table);
    return testing::internal::GetCapturedStderr();
}

uint32_t hashAllAlike(const HashTable *, const void *, uint32_t) {
    return 7;
}

} // namespace

TEST(HashFunctions, KnownAnswersWhereverTheKeyLies) {
    EXPECT_EQ(Lookup3::hash("", 0, 0), 0xDEADBEEFU);
    EXPECT_EQ(Lookup3::hash("", 0, 0xDEADBEEF), 0xBD5B7DDEU);
    const std::string text = "Four score and seven years ago";
    EXPECT_EQ(Lookup3::hash(text.data(), 30, 0), 0x17770551U);
    EXPECT_EQ(Lookup3::hash(text.data(), 30, 1), 0xCD628161U);
    alignas(4) std::array<char, 40> room{};
    for (uint32_t length = 0; length <= text.size(); ++length) {
        std::memcpy(room.data(), text.data(), length);
        const uint32_t aligned = Lookup3::hash(room.data(), length, 0);
        for (std::size_t shift = 1; shift < 4; ++shift) {
            std::memmove(room.data() + shift, text.data(), length);
            EXPECT_EQ(Lookup3::hash(room.data() + shift, length, 0), aligned) << length;
        }
    }
}

// Worked out by hand from the rules, with shifts to the right that keep the sign.
TEST(HashFunctions, IntegerKeys) {
    for (const auto &[key, hash] : std::map<uint32_t, uint32_t>{{0x0U, 0x3F57496AU},
                                                                {0x1U, 0x27922C9DU},
                                                                {0x7FFFFFFFU, 0x18CE91A6U},
                                                                {0x80000000U, 0x18CE91A6U},
                                                                {0xDEADBEEFU, 0x242655C3U}}) {
        EXPECT_EQ(hashInteger32(nullptr, &key, sizeof key), hash) << key;
    }
    for (const auto &[key, hash] :
         std::map<uint64_t, uint32_t>{{0x0ULL, 0x00000000U},
                                      {0x1ULL, 0x15515FBCU},
                                      {0x8000000000000000ULL, 0x95755155U},
                                      {0xFEDCBA9876543210ULL, 0x22C7236BU}}) {
        EXPECT_EQ(hashInteger64(nullptr, &key, sizeof key), hash) << key;
    }
}

TEST(HashTable, GrowsAtItsLimitAndByCrowding) {
    struct Row {
        uint32_t size, loadpercent, slots, limit;
    };
    for (const auto &[size, loadpercent, slots, limit] :
         {Row{0, 0, 64, 48}, Row{1, 75, 64, 48}, Row{65, 87, 128, 112}, Row{64, 93, 64, 60},
          Row{200, 50, 256, 256}}) {
        HashTableParameters parameters;
        parameters.size = size;
        parameters.loadpercent = loadpercent;
        const auto table = makeTable(parameters);
        EXPECT_EQ(table->size, slots);
        EXPECT_EQ(table->limit, limit);
        uint32_t count = 0;
        while (table->size == slots) {
            put(table.get(), std::to_string(++count), "");
        }
        EXPECT_EQ(count, limit);
        EXPECT_EQ(table->size, 2 * slots);
        EXPECT_EQ(table->grows, 1U);
    }
    HashTableParameters crowded;
    crowded.hash = hashAllAlike;
    const auto table = makeTable(crowded);
    for (int i = 0; i < 3; ++i) {
        put(table.get(), std::to_string(i), "");
    }
    EXPECT_EQ(table->size, 64U);
    put(table.get(), "3", "");
    EXPECT_EQ(table->size, 128U);
    // A key that keeps coming must not double the table each time.
    for (int i = 0; i < 100; ++i) {
        ASSERT_NE(put(table.get(), "same", std::to_string(i), true), nullptr);
    }
    EXPECT_LT(table->size, 1U << 19);
    EXPECT_EQ(valueOf(get(table.get(), "same")), "99");
}

// Random operations beside a map and a list in MRU order.
TEST(HashTable, AgreesWithAModel) {
    for (const uint32_t flags : {0U, uint32_t{kHashMruOrder}}) {
        HashTableParameters parameters;
        parameters.flags = flags;
        const auto owner = makeTable(parameters);
        HashTable *table = owner.get();
        std::map<std::string, std::string> model;
        std::list<std::string> order;
        const auto renew = [&](const std::string &key) {
            order.remove(key);
            order.push_front(key);
        };
        std::mt19937 random(flags + 5);
        for (int step = 0; step < 6000; ++step) {
            const std::string key =
                "K" + std::string(random() % 20, 'x') + std::to_string(random() % 90);
            HashElement *found = get(table, key);
            ASSERT_EQ(found != nullptr, model.count(key) == 1) << key;
            switch (random() % 8) {
            case 0:
            case 1:
            case 2: {
                const std::string value(random() % 70, static_cast<char>('a' + step % 26));
                const HashElement *element = put(table, key, value);
                if (found == nullptr) {
                    model[key] = value;
                    renew(key);
                }
                ASSERT_EQ(valueOf(element), model[key]);
                ASSERT_EQ(reinterpret_cast<uintptr_t>(element->key) % 16, 0U);
                ASSERT_EQ(element->valuelen % 16, 0);
                break;
            }
            case 3:
            case 4:
            case 5:
                if (get(table, key, random() % 2 == 0 ? Touch::withParent : Touch::here) !=
                    nullptr) {
                    renew(key);
                    EXPECT_EQ(found->prev, nullptr);
                }
                break;
            case 6:
                if (found != nullptr) {
                    if (random() % 2 == 0) {
                        hashTableDelete(table, found);
                    } else {
                        ASSERT_EQ(hashTableRemove(table, found), found);
                        hashTableRecycle(table, found);
                    }
                    model.erase(key);
                    order.remove(key);
                }
                break;
            default:
                if (step % 10 == 0) {
                    hashTableResize(table, random() % 3 == 0 ? 0 : 1U << (random() % 9), 0);
                } else if (step % 89 == 0) {
                    hashTableEmpty(table);
                    model.clear();
                    order.clear();
                }
            }
            ASSERT_EQ(table->entries, model.size());
            ASSERT_EQ(table->entries, table->inserts - table->deletes - table->removes);
            if (step % 64 == 0) {
                std::map<std::string, std::string> seen;
                HashCursor cursor{};
                while (const HashElement *element = hashTableNext(table, cursor)) {
                    EXPECT_TRUE(seen.emplace(keyOf(element), valueOf(element)).second);
                }
                ASSERT_EQ(seen, model);
                if (flags != 0) {
                    ASSERT_EQ(mruOrder(table), std::vector(order.begin(), order.end()));
                }
                ASSERT_NE(statisticsOf(table).find("\nBad stats:      0\n"), std::string::npos);
            }
        }
        EXPECT_GT(table->grows, 0U);
        EXPECT_GT(table->shrinks, 0U);
        EXPECT_GT(table->reuses, 0U);
        EXPECT_GT(table->evicts, 0U);
    }
}

TEST(HashTable, ResizeKeepsTheOrderOfChains) {
    HashTableParameters parameters;
    parameters.hash = hashAllAlike;
    const auto table = makeTable(parameters);
    for (const char *value : {"1", "2", "3"}) {
        put(table.get(), "same", value, true);
    }
    for (const uint32_t size : {512U, 4U, 0U}) {
        hashTableResize(table.get(), size, 0);
        EXPECT_EQ(table->size, size == 0 ? 32U : size);
        std::string values;
        for (const HashElement *e = get(table.get(), "same"); e != nullptr; e = e->next) {
            values += valueOf(e);
        }
        EXPECT_EQ(values, "321");
    }
}

TEST(HashTable, ParentAndLinks) {
    HashTableParameters above;
    above.flags = kHashMruOrder;
    const auto parent = makeTable(above);
    HashTableParameters below;
    below.parent = parent.get();
    below.flags = kHashIsChild;
    const auto child = makeTable(below);

    put(parent.get(), "A", "one");
    put(parent.get(), "B", "two");
    EXPECT_EQ(get(child.get(), "A"), nullptr);
    const HashElement *link = get(child.get(), "A", Touch::withParent, true);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->parent, get(parent.get(), "A"));
    EXPECT_EQ(valueOf(link), "one");
    EXPECT_EQ(mruOrder(parent.get()), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(get(child.get(), "A"), link);

    HashElement *both = put(child.get(), "C", "three", false, true);
    EXPECT_EQ(both->parent, get(parent.get(), "C"));
    EXPECT_EQ(parent->entries, 3U);
    get(child.get(), "A", Touch::here);
    EXPECT_EQ(mruOrder(parent.get()).front(), "C");
    get(child.get(), "A", Touch::withParent);
    EXPECT_EQ(mruOrder(parent.get()).front(), "A");

    hashTableDelete(child.get(), both);
    EXPECT_NE(get(parent.get(), "C"), nullptr);
    EXPECT_EQ(child->freelinks, both);
    EXPECT_EQ(get(child.get(), "C", Touch::none, true), both); // the freed link serves again
    EXPECT_EQ(child->reuses, 1U);
    hashTableEmpty(child.get());
    EXPECT_TRUE(hashTableIsEmpty(child.get()));
    EXPECT_EQ(parent->entries, 3U);
}

namespace {

// Gives elements until its count runs out.
void *allocateCounted(HashTable *, uint32_t bytes, void *userdata) {
    int &left = *static_cast<int *>(userdata);
    return left-- > 0 ? aligned_alloc(16, (bytes + 15U) / 16 * 16) : nullptr;
}
void freeCounted(HashTable *, HashElement *element) {
    free(element);
}

} // namespace

TEST(HashTable, ExhaustedStorageChangesNothing) {
    int left = 1;
    HashTableParameters parameters;
    parameters.alloc = allocateCounted;
    parameters.free = freeCounted;
    parameters.userdata = &left;
    const auto parent = makeTable(parameters);
    EXPECT_NE(put(parent.get(), "A", "1"), nullptr);
    EXPECT_EQ(put(parent.get(), "B", "2"), nullptr);
    EXPECT_EQ(parent->entries, 1U);

    HashTableParameters plain;
    plain.parent = parent.get();
    const auto child = makeTable(plain);
    EXPECT_EQ(put(child.get(), "C", "3", false, true), nullptr); // the parent has no room
    parameters.parent = parent.get();
    const auto starved = makeTable(parameters);
    EXPECT_EQ(get(starved.get(), "A", Touch::none, true), nullptr); // no room for the link
    left = 1;
    EXPECT_EQ(put(starved.get(), "D", "4", false, true), nullptr); // room for the link alone
    EXPECT_TRUE(hashTableIsEmpty(child.get()));
    EXPECT_TRUE(hashTableIsEmpty(starved.get()));
    EXPECT_EQ(parent->entries, 1U);

    // Lengths that do not fit an address space are refused ahead of any copy.
    HashInsertion huge{};
    huge.key = "K";
    huge.keylen = 1;
    huge.valuelen = INT32_MAX;
    EXPECT_EQ(hashTableInsert(child.get(), huge), nullptr);

    testing::internal::CaptureStderr();
    hashTableResize(parent.get(), 1U << 30, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "HashTable_Resize alloc error, continuing\n");
    EXPECT_EQ(parent->size, 64U);
    EXPECT_EQ(parent->flags & HASH_TABLE_RESIZING, 0U);
    EXPECT_EQ(valueOf(get(parent.get(), "A")), "1");
}

TEST(HashTable, PrintsItself) {
    HashTableParameters parameters;
    parameters.flags = kHashMruOrder;
    parameters.hash = hashAllAlike;
    const auto table = makeTable(parameters);
    testing::internal::CaptureStderr();
    hashTablePrint(table.get());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    const HashElement *a = put(table.get(), "ALPHA", "x");
    const HashElement *b = put(table.get(), "B\x01", "y");
    const auto line = [](const HashElement *e, const char *key) {
        std::array<char, 200> text{};
        snprintf(text.data(), text.size(),
                 "  7:0x%p key=(%u)@0x%p %s value=(80)@0x%p parent=0x(nil)\n",
                 static_cast<const void *>(e), e->keylen, e->key, key, e->value);
        return std::string(text.data());
    };
    std::array<char, 200> head{};
    snprintf(head.data(), head.size(),
             "Hash table @0x%p contents:\nEntries: 2\nState:   0x7 7 0x(nil)\nSlot # 7\n",
             static_cast<void *>(table.get()));
    const std::string lines = line(b, "B.") + line(a, "ALPHA");
    testing::internal::CaptureStderr();
    hashTablePrint(table.get());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              head.data() + lines + "MRU ordering:\n" + lines);

    snprintf(head.data(), head.size(),
             "\nHash table at: %p\n\tParent at:  (nil)\n\tSlots at:   %p\n\tSize:       64\n",
             static_cast<void *>(table.get()), static_cast<void *>(table->slots));
    std::string report = statisticsOf(table.get());
    EXPECT_EQ(report.find("Largest hash chain: B\x01,ALPHA,\n"), 0U);
    EXPECT_NE(report.find(head.data()), std::string::npos) << report;
    EXPECT_NE(report.find("\nBad stats:      0\n"), std::string::npos);
    table->collisions = 5;
    table->entries = 9;
    report = statisticsOf(table.get());
    EXPECT_NE(report.find("\nBad stats:      2\nHash stats bad...\n  Collisions = 5 vs 1 (actual)\n"
                          "  Chains     = 1 vs 1 (actual)\nHash entry counts bad...\n"),
              std::string::npos);
    table->entries = 2;
    table->collisions = 1;
}

TEST(ProgramList, ShadowsLinksAndCopies) {
    const TableOwner cache(createCachedProgramList(), hashTableDestroy);
    const TableOwner unit(createProgramList(cache.get()), hashTableDestroy);
    char name[] = "PAYROLL and more";
    LLE program{};
    program.entry = &program;
    program.name = name;
    program.namelen = 7;
    LLE *cached = insertProgram(unit.get(), program, ProgramPlace::parentList);
    name[0] = 'X';
    EXPECT_EQ(lookupProgram(unit.get(), "PAYROLL", 7, Touch::withParent, true), cached);
    EXPECT_EQ(lookupProgram(cache.get(), "PAYROLL", 7, Touch::none, false), cached);
    EXPECT_EQ(std::string(cached->name, cached->namelen), "PAYROLL");

    name[0] = 'P';
    program.entry = name;
    const LLE *shadow = insertProgram(unit.get(), program, ProgramPlace::thisListAlone);
    EXPECT_NE(shadow, cached);
    EXPECT_EQ(lookupProgram(unit.get(), "PAYROLL", 7, Touch::withParent, true), shadow);
    int links = 0;
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(unit.get(), cursor)) {
        links += isLinkToParent(element) ? 1 : 0;
        EXPECT_EQ(lleOf(element), isLinkToParent(element) ? cached : shadow);
    }
    EXPECT_EQ(links, 1);
    EXPECT_EQ(cache->entries, 1U);
}

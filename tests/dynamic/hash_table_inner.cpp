// The hash table against a plain model.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dynamic/hash_functions.h"
#include "dynamic/hash_table.h"
#include "support/kit.h"

using namespace zor;

namespace {

using TableOwner = std::unique_ptr<HashTable, decltype(&hashTableDestroy)>;

TableOwner makeTable(const HashTableParameters &parameters) {
    return {hashTableCreate(parameters), hashTableDestroy};
}

HashElement *put(const TableOwner &table, const std::string &key, const std::string &value,
                 bool duplicates = false, bool toparent = false) {
    HashInsertion insertion{key.data(), static_cast<uint32_t>(key.size()),
                            const_cast<char *>(value.c_str())};
    insertion.valuelen = static_cast<int32_t>(value.size()) + 1;
    insertion.duplicates = duplicates;
    insertion.toparent = toparent;
    if (toparent) { // as by a caller that has looked for the key
        hashTableLookup(table.get(), insertion.key, insertion.keylen, Touch::none, false);
        insertion.cursor = &table->cursor;
    }
    return hashTableInsert(table.get(), insertion);
}

HashElement *get(const TableOwner &table, const std::string &key, Touch touch = Touch::none,
                 bool fallthrough = false) {
    return hashTableLookup(table.get(), key.data(), static_cast<uint32_t>(key.size()), touch,
                           fallthrough);
}

using Entry = std::pair<std::string, std::string>; // key and value

Entry entryOf(const HashElement *element) {
    return {{static_cast<const char *>(element->key), element->keylen},
            static_cast<const char *>(hashElementValue(element))};
}

std::vector<Entry> entriesOf(const HashTable *table) {
    std::vector<Entry> entries;
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(table, cursor)) {
        entries.push_back(entryOf(element));
    }
    return entries;
}

std::vector<Entry> mruOrder(const HashTable *table) {
    std::vector<Entry> entries;
    const HashElement *last = nullptr;
    for (const HashElement *e = table->mruhead; e != nullptr; last = e, e = e->mrunext) {
        EXPECT_EQ(e->mruprev, last);
        entries.push_back(entryOf(e));
    }
    EXPECT_EQ(table->mrutail, last);
    return entries;
}

std::string shownBy(void (*show)(const HashTable *), const TableOwner &table) {
    testing::internal::CaptureStderr();
    show(table.get());
    return testing::internal::GetCapturedStderr();
}

template <class... Values> std::string formatted(const char *format, Values... values) {
    std::array<char, 250> text{};
    snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

uint32_t hashAllAlike(const HashTable *, const void *, uint32_t) {
    return 7;
}

} // namespace

TEST(HashFunctions, KnownAnswersWhereverTheKeyLies) {
    const std::string text = "Four score and seven years ago";
    EXPECT_EQ(Lookup3::hash("", 0, 0), 0xDEADBEEFU);
    EXPECT_EQ(Lookup3::hash("", 0, 0xDEADBEEF), 0xBD5B7DDEU);
    EXPECT_EQ(hashBytes(nullptr, text.data(), 30), 0x17770551U);
    EXPECT_EQ(hashInteger32(nullptr, text.data(), 30), 0x17770551U); // no integer of that length
    EXPECT_EQ(hashInteger64(nullptr, text.data(), 30), 0x17770551U);
    EXPECT_EQ(Lookup3::hash(text.data(), 30, 1), 0xCD628161U);
    // All lengths, each hash the initial value of the next.
    alignas(4) std::array<char, 40> room{};
    for (std::size_t shift = 0; shift < 4; ++shift) {
        memcpy(room.data() + shift, text.data(), text.size());
        uint32_t hash = 0;
        for (uint32_t length = 0; length <= text.size(); ++length) {
            hash = Lookup3::hash(room.data() + shift, length, hash);
        }
        EXPECT_EQ(hash, 0x1AB339DDU) << shift;
    }
}

// Worked out by hand from the rules, with shifts to the right that keep the sign.
TEST(HashFunctions, IntegerKeys) {
    const struct {
        uint64_t key;
        uint32_t hashOfLowerHalf, hash;
    } rows[] = {{0x0, 0x3F57496A, 0x00000000},
                {0x1, 0x27922C9D, 0x15515FBC},
                {0x800000007FFFFFFF, 0x18CE91A6, 0x4805A2C3},
                {0x8000000080000000, 0x18CE91A6, 0x5554F20A},
                {0xFEDCBA98DEADBEEF, 0x242655C3, 0x43F1C88F}};
    for (const auto &[key, hashOfLowerHalf, hash] : rows) {
        EXPECT_EQ(hashInteger32(nullptr, &key, 4), hashOfLowerHalf) << key;
        EXPECT_EQ(hashInteger64(nullptr, &key, 8), hash) << key;
    }
}

TEST(HashTable, GrowsAtItsLimitAndByCrowding) {
    const struct {
        uint32_t size, loadpercent, slots, limit;
        HashFunction hash = nullptr;
    } rows[] = {{0, 0, 64, 48},   {1, 75, 64, 48},     {65, 87, 128, 112},
                {64, 93, 64, 60}, {200, 50, 256, 256}, {64, 75, 64, 4, hashAllAlike}};
    for (const auto &[size, loadpercent, slots, limit, hash] : rows) {
        const auto table = makeTable({.hash = hash, .size = size, .loadpercent = loadpercent});
        for (uint32_t count = 1; count <= limit; ++count) {
            EXPECT_EQ(table->size, slots) << count;
            put(table, std::to_string(count), "");
        }
        EXPECT_EQ(table->size, 2 * slots);
        EXPECT_EQ(table->grows, 1U);
    }
    // A key that keeps coming must not double the table each time.
    const auto crowded = makeTable({});
    for (int i = 0; i < 100; ++i) {
        ASSERT_NE(put(crowded, "same", std::to_string(i), true), nullptr);
    }
    EXPECT_LT(crowded->size, 1U << 19);
}

// Random operations beside a list of what the table holds, the latest used ahead. A table whose
// keys all hash alike is one chain, which has the order of that list.
TEST(HashTable, AgreesWithAModel) {
    const HashTableParameters kinds[] = {{},
                                         {.hash = hashAllAlike},
                                         {.flags = kHashMruOrder},
                                         {.hash = hashAllAlike, .flags = kHashMruOrder}};
    for (const HashTableParameters &kind : kinds) {
        const auto table = makeTable(kind);
        std::list<Entry> model;
        uint32_t removes = 0;
        std::mt19937 random(5);
        for (int step = 0; step < 6000; ++step) {
            const std::string key =
                "K" + std::string(random() % 20, 'x') + std::to_string(random() % 90);
            HashElement *const found = get(table, key);
            const auto known = std::find_if(model.begin(), model.end(),
                                            [&](const Entry &entry) { return entry.first == key; });
            ASSERT_EQ(found != nullptr, known != model.end()) << key;
            const unsigned choice = random() % 8;
            if (choice < 3) {
                const std::string value(random() % 70, static_cast<char>('a' + step % 26));
                const bool duplicate = kind.flags == 0 && random() % 4 == 0;
                const HashElement *element = put(table, key, value, duplicate);
                if (found == nullptr || duplicate) {
                    model.emplace_front(key, value);
                    ASSERT_EQ(entryOf(element), model.front());
                } else {
                    ASSERT_EQ(element, found);
                }
                ASSERT_EQ(reinterpret_cast<uintptr_t>(element->key) % 16, 0U);
                ASSERT_EQ(element->valuelen % 16, 0);
            } else if (choice < 6 && found != nullptr) {
                ASSERT_EQ(get(table, key, choice == 3 ? Touch::withParent : Touch::here), found);
                model.splice(model.begin(), model, known);
                ASSERT_EQ(found->prev, nullptr);
            } else if (choice == 6 && found != nullptr) {
                if (random() % 2 == 0) {
                    hashTableDelete(table.get(), found);
                } else {
                    ASSERT_EQ(hashTableRemove(table.get(), found), found);
                    hashTableRecycle(table.get(), found);
                    ++removes;
                }
                model.erase(known);
            } else if (choice == 7 && step % 10 == 0) {
                const uint32_t size = random() % 3 == 0 ? 0 : 1U << (random() % 9);
                hashTableResize(table.get(), size, 0);
                const uint32_t twice = std::bit_ceil(2 * table->entries);
                ASSERT_EQ(table->size, size != 0 ? size : std::max(twice, 32U));
            } else if (choice == 7 && step % 89 == 0) {
                hashTableEmpty(table.get());
                model.clear();
            }
            ASSERT_EQ(table->entries, model.size());
            ASSERT_EQ(table->entries, table->inserts - table->deletes - removes);
            if (step % 64 == 0) {
                std::vector<Entry> expected(model.begin(), model.end());
                if (kind.flags != 0) {
                    ASSERT_EQ(mruOrder(table.get()), expected);
                }
                std::vector<Entry> entries = entriesOf(table.get());
                if (kind.hash == nullptr) {
                    std::sort(entries.begin(), entries.end());
                    std::sort(expected.begin(), expected.end());
                }
                ASSERT_EQ(entries, expected);
                ASSERT_NE(shownBy(hashTableStatistics, table).find("\nBad stats:      0\n"),
                          std::string::npos);
            }
        }
        EXPECT_GT(table->grows, 0);
        EXPECT_GT(table->shrinks, 0);
        EXPECT_GT(table->reuses, 0);
        EXPECT_GT(table->evicts, 0);
    }
}

TEST(HashTable, ParentAndLinks) {
    const auto parent = makeTable({.hash = hashAllAlike, .flags = kHashMruOrder});
    const auto child = makeTable({.parent = parent.get(), .flags = kHashIsChild});
    const Entry a{"A", "one"};
    const Entry b{"B", "two"};
    const Entry c{"C", "three"};
    const Entry second{"C", "a second one"};
    put(parent, "A", "one");
    put(parent, "B", "two");
    EXPECT_EQ(get(child, "A"), nullptr);
    const HashElement *link = get(child, "A", Touch::withParent, true);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->parent, get(parent, "A"));
    EXPECT_EQ(entryOf(link), a);
    EXPECT_EQ(mruOrder(parent.get()), (std::vector{a, b}));
    EXPECT_EQ(get(child, "A"), link);

    HashElement *both = put(child, "C", "three", false, true);
    EXPECT_EQ(both->parent, get(parent, "C"));
    get(child, "A", Touch::here);
    EXPECT_EQ(mruOrder(parent.get()), (std::vector{c, a, b}));
    get(child, "A", Touch::withParent);
    EXPECT_EQ(mruOrder(parent.get()), (std::vector{a, c, b}));

    hashTableDelete(child.get(), both);
    EXPECT_NE(get(parent, "C"), nullptr);
    EXPECT_EQ(get(child, "C", Touch::none, true), both); // the freed link serves again
    EXPECT_EQ(child->reuses, 1U);
    hashTableEmpty(child.get());
    EXPECT_TRUE(hashTableIsEmpty(child.get()));
    put(parent, "C", "a second one", true); // a duplicate comes last
    EXPECT_EQ(mruOrder(parent.get()), (std::vector{a, c, b, second}));
}

TEST(HashTable, ExhaustedStorageChangesNothing) {
    int left = 1; // elements that the allocator still gives
    HashTableParameters parameters;
    parameters.alloc = [](HashTable *, uint32_t bytes, void *userdata) {
        return (*static_cast<int *>(userdata))-- > 0 ? aligned_alloc(16, (bytes + 15U) / 16 * 16)
                                                     : nullptr;
    };
    parameters.free = [](HashTable *, HashElement *element) { free(element); };
    parameters.userdata = &left;
    const auto parent = makeTable(parameters);
    EXPECT_NE(put(parent, "A", "1"), nullptr);
    EXPECT_EQ(put(parent, "B", "2"), nullptr);

    const auto child = makeTable({.parent = parent.get()});
    EXPECT_EQ(put(child, "C", "3", false, true), nullptr); // the parent has no room
    EXPECT_NE(child->freelinks, nullptr);
    parameters.parent = parent.get();
    const auto starved = makeTable(parameters);
    EXPECT_EQ(get(starved, "A", Touch::none, true), nullptr); // no room for the link
    left = 1;
    EXPECT_EQ(put(starved, "D", "4", false, true), nullptr); // room for the link alone
    EXPECT_TRUE(hashTableIsEmpty(child.get()));
    EXPECT_TRUE(hashTableIsEmpty(starved.get()));

    // Lengths that do not fit an address space are refused ahead of any copy.
    HashInsertion huge{"K", 1, nullptr};
    huge.valuelen = INT32_MAX;
    EXPECT_EQ(hashTableInsert(child.get(), huge), nullptr);

    testing::internal::CaptureStderr();
    hashTableResize(parent.get(), 1U << 30, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "HashTable_Resize alloc error, continuing\n");
    EXPECT_EQ(parent->size, 64U);
    EXPECT_EQ(parent->flags & HASH_TABLE_RESIZING, 0U);
    EXPECT_EQ(entriesOf(parent.get()), (std::vector{Entry{"A", "1"}}));
}

TEST(HashTable, PrintsItself) {
    const auto table = makeTable({.hash = hashAllAlike, .flags = kHashMruOrder});
    EXPECT_EQ(shownBy(hashTablePrint, table), "");
    const HashElement *a = put(table, "ALPHA", "x");
    const HashElement *b = put(table, "B\x01", "y");
    const auto line = [](const HashElement *e, const char *key) {
        return formatted("  7:0x%p key=(%u)@0x%p %s value=(80)@0x%p parent=0x(nil)\n", e, e->keylen,
                         e->key, key, e->value);
    };
    const std::string lines = line(b, "B.") + line(a, "ALPHA");
    EXPECT_EQ(shownBy(hashTablePrint, table),
              formatted("Hash table @0x%p contents:\nEntries: 2\nState:   0x7 7 0x(nil)\n"
                        "Slot # 7\n",
                        table.get()) +
                  lines + "MRU ordering:\n" + lines);

    std::string report = shownBy(hashTableStatistics, table);
    const std::string head = formatted("Largest hash chain: B\x01,ALPHA,\nHash table at: %p\n"
                                       "\tParent at:  (nil)\n\tSlots at:   %p\n\tSize:       64\n",
                                       table.get(), table->slots);
    EXPECT_EQ(report.find(head), 0U) << report;
    EXPECT_NE(report.find("\nBad stats:      0\n"), std::string::npos);
    table->collisions = 5;
    table->entries = 9;
    report = shownBy(hashTableStatistics, table);
    EXPECT_NE(report.find("\nBad stats:      2\nHash stats bad...\n  Collisions = 5 vs 1 (actual)\n"
                          "  Chains     = 1 vs 1 (actual)\nHash entry counts bad...\n"),
              std::string::npos);
}

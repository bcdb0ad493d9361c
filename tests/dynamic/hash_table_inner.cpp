// The hash table against a plain model.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <list>
#include <memory>
#include <random>
#include <sstream>

#include "dynamic/hash_functions.h"
#include "dynamic/hash_table.h"
#include "support/kit.h"

using namespace zor;

namespace {

using TableOwner = std::unique_ptr<HashTable, decltype(&hashTableDestroy)>;
using Entry = std::pair<std::string, std::string>; // key and value
using Entries = std::vector<Entry>;

TableOwner makeTable(const HashTableParameters &parameters) {
    return {hashTableCreate(parameters), hashTableDestroy};
}

HashElement *get(const TableOwner &table, const std::string &key, Touch touch = Touch::none,
                 bool fallthrough = false) {
    return hashTableLookup(table.get(), key.data(), key.size(), touch, fallthrough);
}

HashElement *put(const TableOwner &table, const std::string &key, const std::string &value,
                 bool duplicates = false, bool toparent = false) {
    HashInsertion insertion{key.data(), key.size(), const_cast<char *>(value.c_str())};
    insertion.valuelen = static_cast<int32_t>(value.size()) + 1;
    insertion.duplicates = duplicates;
    insertion.toparent = toparent;
    if (toparent) { // as by a caller that has looked for the key
        get(table, key);
        insertion.cursor = &table->cursor;
    }
    return hashTableInsert(table.get(), insertion);
}

Entry entryOf(const HashElement *element) {
    return {{static_cast<const char *>(element->key), element->keylen},
            static_cast<const char *>(hashElementValue(element))};
}

Entries entriesOf(const TableOwner &table) {
    Entries entries;
    HashCursor cursor{};
    while (const HashElement *element = hashTableNext(table.get(), cursor)) {
        entries.push_back(entryOf(element));
    }
    return entries;
}

Entries mruOrder(const TableOwner &table) {
    Entries entries;
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

uint32_t hashAllAlike(const HashTable *, const void *, uint32_t) {
    return 7;
}

} // namespace

TEST(HashFunctions, KnownAnswersWhereverTheKeyLies) {
    const std::string text = "Four score and seven years ago";
    EXPECT_EQ(Lookup3::hash("", 0, 0), 0xDEADBEEFU);
    EXPECT_EQ(Lookup3::hash("", 0, 0xDEADBEEF), 0xBD5B7DDEU);
    EXPECT_EQ(Lookup3::hash(text.data(), 30, 1), 0xCD628161U);
    for (const HashFunction hash : {hashBytes, hashInteger32, hashInteger64}) {
        EXPECT_EQ(hash(nullptr, text.data(), 30), 0x17770551U); // no integer has that length
    }
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
    // Integer keys, worked out by hand from the rules, with shifts to the right that keep the sign:
    // the hash of a key's lower half, and its own.
    const uint64_t rows[][3] = {{0x0, 0x3F57496A, 0x00000000},
                                {0x1, 0x27922C9D, 0x15515FBC},
                                {0x800000007FFFFFFF, 0x18CE91A6, 0x4805A2C3},
                                {0x8000000080000000, 0x18CE91A6, 0x5554F20A},
                                {0xFEDCBA98DEADBEEF, 0x242655C3, 0x43F1C88F}};
    for (const uint64_t(&row)[3] : rows) {
        EXPECT_EQ(hashInteger32(nullptr, row, 4), row[1]) << row[0];
        EXPECT_EQ(hashInteger64(nullptr, row, 8), row[2]) << row[0];
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
    for (const unsigned kind : {0U, 1U, 2U, 3U}) {
        const HashFunction hash = (kind & 1) != 0 ? hashAllAlike : nullptr;
        const auto table = makeTable({.hash = hash, .flags = (kind >> 1) * kHashMruOrder});
        std::list<Entry> model;
        uint32_t removes = 0;
        std::mt19937 random(5);
        for (int step = 0; step < 6000; ++step) {
            const auto key = std::string(random() % 20, 'x') + std::to_string(random() % 90);
            HashElement *const found = get(table, key);
            const auto known = std::find_if(model.begin(), model.end(),
                                            [&](const Entry &entry) { return entry.first == key; });
            ASSERT_EQ(found != nullptr, known != model.end()) << key;
            const unsigned choice = random() % 8;
            if (choice < 3) {
                const std::string value(random() % 70, static_cast<char>('a' + step % 26));
                const bool duplicate = kind < 2 && random() % 4 == 0;
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
                ASSERT_EQ(table->size,
                          size != 0 ? size : std::max(std::bit_ceil(2 * table->entries), 32U));
            } else if (choice == 7 && step % 89 == 0) {
                hashTableEmpty(table.get());
                model.clear();
            }
            ASSERT_EQ(table->entries, model.size());
            ASSERT_EQ(table->entries, table->inserts - table->deletes - removes);
            if (step % 64 == 0) {
                Entries expected(model.begin(), model.end());
                ASSERT_EQ(mruOrder(table), kind < 2 ? Entries{} : expected);
                Entries entries = entriesOf(table);
                if (hash == nullptr) {
                    std::sort(entries.begin(), entries.end());
                    std::sort(expected.begin(), expected.end());
                }
                ASSERT_EQ(entries, expected);
                const std::string report = shownBy(hashTableStatistics, table);
                ASSERT_NE(report.find("\nBad stats:      0\n"), std::string::npos);
            }
        }
        EXPECT_GT(std::min({table->grows, table->shrinks, table->reuses, table->evicts}), 0U);
    }
}

TEST(HashTable, ParentAndLinks) {
    const auto parent = makeTable({.hash = hashAllAlike, .flags = kHashMruOrder});
    const auto child = makeTable({.parent = parent.get(), .flags = kHashIsChild});
    const Entry a{"A", "one"}, b{"B", "two"}, c{"C", "three"};
    put(parent, "A", "one");
    put(parent, "B", "two");
    EXPECT_EQ(get(child, "A"), nullptr);
    const HashElement *link = get(child, "A", Touch::withParent, true);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link, get(child, "A"));
    EXPECT_EQ(link->parent, get(parent, "A"));
    EXPECT_EQ(entryOf(link), a);
    EXPECT_EQ(mruOrder(parent), (Entries{a, b}));
    HashElement *both = put(child, "C", "three", false, true);
    EXPECT_EQ(both->parent, get(parent, "C"));
    get(child, "A", Touch::here);
    EXPECT_EQ(mruOrder(parent), (Entries{c, a, b}));
    get(child, "A", Touch::withParent);
    EXPECT_EQ(mruOrder(parent), (Entries{a, c, b}));

    hashTableDelete(child.get(), both);
    EXPECT_NE(get(parent, "C"), nullptr);
    EXPECT_EQ(get(child, "C", Touch::none, true), both); // the freed link serves again
    EXPECT_EQ(child->reuses, 1U);
    hashTableEmpty(child.get());
    EXPECT_TRUE(hashTableIsEmpty(child.get()));
    put(parent, "C", "second", true); // a duplicate comes last
    EXPECT_EQ(mruOrder(parent), (Entries{a, c, b, {"C", "second"}}));
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
    HashInsertion huge{"K", 1, nullptr};
    huge.valuelen = INT32_MAX; // does not fit an address space, and is refused ahead of any copy
    EXPECT_EQ(hashTableInsert(child.get(), huge), nullptr);
    EXPECT_EQ(entriesOf(child), Entries{});
    EXPECT_EQ(entriesOf(starved), Entries{});

    testing::internal::CaptureStderr();
    hashTableResize(parent.get(), 1U << 30, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "HashTable_Resize alloc error, continuing\n");
    EXPECT_EQ(parent->size, 64U);
    EXPECT_EQ(parent->flags & HASH_TABLE_RESIZING, 0U);
    EXPECT_EQ(entriesOf(parent), (Entries{{"A", "1"}}));
}

TEST(HashTable, PrintsItself) {
    const auto table = makeTable({.hash = hashAllAlike, .flags = kHashMruOrder});
    EXPECT_EQ(shownBy(hashTablePrint, table), "");
    const HashElement *a = put(table, "ALPHA", "x");
    const HashElement *b = put(table, "B\x01", "y");
    std::ostringstream state;
    state << "Hash table @0x" << table.get()
          << " contents:\nEntries: 2\nState:   0x7 7 0x(nil)\nSlot # 7\n";
    std::ostringstream lines;
    for (const HashElement *e : {b, a}) {
        lines << "  7:0x" << e << " key=(" << e->keylen << ")@0x" << e->key
              << (e == a ? " ALPHA" : " B.") << " value=(80)@0x" << e->value << " parent=0x(nil)\n";
    }
    EXPECT_EQ(shownBy(hashTablePrint, table),
              state.str() + lines.str() + "MRU ordering:\n" + lines.str());
    table->collisions = 5;
    table->entries = 9;
    const std::string report = kit::shape(shownBy(hashTableStatistics, table));
    EXPECT_TRUE(report.starts_with("Largest hash chain: B\x01,ALPHA,\nHash table at: @\n\tParent "
                                   "at:  (nil)\n\tSlots at:   @\n\tSize:       64\n"))
        << report;
    EXPECT_NE(report.find("\nBad stats:      2\nHash stats bad...\n  Collisions = 5 vs 1 (actual)\n"
                          "  Chains     = 1 vs 1 (actual)\nHash entry counts bad...\n"),
              std::string::npos);
}

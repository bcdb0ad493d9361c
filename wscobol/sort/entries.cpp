// Entries are distributed by the bytes in which their prefixes differ, the foremost ones only and
// no more at a time than will tell most of them apart; groups that these leave alike are
// distributed again by what comes behind. Many entries go by one byte at a time, so that the groups
// fit into the processor's caches from then on. Where prefixes begin alike and what follows would
// tell few entries apart, the next bytes of the keys take the place of the common ones for a while:
// of BRANCH01|2345 the first six give way, and BRANCH012345 goes by all its digits.
#include "sort/entries.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace zor {
namespace {

constexpr uint32_t kFew = 20;
constexpr uint32_t kInCache = 16384;
constexpr uint32_t kDeepest = 8 * kPrefix; // bytes of the rest that become prefixes
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteValues = 256;
constexpr unsigned kSpareBits = 3; // told apart beyond the count's own, so that groups are small

class Ordering {
public:
    Ordering(uint32_t rest, Entry *spare) : rest_(rest), spare_(spare) {}

    // Prefixes stand for the bytes up to depth of the rest.
    void order(Entry *entries, uint32_t count, uint32_t depth) const;

private:
    bool isLess(const Entry &left, const Entry &right, uint32_t depth) const {
        if (left.prefix != right.prefix) {
            return left.prefix < right.prefix;
        }
        return depth < rest_ && memcmp(left.item + depth, right.item + depth, rest_ - depth) < 0;
    }
    void insert(Entry *entries, uint32_t count, uint32_t depth) const;
    void distribute(Entry *entries, uint32_t count, uint64_t mask) const;
    void orderRests(Entry *entries, uint32_t count, uint32_t depth) const;
    void orderFurther(Entry *entries, uint32_t count, uint32_t depth, uint32_t alike) const;

    uint32_t rest_;
    Entry *spare_;
};

// How many bits tell most of so many entries apart.
unsigned bitsFor(uint32_t count) {
    return static_cast<unsigned>(std::bit_width(count)) + kSpareBits;
}

// The foremost bytes of the prefix to go by, as a mask, for so many entries that differ in these
// bits.
uint64_t bytesToGoBy(uint64_t differing, uint32_t count) {
    const unsigned wanted = count > kInCache ? 1 : bitsFor(count);
    uint64_t mask = 0;
    for (unsigned bits = 0; bits < wanted && differing != 0;) {
        const auto shift = (std::bit_width(differing) - 1U) / kByteBits * kByteBits;
        const uint64_t byte = uint64_t{kByteValues - 1} << shift;
        bits += static_cast<unsigned>(std::popcount(differing & byte));
        mask |= byte;
        differing &= ~byte;
    }
    return mask;
}

void Ordering::insert(Entry *entries, uint32_t count, uint32_t depth) const {
    for (uint32_t next = 1; next < count; ++next) {
        const Entry entry = entries[next];
        uint32_t at = next;
        for (; at > 0 && isLess(entry, entries[at - 1], depth); --at) {
            entries[at] = entries[at - 1];
        }
        entries[at] = entry;
    }
}

// By the bytes of the mask, the last one first.
void Ordering::distribute(Entry *entries, uint32_t count, uint64_t mask) const {
    Entry *from = entries;
    Entry *to = spare_;
    while (mask != 0) {
        const auto shift = static_cast<unsigned>(std::countr_zero(mask));
        mask &= ~(uint64_t{kByteValues - 1} << shift);
        const auto byteOf = [shift](const Entry &entry) {
            return static_cast<uint8_t>(entry.prefix >> shift);
        };
        uint32_t places[kByteValues] = {};
        for (uint32_t at = 0; at < count; ++at) {
            ++places[byteOf(from[at])];
        }
        uint32_t sum = 0;
        for (uint32_t &place : places) {
            sum += std::exchange(place, sum);
        }
        for (uint32_t at = 0; at < count; ++at) {
            to[places[byteOf(from[at])]++] = from[at];
        }
        std::swap(from, to);
    }
    if (from != entries) {
        memcpy(entries, from, count * sizeof *entries);
    }
}

// Orders entries whose prefixes are alike by what is left of their rests.
void Ordering::orderRests(Entry *entries, uint32_t count, uint32_t depth) const {
    std::sort(entries, entries + count, [&](const Entry &left, const Entry &right) {
        const int order = memcmp(left.item + depth, right.item + depth, rest_ - depth);
        return order != 0 ? order < 0 : left.item > right.item;
    });
}

// Orders entries whose prefixes have this many of their first bytes in common, from 1 to all. Twice
// half the bits, because a number is not shifted by all its bits at once.
void Ordering::orderFurther(Entry *entries, uint32_t count, uint32_t depth, uint32_t alike) const {
    const uint32_t taken = std::min(alike, rest_ - depth);
    const unsigned half = taken * kByteBits / 2;
    const uint64_t low = entries->prefix << half << half >> half >> half;
    const uint64_t common = entries->prefix ^ low;
    const uint32_t from = std::min(depth, rest_ - kPrefix);
    for (uint32_t at = 0; at < count; ++at) {
        Entry &entry = entries[at];
        const uint64_t next = prefixAt(entry.item + from) << (depth - from) * kByteBits;
        entry.prefix = entry.prefix << half << half | next >> (kPrefix - taken) * kByteBits;
    }
    order(entries, count, depth + taken);
    for (uint32_t at = 0; at < count; ++at) {
        entries[at].prefix = common | entries[at].prefix >> half >> half;
    }
}

void Ordering::order(Entry *entries, uint32_t count, uint32_t depth) const {
    if (count <= kFew) {
        insert(entries, count, depth);
        return;
    }
    uint64_t differing = 0;
    for (uint32_t at = 1; at < count; ++at) {
        differing |= entries[at].prefix ^ entries[0].prefix;
    }
    const auto alike = static_cast<uint32_t>(std::countl_zero(differing)) / kByteBits;
    const bool tellsFew = static_cast<unsigned>(std::popcount(differing)) < bitsFor(count);
    if (depth < rest_ && depth < kDeepest && alike != 0 && tellsFew) {
        orderFurther(entries, count, depth, alike);
        return;
    }
    if (differing == 0) {
        if (depth < rest_) {
            orderRests(entries, count, depth);
        }
        return;
    }
    const uint64_t mask = bytesToGoBy(differing, count);
    distribute(entries, count, mask);
    const Entry *end = entries + count;
    for (Entry *group = entries; group != end;) {
        Entry *behind = group + 1;
        while (behind != end && ((behind->prefix ^ group->prefix) & mask) == 0) {
            ++behind;
        }
        if (behind - group > 1) {
            order(group, static_cast<uint32_t>(behind - group), depth);
        }
        group = behind;
    }
}

} // namespace

void orderEntries(Entry *entries, uint32_t count, uint32_t rest, Entry *spare) {
    Ordering(rest, spare).order(entries, count, 0);
}

} // namespace zor

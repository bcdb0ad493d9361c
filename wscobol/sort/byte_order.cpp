// Eight bytes of each string make a number, its head. The strings are distributed by the first
// bytes of the heads, as many as tell most of them apart; those that are still alike go on with the
// bytes behind these. A few strings are ordered by comparing.
#include "sort/byte_order.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zor {
namespace {

constexpr uint32_t kFew = 40;
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteValues = 256;
constexpr unsigned kHeadBits = sizeof(uint64_t) * kByteBits;

// Bits that vary beyond those that would number the strings, before they count as told apart.
constexpr int kSpareBits = 2;

// How many bytes of the heads, from the first on, tell most of the strings apart, going by the bits
// in which they differ at all.
unsigned bytesToGoBy(uint64_t differing, uint32_t count) {
    int wanted = static_cast<int>(sizeof count * kByteBits) - __builtin_clz(count) + kSpareBits;
    unsigned bytes = 0;
    while (bytes < sizeof differing && wanted > 0) {
        ++bytes;
        wanted -=
            __builtin_popcount(static_cast<uint8_t>(differing >> (kHeadBits - bytes * kByteBits)));
    }
    return bytes;
}

struct Ordering {
    const Strings &strings;
    OrderItem *spare;

    const uint8_t *bytes(const OrderItem &item) const {
        return strings.bytes + item.string * strings.size;
    }
    // Of strings whose heads begin at from.
    bool isLess(const OrderItem &left, const OrderItem &right, std::size_t from) const {
        if (left.head != right.head) {
            return left.head < right.head;
        }
        return memcmp(bytes(left) + from, bytes(right) + from, strings.size - from) < 0;
    }
    uint64_t loadHeads(OrderItem *items, uint32_t count, std::size_t from) const;
    void insert(OrderItem *items, uint32_t count, std::size_t from) const;
    void distribute(OrderItem *items, uint32_t count, uint64_t differing) const;
    void order(OrderItem *items, uint32_t count, std::size_t from) const;
};

// Gives the bits in which the heads differ.
uint64_t Ordering::loadHeads(OrderItem *items, uint32_t count, std::size_t from) const {
    uint64_t differing = 0;
    for (uint32_t at = 0; at < count; ++at) {
        uint64_t head;
        memcpy(&head, bytes(items[at]) + from, sizeof head);
        items[at].head = __builtin_bswap64(head);
        differing |= items[at].head ^ items[0].head;
    }
    return differing;
}

void Ordering::insert(OrderItem *items, uint32_t count, std::size_t from) const {
    for (uint32_t next = 1; next < count; ++next) {
        const OrderItem item = items[next];
        uint32_t at = next;
        for (; at > 0 && isLess(item, items[at - 1], from); --at) {
            items[at] = items[at - 1];
        }
        items[at] = item;
    }
}

// Orders by the bytes of the heads in which some bit is differing, the last one first.
void Ordering::distribute(OrderItem *items, uint32_t count, uint64_t differing) const {
    OrderItem *from = items;
    OrderItem *to = spare;
    for (unsigned shift = 0; shift < kHeadBits; shift += kByteBits) {
        const auto byteOf = [shift](uint64_t word) { return static_cast<uint8_t>(word >> shift); };
        if (byteOf(differing) == 0) {
            continue;
        }
        uint32_t places[kByteValues] = {};
        for (uint32_t at = 0; at < count; ++at) {
            ++places[byteOf(from[at].head)];
        }
        uint32_t sum = 0;
        for (uint32_t &place : places) {
            sum += std::exchange(place, sum);
        }
        for (uint32_t at = 0; at < count; ++at) {
            to[places[byteOf(from[at].head)]++] = from[at];
        }
        std::swap(from, to);
    }
    if (from != items) {
        memcpy(items, from, count * sizeof *items);
    }
}

// Orders strings that are alike up to from. Of the large groups that stay alike all go on by a call
// but the largest, so that calls nest only as deep as halving the count goes.
void Ordering::order(OrderItem *items, uint32_t count, std::size_t from) const {
    while (count > 1) {
        const uint64_t differing = loadHeads(items, count, from);
        if (count <= kFew) {
            insert(items, count, from);
            return;
        }
        const unsigned bytes = bytesToGoBy(differing, count);
        const uint64_t mask = ~uint64_t{0} << (kHeadBits - bytes * kByteBits);
        distribute(items, count, differing & mask);
        OrderItem *largest = nullptr;
        uint32_t largestCount = 0;
        const OrderItem *end = items + count;
        for (OrderItem *group = items; group != end;) {
            OrderItem *behind = group + 1;
            while (behind != end && ((behind->head ^ group->head) & mask) == 0) {
                ++behind;
            }
            auto *rest = group;
            auto restCount = static_cast<uint32_t>(behind - group);
            group = behind;
            if (restCount <= kFew && bytes < sizeof(uint64_t)) {
                insert(rest, restCount, from);
                continue;
            }
            if (restCount > largestCount) {
                std::swap(rest, largest);
                std::swap(restCount, largestCount);
            }
            order(rest, restCount, from + bytes);
        }
        items = largest;
        count = largestCount;
        from += bytes;
    }
}

} // namespace

void orderStrings(const Strings &strings, OrderItem *items, OrderItem *spare) {
    for (uint32_t at = 0; at < strings.count; ++at) {
        items[at].string = at;
    }
    Ordering{strings, spare}.order(items, strings.count, 0);
}

} // namespace zor

// Eight bytes of each string make a number, by which the strings are distributed byte by byte, the
// last one first; those that are alike so far go on with their next eight. A few strings are
// ordered by comparing.
#include "sort/byte_order.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zor {
namespace {

constexpr uint32_t kFew = 40;
constexpr unsigned kByteBits = 8;
constexpr unsigned kByteValues = 256;

struct Ordering {
    const Strings &strings;
    OrderItem *spare;

    const uint8_t *bytes(const OrderItem &item) const {
        return strings.bytes + item.string * strings.size;
    }
    bool isLess(const OrderItem &left, const OrderItem &right, std::size_t behindHead) const {
        if (left.head != right.head) {
            return left.head < right.head;
        }
        return memcmp(bytes(left) + behindHead, bytes(right) + behindHead,
                      strings.size - behindHead) < 0;
    }
    uint64_t loadHeads(OrderItem *items, uint32_t count, std::size_t from) const;
    void insert(OrderItem *items, uint32_t count, std::size_t behindHead) const;
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

void Ordering::insert(OrderItem *items, uint32_t count, std::size_t behindHead) const {
    for (uint32_t next = 1; next < count; ++next) {
        const OrderItem item = items[next];
        uint32_t at = next;
        for (; at > 0 && isLess(item, items[at - 1], behindHead); --at) {
            items[at] = items[at - 1];
        }
        items[at] = item;
    }
}

// Orders by the heads; a byte in which they are alike costs nothing.
void Ordering::distribute(OrderItem *items, uint32_t count, uint64_t differing) const {
    OrderItem *from = items;
    OrderItem *to = spare;
    for (unsigned shift = 0; shift < sizeof differing * kByteBits; shift += kByteBits) {
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

// Orders strings that are alike up to from. Of the groups that their heads leave alike all go on by
// a call but the largest, so that calls nest only as deep as halving the count goes.
void Ordering::order(OrderItem *items, uint32_t count, std::size_t from) const {
    while (count > 1) {
        const uint64_t differing = loadHeads(items, count, from);
        from += kStringStep;
        if (count <= kFew) {
            insert(items, count, from);
            return;
        }
        if (differing == 0) {
            continue;
        }
        distribute(items, count, differing);
        OrderItem *largest = items;
        uint32_t largestCount = 1;
        const OrderItem *end = items + count;
        for (OrderItem *group = items; group != end;) {
            OrderItem *behind = group + 1;
            while (behind != end && behind->head == group->head) {
                ++behind;
            }
            auto *rest = group;
            auto restCount = static_cast<uint32_t>(behind - group);
            if (restCount > largestCount) {
                std::swap(rest, largest);
                std::swap(restCount, largestCount);
            }
            if (restCount > 1) {
                order(rest, restCount, from);
            }
            group = behind;
        }
        items = largest;
        count = largestCount;
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

// Orders strings of bytes that are equally long and all different.
#ifndef ZOR_SORT_BYTE_ORDER_H
#define ZOR_SORT_BYTE_ORDER_H

#include <cstddef>
#include <cstdint>

namespace zor {

// Bytes of storage behind the last string, of any value, that may be read.
inline constexpr std::size_t kBehindStrings = sizeof(uint64_t);

// A string on its way to its place: which one it is, and the bytes that count at present, as a
// number.
struct OrderItem {
    uint64_t head;
    uint32_t string; // from 0
};

// count strings of size bytes, one behind the other.
struct Strings {
    const uint8_t *bytes;
    std::size_t size;
    uint32_t count;
};

// Gives the numbers of the strings, in ascending order of their bytes, in items[].string. Both
// items and spare have room for all.
void orderStrings(const Strings &strings, OrderItem *items, OrderItem *spare);

} // namespace zor

#endif

// Integer hashes: Thomas Wang's shift hashes.
#include "dynamic/hash_functions.h"

namespace zor {
namespace {

template <class Integer> Integer readInteger(const void *key) {
    Integer value;
    memcpy(&value, key, sizeof value);
    return value;
}

// Shifts to the right keep the sign; all else wraps.
inline uint32_t arithmeticRight(uint32_t value, int bits) {
    return static_cast<uint32_t>(static_cast<int32_t>(value) >> bits);
}
inline uint64_t arithmeticRight(uint64_t value, int bits) {
    return static_cast<uint64_t>(static_cast<int64_t>(value) >> bits);
}

} // namespace

uint32_t hashBytes(const HashTable *, const void *key, uint32_t length) {
    return Lookup3::hash(key, length, 0);
}

uint32_t hashInteger32(const HashTable *, const void *key, uint32_t length) {
    if (length != sizeof(uint32_t)) {
        return Lookup3::hash(key, length, 0);
    }
    auto x = readInteger<uint32_t>(key);
    x = (x ^ 61) ^ arithmeticRight(x, 16);
    x *= 9;
    x ^= arithmeticRight(x, 4);
    x *= 0x27D4EB2D;
    x ^= arithmeticRight(x, 15);
    return x;
}

uint32_t hashInteger64(const HashTable *, const void *key, uint32_t length) {
    if (length != sizeof(uint64_t)) {
        return Lookup3::hash(key, length, 0);
    }
    auto x = readInteger<uint64_t>(key);
    x = ~x + (x << 18);
    x ^= arithmeticRight(x, 31);
    x *= 21;
    x ^= arithmeticRight(x, 11);
    x += x << 6;
    x ^= arithmeticRight(x, 22);
    return static_cast<uint32_t>(x);
}

} // namespace zor

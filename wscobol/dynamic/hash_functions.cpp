// Byte hash: lookup3 keeps three lanes that it mixes every 12 bytes, and mixes once more, harder,
// behind the last. Integer hashes: Thomas Wang's shift hashes.
#include "dynamic/hash_functions.h"

#include <bit>
#include <cstring>
#include <memory>

namespace zor {
namespace {

constexpr uint32_t kLookup3Seed = 0xDEADBEEF;
constexpr uint32_t kBlockBytes = 12;

struct Lanes {
    uint32_t a;
    uint32_t b;
    uint32_t c;
};

inline void mixStep(uint32_t &target, uint32_t &source, uint32_t third, int rotation) {
    target -= source;
    target ^= std::rotl(source, rotation);
    source += third;
}

inline void mixBlock(Lanes &lanes) {
    auto &[a, b, c] = lanes;
    mixStep(a, c, b, 4);
    mixStep(b, a, c, 6);
    mixStep(c, b, a, 8);
    mixStep(a, c, b, 16);
    mixStep(b, a, c, 19);
    mixStep(c, b, a, 4);
}

inline void finalStep(uint32_t &target, uint32_t source, int rotation) {
    target ^= source;
    target -= std::rotl(source, rotation);
}

inline void mixFinal(Lanes &lanes) {
    auto &[a, b, c] = lanes;
    finalStep(c, b, 14);
    finalStep(a, c, 11);
    finalStep(b, a, 25);
    finalStep(c, b, 16);
    finalStep(a, c, 4);
    finalStep(b, a, 14);
    finalStep(c, b, 24);
}

// The first bytes of a word in memory order, the rest zero.
template <class Unit> inline uint32_t loadWord(const uint8_t *bytes, unsigned count = 4) {
    uint32_t word = 0;
    unsigned at = 0;
    for (; at + sizeof(Unit) <= count; at += sizeof(Unit)) {
        Unit unit;
        std::memcpy(&unit, std::assume_aligned<alignof(Unit)>(bytes + at), sizeof unit);
        word |= static_cast<uint32_t>(unit) << (8 * at);
    }
    for (; at < count; ++at) {
        word |= static_cast<uint32_t>(bytes[at]) << (8 * at);
    }
    return word;
}

// Reads the key by units that its alignment allows.
template <class Unit> uint32_t hashByUnits(const uint8_t *bytes, uint32_t length, Lanes lanes) {
    while (length > kBlockBytes) {
        lanes.a += loadWord<Unit>(bytes);
        lanes.b += loadWord<Unit>(bytes + 4);
        lanes.c += loadWord<Unit>(bytes + 8);
        mixBlock(lanes);
        bytes += kBlockBytes;
        length -= kBlockBytes;
    }
    if (length == 0) {
        return lanes.c;
    }
    if (length > 8) {
        lanes.a += loadWord<Unit>(bytes);
        lanes.b += loadWord<Unit>(bytes + 4);
        lanes.c += loadWord<Unit>(bytes + 8, length - 8);
    } else if (length > 4) {
        lanes.a += loadWord<Unit>(bytes);
        lanes.b += loadWord<Unit>(bytes + 4, length - 4);
    } else {
        lanes.a += loadWord<Unit>(bytes, length);
    }
    mixFinal(lanes);
    return lanes.c;
}

template <class Integer> Integer readInteger(const void *key) {
    Integer value;
    std::memcpy(&value, key, sizeof value);
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

uint32_t hashLittle(const void *key, uint32_t length, uint32_t initial) {
    const auto *bytes = static_cast<const uint8_t *>(key);
    const uint32_t start = kLookup3Seed + length + initial;
    const Lanes lanes{start, start, start};
    const auto address = reinterpret_cast<uintptr_t>(key);
    if (address % sizeof(uint32_t) == 0) {
        return hashByUnits<uint32_t>(bytes, length, lanes);
    }
    if (address % sizeof(uint16_t) == 0) {
        return hashByUnits<uint16_t>(bytes, length, lanes);
    }
    return hashByUnits<uint8_t>(bytes, length, lanes);
}

uint32_t hashBytes(const HashTable *, const void *key, uint32_t length) {
    return hashLittle(key, length, 0);
}

uint32_t hashInteger32(const HashTable *, const void *key, uint32_t length) {
    if (length != sizeof(uint32_t)) {
        return hashLittle(key, length, 0);
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
        return hashLittle(key, length, 0);
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

// The hash functions that a table chooses from.
#ifndef ZOR_DYNAMIC_HASH_FUNCTIONS_H
#define ZOR_DYNAMIC_HASH_FUNCTIONS_H

#include <bit>
#include <cstdint>
#include <cstring>

struct HashTable;

namespace zor {

// In the form that a table calls. The integer hashes read a key of 4 or 8 bytes, and fall back on
// the byte hash when a key has another length.
uint32_t hashBytes(const HashTable *table, const void *key, uint32_t length);
uint32_t hashInteger32(const HashTable *table, const void *key, uint32_t length);
uint32_t hashInteger64(const HashTable *table, const void *key, uint32_t length);

// Bob Jenkins' lookup3 for little-endian machines: three lanes are mixed every 12 bytes, and once
// more, harder, behind the last.
class Lookup3 {
public:
    // The value does not depend on where the key lies: words load from any address alike.
    [[gnu::always_inline]] static uint32_t hash(const void *key, uint32_t length,
                                                uint32_t initial) {
        const auto *bytes = static_cast<const uint8_t *>(key);
        Lookup3 lanes(kSeed + length + initial);
        if (length < kWordBytes) {
            return length == 0 ? lanes.c : lanes.finish(shortWord(bytes, length), 0, 0);
        }
        const uint8_t *const end = bytes + length;
        for (; length > kBlockBytes; length -= kBlockBytes, bytes += kBlockBytes) {
            lanes.mix(word(bytes), word(bytes + 4), word(bytes + 8));
        }
        if (length > 8) {
            return lanes.finish(word(bytes), word(bytes + 4), lastWord(end, length - 8));
        }
        if (length > 4) {
            return lanes.finish(word(bytes), lastWord(end, length - 4), 0);
        }
        return lanes.finish(lastWord(end, length), 0, 0);
    }

private:
    static constexpr uint32_t kSeed = 0xDEADBEEF;
    static constexpr uint32_t kWordBytes = 4;
    static constexpr uint32_t kBlockBytes = 12;

    explicit Lookup3(uint32_t start) : a(start), b(start), c(start) {}

    static uint32_t word(const uint8_t *bytes) {
        uint32_t value;
        memcpy(&value, bytes, sizeof value);
        return value;
    }

    // The last 1 to 4 bytes ahead of the end; 4 bytes of the key lie there.
    static uint32_t lastWord(const uint8_t *end, uint32_t count) {
        return word(end - kWordBytes) >> (8 * (kWordBytes - count));
    }

    // 1 to 3 bytes with nothing readable around them.
    static uint32_t shortWord(const uint8_t *bytes, uint32_t count) {
        uint32_t value = bytes[0];
        for (uint32_t i = 1; i < count; ++i) {
            value |= static_cast<uint32_t>(bytes[i]) << (8 * i);
        }
        return value;
    }

    static void mixStep(uint32_t &target, uint32_t &source, uint32_t third, int rotation) {
        target -= source;
        target ^= std::rotl(source, rotation);
        source += third;
    }

    void mix(uint32_t first, uint32_t second, uint32_t third) {
        a += first;
        b += second;
        c += third;
        mixStep(a, c, b, 4);
        mixStep(b, a, c, 6);
        mixStep(c, b, a, 8);
        mixStep(a, c, b, 16);
        mixStep(b, a, c, 19);
        mixStep(c, b, a, 4);
    }

    static void finalStep(uint32_t &target, uint32_t source, int rotation) {
        target ^= source;
        target -= std::rotl(source, rotation);
    }

    uint32_t finish(uint32_t first, uint32_t second, uint32_t third) {
        a += first;
        b += second;
        c += third;
        finalStep(c, b, 14);
        finalStep(a, c, 11);
        finalStep(b, a, 25);
        finalStep(c, b, 16);
        finalStep(a, c, 4);
        finalStep(b, a, 14);
        finalStep(c, b, 24);
        return c;
    }

    uint32_t a;
    uint32_t b;
    uint32_t c;
};

} // namespace zor

#endif

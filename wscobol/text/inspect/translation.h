// The bytes of an item translated through a table.
#ifndef ZOR_TEXT_INSPECT_TRANSLATION_H
#define ZOR_TEXT_INSPECT_TRANSLATION_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zor::inspect {

inline constexpr std::array<uint8_t, 256> kSameBytes = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = static_cast<uint8_t>(byte);
    }
    return table;
}();

struct Translation {
    std::array<uint8_t, 256> table = kSameBytes;

    void apply(uint8_t *at, std::size_t bytes) const {
        for (uint8_t *const end = at + bytes; at != end; ++at) {
            *at = table[*at];
        }
    }
};

} // namespace zor::inspect

#endif

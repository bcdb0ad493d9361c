// The delimiters of STRING and UNSTRING, which match by their bytes or by the weights of a
// program's collating sequence.
#ifndef ZOR_TEXT_DELIMITER_H
#define ZOR_TEXT_DELIMITER_H

#include <algorithm>

#include "text/byte_search.h"

namespace zor {

// How the characters of a statement compare.
struct Characters {
    std::size_t size;       // 1 or 2 bytes
    const uint8_t *weights; // of the bytes, or null: every byte is equal to itself alone

    // Of a number of bytes; without a division, which would take longer than the rest of a move.
    uint32_t count(std::size_t bytes) const { return static_cast<uint32_t>(bytes >> (size - 1)); }

    bool equal(uint8_t left, uint8_t right) const {
        return left == right || (weights != nullptr && weights[left] == weights[right]);
    }

    // Whether the text begins with a delimiter; never with an empty one.
    bool beginsWith(Bytes text, Bytes delimiter) const {
        if (delimiter.empty() || delimiter.size() > text.size()) {
            return false;
        }
        if (weights == nullptr) {
            return equalBytes(text.data(), delimiter.data(), delimiter.size());
        }
        return std::equal(delimiter.begin(), delimiter.end(), text.begin(),
                          [&](uint8_t left, uint8_t right) { return equal(left, right); });
    }

    // The offset of the first delimiter in a text of single bytes, or kNowhere.
    std::size_t findByWeights(Bytes text, Bytes delimiter) const {
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (beginsWith(text.subspan(at), delimiter)) {
                return at;
            }
        }
        return kNowhere;
    }
};

} // namespace zor

#endif

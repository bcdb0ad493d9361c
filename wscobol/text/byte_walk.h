// A walk through a text from one byte of a few to the next, a block of bytes at a time.
#ifndef ZOR_TEXT_BYTE_WALK_H
#define ZOR_TEXT_BYTE_WALK_H

#include <algorithm>

#include "text/byte_search.h"

namespace zor {

class ByteWalk {
public:
    static constexpr std::size_t kMostBytes = 4;

    explicit ByteWalk(Bytes text) : text_(text) {}

    // One more byte to stop at, at most kMostBytes.
    void stopAt(uint8_t byte) { wanted_[count_++] = repeated(byte); }

    // The offset of the first byte wanted at the given offset or behind it, or kNowhere. Offsets
    // never go back.
    std::size_t next(std::size_t offset) {
        for (; offset < text_.size(); offset = block_ + kBlock) {
            if (offset >= block_ + kBlock || !loaded_) {
                load(offset);
            }
            if (const unsigned ahead = found_ >> (offset - block_); ahead != 0) {
                return offset + static_cast<std::size_t>(__builtin_ctz(ahead));
            }
        }
        return kNowhere;
    }

private:
    static constexpr std::size_t kBlock = sizeof(__m128i);

    void load(std::size_t offset) {
        const uint8_t *from = text_.data() + offset;
        const std::size_t bytes = std::min(text_.size() - offset, kBlock);
        uint8_t rest[kBlock];
        if (bytes < kBlock) {
            memcpy(rest, from, bytes);
            from = rest;
        }
        const __m128i block = decimal::loadFull(from);
        __m128i equal = _mm_setzero_si128();
        for (std::size_t i = 0; i < count_; ++i) {
            equal = _mm_or_si128(equal, _mm_cmpeq_epi8(block, wanted_[i]));
        }
        const unsigned within = (1U << bytes) - 1;
        found_ = static_cast<unsigned>(_mm_movemask_epi8(equal)) & within;
        block_ = offset;
        loaded_ = true;
    }

    Bytes text_;
    __m128i wanted_[kMostBytes];
    std::size_t count_ = 0;
    std::size_t block_ = 0;
    unsigned found_ = 0; // a bit for each byte of the block
    bool loaded_ = false;
};

} // namespace zor

#endif

// Sixteen places at once: those whose first and last bytes both fit are few, and are looked at.
#include "text/byte_search.h"

namespace zor {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);

} // namespace

BytesFinder::BytesFinder(Bytes wanted, std::size_t characterSize)
    : wanted_(wanted), characterSize_(characterSize),
      boundaries_(characterSize == 1 ? 0xFFFF : 0x5555) {
    if (!wanted.empty()) {
        first_ = repeated(wanted.front());
        last_ = repeated(wanted.back());
    }
}

// Whether the text of a candidate, whose first and last bytes fit, is the wanted one.
inline bool BytesFinder::middleFits(const uint8_t *candidate) const {
    return wanted_.size() <= 2 || equalBytes(candidate + 1, wanted_.data() + 1, wanted_.size() - 2);
}

// The first of a block of places that fits, null when none does; the places that are allowed have
// their bits set. All are tested at once for the first and the last byte of what is wanted.
inline const uint8_t *BytesFinder::inBlock(const uint8_t *block, unsigned allowed) const {
    const __m128i fits =
        _mm_and_si128(_mm_cmpeq_epi8(decimal::loadFull(block), first_),
                      _mm_cmpeq_epi8(decimal::loadFull(block + wanted_.size() - 1), last_));
    auto candidates = static_cast<unsigned>(_mm_movemask_epi8(fits)) & allowed;
    for (; candidates != 0; candidates &= candidates - 1) {
        const uint8_t *const candidate = block + __builtin_ctz(candidates);
        if (middleFits(candidate)) {
            return candidate;
        }
    }
    return nullptr;
}

const uint8_t *BytesFinder::inPlaces(const uint8_t *at, std::size_t places) const {
    if (places < kBlock) {
        for (const uint8_t *const end = at + places; at < end; at += characterSize_) {
            if (*at == wanted_.front() && at[wanted_.size() - 1] == wanted_.back() &&
                middleFits(at)) {
                return at;
            }
        }
        return nullptr;
    }
    for (; places >= kBlock; at += kBlock, places -= kBlock) {
        if (const uint8_t *const found = inBlock(at, boundaries_); found != nullptr) {
            return found;
        }
    }
    const std::size_t again = kBlock - places; // the last block overlaps the one before
    return inBlock(at - again, boundaries_ << again);
}

} // namespace zor

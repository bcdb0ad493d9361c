#include "text/byte_search.h"

namespace zor {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);

__m128i load(const uint8_t *address) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(address));
}

// Whether the text of a candidate, whose first and last bytes fit, is the wanted one.
bool middleFits(const uint8_t *candidate, Bytes wanted) {
    return wanted.size() <= 2 || equalBytes(candidate + 1, wanted.data() + 1, wanted.size() - 2);
}

} // namespace

// A block of places is tested at once for the first and the last byte of what is wanted.
std::size_t findBytes(Bytes text, Bytes wanted, std::size_t characterSize) {
    const std::size_t length = wanted.size();
    if (length == 0 || length > text.size()) {
        return kNowhere;
    }
    const uint8_t *const start = text.data();
    if (length == 1 && characterSize == 1) {
        return findByte(text, wanted.front());
    }
    const std::size_t places = text.size() - length + 1;
    const unsigned boundaries = characterSize == 1 ? 0xFFFF : 0x5555;
    const __m128i first = repeated(wanted.front());
    const __m128i last = repeated(wanted.back());
    // The places of a block that are allowed have their bits set.
    const auto findInBlock = [&](std::size_t offset, unsigned allowed) {
        const uint8_t *const block = start + offset;
        const __m128i fits = _mm_and_si128(_mm_cmpeq_epi8(load(block), first),
                                           _mm_cmpeq_epi8(load(block + length - 1), last));
        auto candidates = static_cast<unsigned>(_mm_movemask_epi8(fits)) & allowed;
        for (; candidates != 0; candidates &= candidates - 1) {
            const auto at = static_cast<std::size_t>(__builtin_ctz(candidates));
            if (middleFits(block + at, wanted)) {
                return offset + at;
            }
        }
        return kNowhere;
    };
    std::size_t offset = 0;
    for (; offset + kBlock <= places; offset += kBlock) {
        if (const std::size_t found = findInBlock(offset, boundaries); found != kNowhere) {
            return found;
        }
    }
    if (places >= kBlock) { // the last block overlaps the one before
        const std::size_t again = offset + kBlock - places;
        return findInBlock(places - kBlock, boundaries << again);
    }
    for (; offset < places; offset += characterSize) {
        const uint8_t *const candidate = start + offset;
        if (*candidate == wanted.front() && candidate[length - 1] == wanted.back() &&
            middleFits(candidate, wanted)) {
            return offset;
        }
    }
    return kNowhere;
}

} // namespace zor

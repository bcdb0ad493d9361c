// Statements of one clause, the usual ones: what they do to the item is counting, searching,
// filling or translating.
#include <algorithm>
#include <emmintrin.h>

#include "text/inspect/passes.h"
#include "text/inspect/translation.h"

namespace zor::inspect {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);

// Vectors of one-byte and of two-byte characters.
struct OneByte {
    static constexpr std::size_t kSize = 1;
    static __m128i fill(const uint8_t *character) { return repeated(*character); }
    static __m128i equal(__m128i left, __m128i right) { return _mm_cmpeq_epi8(left, right); }
};
struct TwoBytes {
    static constexpr std::size_t kSize = 2;
    static __m128i fill(const uint8_t *character) {
        int16_t unit;
        memcpy(&unit, character, sizeof unit);
        return _mm_set1_epi16(unit);
    }
    static __m128i equal(__m128i left, __m128i right) { return _mm_cmpeq_epi16(left, right); }
};

using decimal::loadFull;
using decimal::storeFull;

std::size_t sumOfBytes(__m128i counts) {
    const __m128i sums = _mm_sad_epu8(counts, _mm_setzero_si128());
    return static_cast<unsigned>(_mm_cvtsi128_si32(sums)) +
           static_cast<unsigned>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums)));
}

// How often a character stands in the bytes, a whole number of characters. Each byte of an equal
// character counts 1 in a byte of the vectors, which are emptied before they are full.
template <class Character> std::size_t count(const uint8_t *at, std::size_t bytes, Bytes wanted) {
    constexpr std::size_t kUnrolled = 4;
    constexpr std::size_t kMostRounds = 255 / (kUnrolled / 2);
    const __m128i character = Character::fill(wanted.data());
    const auto equal = [&](std::size_t block) {
        return Character::equal(loadFull(at + block * kBlock), character);
    };
    std::size_t matching = 0;
    while (bytes >= kUnrolled * kBlock) {
        __m128i even = _mm_setzero_si128();
        __m128i odd = _mm_setzero_si128();
        const std::size_t rounds = std::min(bytes / (kUnrolled * kBlock), kMostRounds);
        for (std::size_t left = rounds; left != 0; --left, at += kUnrolled * kBlock) {
            even = _mm_add_epi8(even, _mm_add_epi8(equal(0), equal(2)));
            odd = _mm_add_epi8(odd, _mm_add_epi8(equal(1), equal(3)));
        }
        matching += sumOfBytes(_mm_sub_epi8(_mm_setzero_si128(), even)) +
                    sumOfBytes(_mm_sub_epi8(_mm_setzero_si128(), odd));
        bytes -= rounds * kUnrolled * kBlock;
    }
    __m128i counts = _mm_setzero_si128();
    for (; bytes >= kBlock; at += kBlock, bytes -= kBlock) {
        counts = _mm_sub_epi8(counts, equal(0));
    }
    if (bytes != 0) {
        uint8_t rest[kBlock];
        memcpy(rest, at, bytes);
        uint8_t counted[kBlock] = {};
        memset(counted, 1, bytes);
        counts = _mm_add_epi8(
            counts, _mm_and_si128(Character::equal(loadFull(rest), character), loadFull(counted)));
    }
    return (matching + sumOfBytes(counts)) / Character::kSize;
}

// Replaces each character of the bytes that is the wanted one; true when one was.
template <class Character>
bool replaceAll(uint8_t *at, std::size_t bytes, Bytes wanted, Bytes target) {
    const __m128i character = Character::fill(wanted.data());
    const __m128i change = _mm_xor_si128(character, Character::fill(target.data()));
    bool replaced = false;
    for (; bytes >= kBlock; at += kBlock, bytes -= kBlock) {
        const __m128i block = loadFull(at);
        const __m128i equal = Character::equal(block, character);
        if (_mm_movemask_epi8(equal) != 0) {
            storeFull(at, _mm_xor_si128(block, _mm_and_si128(equal, change)));
            replaced = true;
        }
    }
    for (; bytes != 0; at += Character::kSize, bytes -= Character::kSize) {
        if (memcmp(at, wanted.data(), Character::kSize) == 0) {
            memcpy(at, target.data(), Character::kSize);
            replaced = true;
        }
    }
    return replaced;
}

// CONVERTING of successive characters to as many successive ones, such as the lower case letters to
// the upper case ones.
bool mayBeSuccessive(Bytes characters) {
    return !characters.empty() && characters.back() == characters.front() + characters.size() - 1;
}

bool areSuccessive(Bytes characters) {
    for (std::size_t i = 1; i < characters.size(); ++i) {
        if (characters[i] != characters.front() + i) {
            return false;
        }
    }
    return true;
}

void shiftCharacters(uint8_t *at, std::size_t bytes, Bytes from, Bytes to) {
    const uint8_t lowest = from.front();
    const auto highest = static_cast<uint8_t>(from.size() - 1); // less the lowest
    const auto shift = static_cast<uint8_t>(to.front() - lowest);
    const __m128i lowestOnes = repeated(lowest);
    const __m128i highestOnes = repeated(highest);
    const __m128i shifts = repeated(shift);
    for (; bytes >= kBlock; at += kBlock, bytes -= kBlock) {
        const __m128i block = loadFull(at);
        const __m128i above = _mm_sub_epi8(block, lowestOnes);
        const __m128i within = _mm_cmpeq_epi8(_mm_min_epu8(above, highestOnes), above);
        storeFull(at, _mm_add_epi8(block, _mm_and_si128(within, shifts)));
    }
    for (; bytes != 0; ++at, --bytes) {
        const auto above = static_cast<uint8_t>(*at - lowest);
        *at = static_cast<uint8_t>(*at + (above <= highest ? shift : 0));
    }
}

void translate(uint8_t *at, std::size_t bytes, const Clause &clause) {
    ByteTable table = kSameBytes;
    const uint8_t *const from = clause.compared.data();
    const uint8_t *const to = clause.target.data();
    const std::size_t step = clause.figurative ? 0 : 1;
    for (std::size_t i = clause.compared.size(); i-- > 0;) { // the first place of a byte decides
        table[from[i]] = to[i * step];
    }
    translateBytes(at, at, bytes, table);
}

bool convert(Item &item, const Clause &clause) {
    // A copy of the item is written back only if something was replaced, which is not seen here.
    if (item.characterSize != 1 || item.original != nullptr || clause.characters ||
        clause.leading) {
        return false;
    }
    uint8_t *const at = item.start + clause.start;
    const std::size_t bytes = clause.limit - clause.start;
    if (!clause.figurative && mayBeSuccessive(clause.compared) && mayBeSuccessive(clause.target) &&
        areSuccessive(clause.compared) && areSuccessive(clause.target)) {
        shiftCharacters(at, bytes, clause.compared, clause.target);
    } else {
        translate(at, bytes, clause);
    }
    return true;
}

void tallyOrReplace(Item &item, Clause &clause, uint8_t *at, std::size_t bytes) {
    if (clause.kind == Kind::tallying) {
        ++*clause.counter;
    } else {
        replace(item, clause, at, bytes);
    }
}

bool takeCharacters(Item &item, Clause &clause) {
    const std::size_t size = item.characterSize;
    const std::size_t characters = (clause.limit - clause.start + size - 1) / size;
    if (clause.kind == Kind::tallying) {
        *clause.counter += static_cast<uint32_t>(characters);
        return true;
    }
    if (clause.once || (!clause.figurative && clause.target.size() != size)) {
        return false;
    }
    fillWithFirst(item, clause.target, item.start + clause.start, characters * size);
    item.replaced = true;
    return true;
}

void takeLeading(Item &item, Clause &clause) {
    const std::size_t length = clause.compared.size();
    for (std::size_t at = clause.start; at < clause.limit && length <= item.size - at &&
                                        equalBytes(item.start + at, clause.compared.data(), length);
         at += length) {
        tallyOrReplace(item, clause, item.start + at, length);
    }
}

// All matches, or the first one.
void takeFound(Item &item, Clause &clause, Bytes text) {
    const BytesFinder finder(clause.compared, item.characterSize);
    for (;;) {
        const std::size_t found = finder.find(text);
        if (found == kNowhere) {
            return;
        }
        tallyOrReplace(item, clause, item.start + (text.data() - item.start) + found,
                       clause.compared.size());
        if (clause.kind == Kind::replacing && clause.once) {
            return;
        }
        text = text.subspan(found + clause.compared.size());
    }
}

template <class Character> void takeSingles(Item &item, Clause &clause, Bytes text) {
    const std::size_t bytes = text.size() - text.size() % Character::kSize;
    if (clause.kind == Kind::tallying) {
        *clause.counter +=
            static_cast<uint32_t>(count<Character>(text.data(), bytes, clause.compared));
    } else if (replaceAll<Character>(item.start + (text.data() - item.start), bytes,
                                     clause.compared, clause.target)) {
        item.replaced = true;
    }
}

} // namespace

bool singlePass(Item &item, Clause &clause) {
    if (!clause.enabled || clause.start >= clause.limit) {
        return true;
    }
    const std::size_t size = item.characterSize;
    const std::size_t length = clause.compared.size();
    const bool wholeCharacters = ((clause.start | length) & (size - 1)) == 0;
    if (!clause.independent || clause.kind == Kind::other || !wholeCharacters) {
        return false;
    }
    if (clause.kind == Kind::converting) {
        return convert(item, clause);
    }
    if (clause.characters) {
        return takeCharacters(item, clause);
    }
    const std::size_t end = std::min(item.size, clause.limit - 1 + length);
    if (length == 0 || end < clause.start + length) {
        return true;
    }
    if (clause.leading) {
        if (clause.once) {
            return false;
        }
        takeLeading(item, clause);
        return true;
    }
    const Bytes text = item.bytes().subspan(clause.start, end - clause.start);
    if (length != size || clause.once) {
        takeFound(item, clause, text);
    } else if (size == 1) {
        takeSingles<OneByte>(item, clause, text);
    } else {
        takeSingles<TwoBytes>(item, clause, text);
    }
    return true;
}

} // namespace zor::inspect

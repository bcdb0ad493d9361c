// Comparisons of a key with the argument by the first bytes of both, as far as these decide.
#ifndef ZOR_TEXT_SEARCH_PREFIX_H
#define ZOR_TEXT_SEARCH_PREFIX_H

#include <algorithm>
#include <cstdint>

#include "decimal/digits.h"
#include "decimal/words.h"
#include "text/search/key.h"

namespace zor::search {

// The first two words of a key that has at least one; they overlap in a key shorter than both.
// Where the order of the bytes is not that of the keys but the reverse, flip has all bits.
class FirstWords {
public:
    static constexpr int32_t kWord = sizeof(uint32_t);

    FirstWords(const Key &key, uint32_t secondMask, uint32_t flip)
        : secondWord_(std::min<int32_t>(key.length - kWord, kWord)), secondMask_(secondMask),
          flip_(flip), wantedFirst_(first(key.argument)), wantedSecond_(second(key.argument)) {}

    // Below 0 or above 0 as the key is below or above the argument; 0 when the words are equal.
    int32_t order(const uint8_t *item) const {
        uint32_t word = first(item);
        uint32_t wanted = wantedFirst_;
        if (word == wanted) {
            word = second(item);
            wanted = wantedSecond_;
        }
        return (word > wanted ? 1 : 0) - (word < wanted ? 1 : 0);
    }

private:
    uint32_t first(const uint8_t *item) const { return decimal::loadDigits(item) ^ flip_; }
    uint32_t second(const uint8_t *item) const {
        return (decimal::loadDigits(item + secondWord_) & secondMask_) ^ flip_;
    }

    int32_t secondWord_; // its offset
    uint32_t secondMask_;
    uint32_t flip_;
    uint32_t wantedFirst_;
    uint32_t wantedSecond_;
};

// Keys whose bytes tell the order as they stand.
class TextPrefix {
public:
    static constexpr int32_t kShortestKey = FirstWords::kWord;

    explicit TextPrefix(const Key &key) : words_(key, ~0U, key.ascending ? 0 : ~0U) {}

    int32_t order(const uint8_t *item) const { return words_.order(item); }

private:
    FirstWords words_;
};

// Of two numbers of one sign the digits decide, which run the other way below zero.
class PackedPrefix {
public:
    static constexpr int32_t kShortestKey = FirstWords::kWord + 1; // no sign in the first word

    explicit PackedPrefix(const Key &key)
        : last_(key.length - 1), negative_(decimal::packedSignIsNegative(key.argument[last_])),
          ascending_(key.ascending), words_(key, key.length <= 2 * FirstWords::kWord ? ~0x0FU : ~0U,
                                            negative_ == ascending_ ? ~0U : 0) {}

    int32_t order(const uint8_t *item) const {
        if (decimal::packedSignIsNegative(item[last_]) != negative_) {
            return negative_ == ascending_ ? 1 : -1;
        }
        return words_.order(item);
    }

private:
    int32_t last_;
    bool negative_;
    bool ascending_;
    FirstWords words_;
};

} // namespace zor::search

#endif

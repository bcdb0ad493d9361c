// Bits of the words that make up the anchors and control blocks.
#ifndef ZOR_BASE_BITS_H
#define ZOR_BASE_BITS_H

#include <cstdint>

namespace zor {

// True when the word has any of the bits. The constants of C enumerations may be negative there.
template <class Word, class Bits> constexpr bool has(Word word, Bits bits) {
    return (static_cast<uint32_t>(word) & static_cast<uint32_t>(bits)) != 0;
}

template <class Word, class Bits> constexpr void set(Word &word, Bits bits) {
    word = static_cast<Word>(static_cast<uint32_t>(word) | static_cast<uint32_t>(bits));
}

template <class Word, class Bits> constexpr void clear(Word &word, Bits bits) {
    word = static_cast<Word>(static_cast<uint32_t>(word) & ~static_cast<uint32_t>(bits));
}

} // namespace zor

#endif

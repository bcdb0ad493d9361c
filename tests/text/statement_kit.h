// What the tests of statements share: the bytes of items, random numbers, and storage for operands
// that faults when a byte beside one is touched.
#ifndef ZOR_TESTS_TEXT_STATEMENT_KIT_H
#define ZOR_TESTS_TEXT_STATEMENT_KIT_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <sys/mman.h>
#include <vector>

#include "pcb.h"

// The bytes of a national item.
inline std::string wide(const std::u16string &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)};
}
inline std::string wide(const std::string &text) {
    return wide(std::u16string(text.begin(), text.end()));
}

// In bytes.
template <class Text> int32_t lengthOf(const Text &text) {
    return static_cast<int32_t>(text.size() * sizeof(text[0]));
}

inline std::string bytesOf(const void *address, std::size_t length) {
    return {static_cast<const char *>(address), length};
}

// A text as an item of this many bytes holds it: cut by whole characters, or padded with blanks.
inline std::string moved(const std::string &text, std::size_t length, bool right,
                         const std::string &blank) {
    const std::size_t excess = std::max(text.size(), length) - length;
    std::string item = text.substr(right ? excess / blank.size() * blank.size() : 0, length);
    for (std::size_t i = 0; item.size() < length; ++i) {
        item.insert(right ? i : item.size(), 1, blank[i % blank.size()]);
    }
    return item;
}

// Weights that make pairs of successive bytes equal.
inline uint8_t weightOf(uint8_t byte) {
    return byte / 2;
}
inline PCB programWithWeights() {
    static uint8_t weights[256];
    for (unsigned byte = 0; byte < 256; ++byte) {
        weights[byte] = weightOf(static_cast<uint8_t>(byte));
    }
    PCB pcb{};
    pcb.collatingWeights = weights;
    return pcb;
}

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    unsigned below(unsigned limit) { return engine_() % limit; }
    bool oneIn(unsigned n) { return below(n) == 0; }

    // Few different bytes, so that texts are found in each other.
    std::string text(std::size_t bytes, unsigned letters) {
        std::string made(bytes, '0');
        for (char &byte : made) {
            byte = static_cast<char>(byte + below(letters));
        }
        return made;
    }

private:
    std::mt19937 engine_;
};

// Each operand lies at the end or at the start of a page of its own, between pages that are not
// there.
class EndedPages {
public:
    // A copy of at most kRoom bytes, good until the next statement.
    uint8_t *place(const std::string &bytes) {
        if (used_ == pages_.size()) {
            auto *mapped = static_cast<uint8_t *>(
                mmap(nullptr, kRoom + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
            mprotect(mapped + kPage, kRoom, PROT_READ | PROT_WRITE);
            pages_.push_back(mapped + kPage);
        }
        uint8_t *page = pages_[used_++];
        uint8_t *start = atEnd_ ? page + kRoom - bytes.size() : page;
        memcpy(start, bytes.data(), bytes.size());
        return start;
    }

    // The operands of every other statement lie at the starts of their pages.
    void nextStatement() {
        used_ = 0;
        atEnd_ = !atEnd_;
    }

private:
    static constexpr std::size_t kPage = 4096, kRoom = 2 * kPage;
    std::vector<uint8_t *> pages_;
    std::size_t used_ = 0;
    bool atEnd_ = true;
};

// Of the operands of one random statement.
struct StatementMaker : Random {
    StatementMaker(unsigned seed, EndedPages &room) : Random(seed), pages(room) {
        pages.nextStatement();
    }
    EndedPages &pages;
};

#endif

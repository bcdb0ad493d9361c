// What the tests of whole statements share: random numbers, and storage for operands that faults
// when a byte beside one is touched.
#ifndef ZOR_TESTS_TEXT_STATEMENT_KIT_H
#define ZOR_TESTS_TEXT_STATEMENT_KIT_H

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <sys/mman.h>
#include <vector>

#include <gtest/gtest.h>

#include "pcb.h"

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
    uint32_t addressOf(const std::string &bytes) {
        return reinterpret_cast<uint32_t>(place(bytes));
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

// Carries out random statements, one for each seed, in each of the ways: all leave the same.
template <class Way>
void expectSame(unsigned statements, std::string (*outcome)(unsigned, EndedPages &, Way),
                const std::vector<Way> &ways) {
    EndedPages pages;
    for (unsigned seed = 0; seed < statements && !testing::Test::HasFailure(); ++seed) {
        const std::string expected = outcome(seed, pages, ways.front());
        for (std::size_t i = 1; i < ways.size(); ++i) {
            EXPECT_EQ(outcome(seed, pages, ways[i]), expected) << seed;
        }
    }
}

inline std::string bytesOf(const void *address, std::size_t length) {
    return {static_cast<const char *>(address), length};
}
inline std::string bytesOf(uint32_t address, std::size_t length) {
    return bytesOf(reinterpret_cast<const void *>(address), length);
}

#endif

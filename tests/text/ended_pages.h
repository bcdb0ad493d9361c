// Storage for the operands of a statement that faults when a byte beside an operand is touched:
// each lies at the end or at the start of a page of its own, between pages that are not there.
#ifndef ZOR_TESTS_TEXT_ENDED_PAGES_H
#define ZOR_TESTS_TEXT_ENDED_PAGES_H

#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <vector>

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
    static constexpr std::size_t kPage = 4096;
    static constexpr std::size_t kRoom = 2 * kPage;
    std::vector<uint8_t *> pages_;
    std::size_t used_ = 0;
    bool atEnd_ = true;
};

inline std::string bytesOf(const void *address, std::size_t length) {
    return {static_cast<const char *>(address), length};
}

#endif

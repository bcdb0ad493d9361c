// Where the records of a slot file lie. Behind a head of one page, each record number has a slot: a
// word that is the record's length plus one, 0 while there is none, and room for the longest
// record.
//
// A slot of up to a page never lies across two: the system writes a page whole or not at all, even
// when the process is killed over it.
#ifndef ZOR_MODULES_RECORDS_SLOT_LAYOUT_H
#define ZOR_MODULES_RECORDS_SLOT_LAYOUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "zor_abi.h"

namespace zor::modules {

inline constexpr int64_t kPage = 4096;

struct SlotFileHead {
    char name[8]; // "ZORSLOT"
    uint8_t reserved8[16];
    char mark[4]; // "vfs", by which OPEN knows the file system
    uint32_t version;
    int32_t maxrec;
    int32_t minrec;
    uint8_t organization;
    uint8_t recfmt;
    uint8_t reserved42[2];
};
ZOR_LAYOUT(SlotFileHead, mark, 24);
ZOR_SIZE(SlotFileHead, 44);

struct SlotLayout {
    int64_t slot;    // bytes of a slot
    int64_t perPage; // slots in a page, 0 when one is longer

    explicit SlotLayout(int32_t maxrec)
        : slot((static_cast<int64_t>(sizeof(uint32_t)) + maxrec + 3) / 4 * 4),
          perPage(kPage / slot) {}

    int64_t offsetOf(int64_t number) const {
        const int64_t index = number - 1;
        return perPage == 0 ? kPage + index * slot
                            : kPage + index / perPage * kPage + index % perPage * slot;
    }

    // The number of the first slot that begins at an offset of the file or behind it.
    int64_t firstFrom(int64_t offset) const {
        const int64_t body = offset - kPage;
        if (body <= 0) {
            return 1;
        }
        return perPage == 0 ? (body + slot - 1) / slot + 1
                            : (body + kPage - 1) / kPage * perPage + 1;
    }

    // Whole slots in a file of some size.
    int64_t slotsIn(int64_t size) const {
        const int64_t body = std::max<int64_t>(size - kPage, 0);
        return perPage == 0 ? body / slot
                            : body / kPage * perPage + std::min(perPage, body % kPage / slot);
    }
};

} // namespace zor::modules

#endif

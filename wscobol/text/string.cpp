// STRING: what the senders hold ahead of their delimiters, put together in the target.
#include "base/bits.h"
#include "string_unstring.h"
#include "text/delimiter.h"

namespace zor {
namespace {

constexpr int kHowCharactersCompare = STRING_DBCS | STRING_NATIONAL | STRING_COLLATING;

Characters charactersOf(const StringBlock &block, const PCB *pcb) {
    const bool byWeights =
        (block.stringFlags & kHowCharactersCompare) == STRING_COLLATING && pcb != nullptr;
    return {has(block.stringFlags, STRING_DBCS | STRING_NATIONAL) ? 2U : 1U,
            byWeights ? pcb->collatingWeights : nullptr};
}

// The bytes of a sender ahead of its delimiter; all when it has none.
std::size_t lengthTaken(Bytes sender, Bytes delimiter, const Characters &characters) {
    const std::size_t found = characters.find(sender, delimiter);
    return found == kNowhere ? sender.size() : found;
}

// What of the target has not been written.
struct Target {
    uint8_t *next;
    std::size_t room;
    bool overflow;

    void append(const uint8_t *bytes, std::size_t length) {
        const std::size_t moved = std::min(length, room);
        if (moved != 0) {
            memmove(next, bytes, moved);
        }
        next += moved;
        room -= moved;
        overflow |= moved != length;
    }
};

} // namespace
} // namespace zor

using namespace zor;

void _zorcString(StringBlock *block, const PCB *pcb, uint32_t *overflowCell) {
    const Characters characters = charactersOf(*block, pcb);
    const std::size_t size = characters.size;
    const uint32_t pointer = has(block->stringFlags, STRING_WITH_POINTER) ? block->pointerValue : 1;
    Target target{static_cast<uint8_t *>(block->targetAddress), 0, false};
    if (pointer - 1 <= block->targetLength / size) {
        const std::size_t offset = (pointer - 1) * size;
        target.next += offset;
        target.room = block->targetLength - offset;
    }
    const uint8_t *const first = target.next;
    const auto *group = reinterpret_cast<const StringGroup *>(block + 1);
    for (uint32_t groups = block->groupCount; groups != 0; --groups) {
        const Bytes delimiter =
            bytesAt(group->delimiterAddress,
                    group->delimiterAddress == nullptr ? 0 : group->delimiterLength);
        const auto *sender = reinterpret_cast<const StringSender *>(group + 1);
        const StringSender *const end = sender + group->senderCount;
        for (; sender != end; ++sender) {
            const Bytes text = bytesAt(sender->senderAddress, sender->senderLength);
            target.append(text.data(), lengthTaken(text, delimiter, characters));
        }
        group = reinterpret_cast<const StringGroup *>(end);
    }
    if (target.overflow && *overflowCell != 0) {
        ++*overflowCell;
    }
    const auto written = static_cast<std::size_t>(target.next - first);
    block->pointerValue = pointer + static_cast<uint32_t>(written / size);
}

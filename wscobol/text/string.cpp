// STRING: what the senders hold ahead of their delimiters, put together in the target.
#include <span>

#include "base/bits.h"
#include "decimal/bytes.h"
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

// What of the target has not been written.
struct Target {
    uint8_t *next;
    std::size_t room;
    bool overflow;
};

// Appends the senders up to where the delimiter is found, or whole when it is found nowhere.
template <class Find>
void append(Target &target, std::span<const StringSender> senders, Find find) {
    uint8_t *next = target.next;
    std::size_t room = target.room;
    for (const StringSender &sender : senders) {
        const Bytes text = bytesAt(sender.senderAddress, sender.senderLength);
        const std::size_t taken = std::min(find(text), text.size());
        const std::size_t moved = std::min(taken, room);
        decimal::moveBytes(next, text.data(), static_cast<int32_t>(moved));
        next += moved;
        room -= moved;
        target.overflow |= moved != taken;
    }
    target.next = next;
    target.room = room;
}

void appendGroup(Target &target, std::span<const StringSender> senders, Bytes delimiter,
                 const Characters &characters) {
    if (delimiter.empty()) {
        append(target, senders, [](Bytes) { return kNowhere; });
    } else if (characters.weights != nullptr) {
        append(target, senders,
               [&](Bytes text) { return characters.findByWeights(text, delimiter); });
    } else if (delimiter.size() == 1 && characters.size == 1) {
        const uint8_t byte = delimiter.front();
        append(target, senders,
               [byte](Bytes text) { return text.empty() ? kNowhere : findByte(text, byte); });
    } else {
        const BytesFinder finder(delimiter, characters.size);
        append(target, senders, [&](Bytes text) { return finder.find(text); });
    }
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcString(StringBlock *block, const PCB *pcb, uint32_t *overflowCell) {
    const Characters characters = charactersOf(*block, pcb);
    const uint32_t pointer = has(block->stringFlags, STRING_WITH_POINTER) ? block->pointerValue : 1;
    Target target{static_cast<uint8_t *>(block->targetAddress), 0, false};
    if (pointer - 1 <= characters.count(block->targetLength)) {
        const std::size_t offset = (pointer - 1) * characters.size;
        target.next += offset;
        target.room = block->targetLength - offset;
    }
    const uint8_t *const first = target.next;
    const auto *group = reinterpret_cast<const StringGroup *>(block + 1);
    for (uint32_t groups = block->groupCount; groups != 0; --groups) {
        const Bytes delimiter =
            bytesAt(group->delimiterAddress,
                    group->delimiterAddress == nullptr ? 0 : group->delimiterLength);
        const auto *senders = reinterpret_cast<const StringSender *>(group + 1);
        appendGroup(target, {senders, group->senderCount}, delimiter, characters);
        group = reinterpret_cast<const StringGroup *>(senders + group->senderCount);
    }
    if (target.overflow && *overflowCell != 0) {
        ++*overflowCell;
    }
    const auto written = static_cast<std::size_t>(target.next - first);
    block->pointerValue = pointer + characters.count(written);
}

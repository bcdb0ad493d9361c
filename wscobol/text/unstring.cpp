// UNSTRING: a sender taken apart at its delimiters, or by the lengths of the receivers.
#include <array>
#include <span>

#include "base/bits.h"
#include "decimal/bytes.h"
#include "national/code_page_row.h"
#include "national/item_bytes.h"
#include "string_unstring.h"
#include "text/byte_walk.h"
#include "text/delimiter.h"

namespace zor {
namespace {

constexpr int kNumericReceiver = UNSTRING_NUMERIC | UNSTRING_NATIONAL_NUMERIC;

// ---- moves

// A blank, a digit zero or a sign: a character of one or two bytes.
struct Character {
    char bytes[2];
    std::size_t size;

    void fill(uint8_t *at, std::size_t length) const {
        if (size == 1) {
            decimal::fillBytes(at, static_cast<uint8_t>(bytes[0]), static_cast<int32_t>(length));
        } else {
            fillWithPattern(reinterpret_cast<char *>(at), length, bytes, size);
        }
    }
};

inline void copy(uint8_t *to, const uint8_t *from, std::size_t length) {
    decimal::moveBytes(to, from, static_cast<int32_t>(length));
}

// Inline, which a field needs: its arguments would take longer to pass than most fields to move.
[[gnu::always_inline]] inline void moveText(uint8_t *to, std::size_t length, Bytes text,
                                            bool justifiedRight, const Character &blank) {
    const std::size_t copied = std::min(length, text.size());
    const std::size_t padded = length - copied;
    if (justifiedRight) {
        copy(to + padded, text.data() + (text.size() - copied), copied);
        blank.fill(to, padded);
    } else {
        copy(to, text.data(), copied);
        blank.fill(to + copied, padded);
    }
}

// The digits are taken as they are, for the integer digits of the receiver.
void moveDigits(const UnstringReceiver &receiver, Bytes digits) {
    const bool national = has(receiver.receiverFlags, UNSTRING_NATIONAL_NUMERIC);
    const Character zero{{'0', 0}, national ? 2U : 1U};
    const Character plus{{'+', 0}, zero.size};
    auto *to = static_cast<uint8_t *>(receiver.receiverAddress);
    std::size_t room = receiver.receiverLength;
    if (has(receiver.receiverFlags, UNSTRING_SIGN_SEPARATE) && room >= plus.size) {
        room -= plus.size;
        if (has(receiver.receiverFlags, UNSTRING_SIGN_LEADING)) {
            plus.fill(to, plus.size);
            to += plus.size;
        } else {
            plus.fill(to + room, plus.size);
        }
    }
    const std::size_t integer = std::min<std::size_t>(receiver.integerPositions, room);
    moveText(to, integer, digits, true, zero);
    zero.fill(to + integer, room - integer);
}

// ---- fields

struct Match {
    std::size_t offset; // kNowhere: there is none
    const UnstringDelimiter *delimiter;
};

Bytes bytesOf(const UnstringDelimiter &delimiter) {
    return bytesAt(delimiter.delimiterAddress, delimiter.delimiterLength);
}

// The delimiters in their order. Where one may begin is found by the first bytes of all: a few by
// a walk through the text, many by a table.
class Delimiters {
public:
    Delimiters(std::span<const UnstringDelimiter> list, Bytes text, const Characters &characters)
        : list_(list), text_(text), characters_(characters), walk_(text),
          walks_(characters.size == 1 && characters.weights == nullptr &&
                 list.size() <= ByteWalk::kMostBytes) {
        if (!walks_) {
            mayBegin_.fill(false);
        }
        for (const UnstringDelimiter &delimiter : list) {
            if (const Bytes bytes = bytesOf(delimiter); !bytes.empty()) {
                admit(bytes.front());
            }
        }
    }

    bool none() const { return list_.empty(); }

    // The first match at this offset or behind it. Offsets never go back.
    Match find(std::size_t offset) {
        for (offset = nextCandidate(offset); offset != kNowhere;
             offset = nextCandidate(offset + characters_.size)) {
            for (const UnstringDelimiter &delimiter : list_) {
                if (characters_.beginsWith(text_.subspan(offset), bytesOf(delimiter))) {
                    return {offset, &delimiter};
                }
            }
        }
        return {kNowhere, nullptr};
    }

    // The match that stands for all its copies that follow each other: the last one.
    std::size_t lastCopy(const Match &match) const {
        std::size_t offset = match.offset;
        if (has(match.delimiter->delimiterFlags, UNSTRING_DELIMITER_ALL)) {
            const Bytes bytes = bytesOf(*match.delimiter);
            while (characters_.beginsWith(text_.subspan(offset + bytes.size()), bytes)) {
                offset += bytes.size();
            }
        }
        return offset;
    }

private:
    void admit(uint8_t first) {
        if (walks_) {
            walk_.stopAt(first);
            return;
        }
        mayBegin_[first] = true;
        if (characters_.weights != nullptr) {
            for (unsigned byte = 0; byte < mayBegin_.size(); ++byte) {
                mayBegin_[byte] |= characters_.equal(static_cast<uint8_t>(byte), first);
            }
        }
    }

    std::size_t nextCandidate(std::size_t offset) {
        if (walks_) {
            return walk_.next(offset);
        }
        while (offset < text_.size() && !mayBegin_[text_[offset]]) {
            offset += characters_.size;
        }
        return offset < text_.size() ? offset : kNowhere;
    }

    std::span<const UnstringDelimiter> list_;
    Bytes text_;
    Characters characters_;
    ByteWalk walk_;
    bool walks_;
    std::array<bool, 256> mayBegin_; // unless it walks
};

struct Field {
    Bytes text;
    std::size_t next; // the offset behind the field and its delimiter
    Bytes delimiter;  // as it stands in the sender; empty when the sender's end ends the field
};

Field fieldAt(Bytes text, std::size_t start, Delimiters &delimiters,
              const UnstringReceiver &receiver) {
    if (delimiters.none()) {
        const uint32_t wanted = has(receiver.receiverFlags, kNumericReceiver)
                                    ? receiver.integerPositions
                                    : receiver.receiverLength;
        const std::size_t length = std::min<std::size_t>(wanted, text.size() - start);
        return {text.subspan(start, length), start + length, {}};
    }
    const Match match = delimiters.find(start);
    if (match.offset == kNowhere) {
        return {text.subspan(start), text.size(), {}};
    }
    const Bytes delimiter =
        text.subspan(delimiters.lastCopy(match), match.delimiter->delimiterLength);
    return {text.subspan(start, match.offset - start),
            static_cast<std::size_t>(delimiter.data() - text.data()) + delimiter.size(), delimiter};
}

// ---- statements

Characters charactersOf(const UnstringBlock &block, const PCB *pcb) {
    const bool byWeights = has(block.unstringFlags, UNSTRING_COLLATING) &&
                           !has(block.unstringFlags, UNSTRING_DBCS) && pcb != nullptr;
    return {has(block.unstringFlags, UNSTRING_DBCS | UNSTRING_NATIONAL) ? 2U : 1U,
            byWeights ? pcb->collatingWeights : nullptr};
}

Character blankOf(const UnstringBlock &block) {
    if (has(block.unstringFlags, UNSTRING_DBCS)) {
        const std::array<char, 2> blank = dbcsBlank();
        return {{blank[0], blank[1]}, 2};
    }
    return {{' ', 0}, has(block.unstringFlags, UNSTRING_NATIONAL) ? 2U : 1U};
}

// What there is to be taken apart.
Bytes textOf(const UnstringBlock &block, const Characters &characters) {
    const Bytes sender = bytesAt(block.senderAddress, block.senderLength);
    const uint32_t pointer =
        has(block.unstringFlags, UNSTRING_WITH_POINTER) ? block.pointerValue : 1;
    return pointer - 1 <= characters.count(sender.size())
               ? sender.subspan((pointer - 1) * characters.size)
               : Bytes();
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcUnString(UnstringBlock *block, UnstringReceiver *receiverTable, const PCB *pcb,
                   uint32_t *overflowCell) {
    const Characters characters = charactersOf(*block, pcb);
    const Character blank = blankOf(*block);
    const Bytes text = textOf(*block, characters);
    Delimiters delimiters(
        {reinterpret_cast<const UnstringDelimiter *>(block + 1), block->delimiterCount}, text,
        characters);
    uint32_t fields = 0;
    std::size_t next = 0;
    for (; fields < block->receiverCount && next < text.size(); ++fields) {
        UnstringReceiver &receiver = receiverTable[fields];
        const Field field = fieldAt(text, next, delimiters, receiver);
        if (receiver.delimiterInAddress != nullptr && !delimiters.none()) {
            moveText(static_cast<uint8_t *>(receiver.delimiterInAddress),
                     receiver.delimiterInLength, field.delimiter,
                     has(receiver.delimiterInFlags, UNSTRING_JUSTIFIED), blank);
        }
        if (has(receiver.receiverFlags, kNumericReceiver)) {
            moveDigits(receiver, field.text);
        } else {
            moveText(static_cast<uint8_t *>(receiver.receiverAddress), receiver.receiverLength,
                     field.text, has(receiver.receiverFlags, UNSTRING_JUSTIFIED), blank);
        }
        receiver.fieldCount = characters.count(field.text.size());
        next = field.next;
    }
    if (next < text.size() && *overflowCell != 0) {
        ++*overflowCell;
    }
    if (has(block->unstringFlags, UNSTRING_WITH_POINTER)) {
        block->pointerValue += characters.count(next);
    }
    if (has(block->unstringFlags, UNSTRING_TALLYING)) {
        block->tallyValue += fields;
    }
}

// Comparisons in the locale's order, and the move, of double-byte data.
#include <algorithm>
#include <cstring>

#include "base/ebcdic.h"
#include "collating.h"
#include "national/code_page_row.h"
#include "national/item_bytes.h"
#include "national/work_area.h"

namespace zor {
namespace {

constexpr char kComparedBlank[] = {'\x81', '\x40'};
constexpr char kEbcdicBlanks[] = {kEbcdicBlank, kEbcdicBlank};
constexpr std::size_t kPair = 2;
constexpr std::size_t kLocalBytes = 2 * 256; // two texts of 255 bytes

struct Bytes {
    const void *data;
    std::size_t length;
};

// Compares, in the locale's order, copies of two operands that are brought to one length with a
// pattern. Without storage, which message 907 has told, they count as equal.
int32_t collate(const Bytes &left, const Bytes &right, const char *pattern,
                std::size_t patternLength) {
    const std::size_t length = std::max(left.length, right.length);
    WorkArea<kLocalBytes> area;
    char *const leftCopy = area.take(2 * (length + 1));
    if (leftCopy == nullptr) {
        return 0;
    }
    char *const rightCopy = leftCopy + length + 1;
    const auto copy = [=](char *target, const Bytes &operand) {
        memcpy(target, operand.data, operand.length);
        fillWithPattern(target + operand.length, length - operand.length, pattern, patternLength);
        target[length] = 0;
    };
    copy(leftCopy, left);
    copy(rightCopy, right);
    return strcoll(leftCopy, rightCopy);
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorcDBCSCmp(const void *left, int32_t leftLength, const void *right, int32_t rightLength) {
    return collate({left, lengthOrNone(leftLength)}, {right, lengthOrNone(rightLength)},
                   kComparedBlank, kPair);
}

// The literal is brought to the length of the data by copies of itself alone.
int32_t _zorcDBCSCmpMultiByteFig(const void *data, int32_t dataLength, const void *literal,
                                 int32_t literalLength) {
    if (dataLength <= 0 || literalLength <= 0) {
        return 0;
    }
    return collate({data, lengthOrNone(dataLength)}, {literal, 0},
                   static_cast<const char *>(literal), lengthOrNone(literalLength));
}

void _zorcDBCSMoveVarLenOverlap(void *target, int32_t signedTargetLength, const void *source,
                                int32_t signedSourceLength) {
    const std::size_t room = magnitude(signedTargetLength);
    const std::size_t copied = std::min<std::size_t>(room, magnitude(signedSourceLength));
    const std::size_t padded = room - copied;
    const bool justifiedRight = signedTargetLength < 0;
    auto *const to = static_cast<char *>(target);
    memmove(justifiedRight ? to + padded : to, source, copied);
    if (padded == 0) {
        return;
    }
    const auto localeBlank = dbcsBlank();
    fillWithPattern(justifiedRight ? to : to + copied, padded,
                    signedSourceLength < 0 ? kEbcdicBlanks : localeBlank.data(), kPair);
}

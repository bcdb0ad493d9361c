// Comparisons of bytes: through a collating table, and against figurative constants.
#include <algorithm>
#include <cstring>

#include "collating.h"
#include "national/item_bytes.h"

namespace zor {
namespace {

// Skips what is equal, a word at a time where it can.
std::size_t firstDifference(const uint8_t *left, const uint8_t *right, std::size_t at,
                            std::size_t length) {
    uint32_t leftWord = 0;
    uint32_t rightWord = 0;
    for (; length - at >= sizeof leftWord; at += sizeof leftWord) {
        memcpy(&leftWord, left + at, sizeof leftWord);
        memcpy(&rightWord, right + at, sizeof rightWord);
        if (leftWord != rightWord) {
            break;
        }
    }
    while (at < length && left[at] == right[at]) {
        ++at;
    }
    return at;
}

int32_t order(uint8_t left, uint8_t right) {
    return (left > right ? 1 : 0) - (left < right ? 1 : 0);
}

int32_t compareWeights(const uint8_t *left, const uint8_t *right, std::size_t length,
                       const uint8_t *table) {
    for (std::size_t at = 0; (at = firstDifference(left, right, at, length)) < length; ++at) {
        const int32_t result = order(table[left[at]], table[right[at]]);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t compareWithBlanks(const uint8_t *data, std::size_t length, const uint8_t *table) {
    const uint8_t blank = table[static_cast<unsigned char>(' ')];
    const uint8_t *const end = data + length;
    const uint8_t *const other =
        std::find_if(data, end, [=](uint8_t byte) { return table[byte] != blank; });
    return other == end ? 0 : order(table[*other], blank);
}

// Compares an item with copies of a constant, the last one cut.
int32_t compareWithConstant(const uint8_t *item, std::size_t length, const uint8_t *constant,
                            std::size_t constantLength, const uint8_t *table) {
    for (std::size_t at = 0; at < length; at += constantLength) {
        const int32_t result =
            compareWeights(item + at, constant, std::min(constantLength, length - at), table);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

int32_t compareItems(const uint8_t *left, std::size_t leftLength, const uint8_t *right,
                     std::size_t rightLength, const uint8_t *table) {
    const std::size_t common = std::min(leftLength, rightLength);
    const int32_t result = compareWeights(left, right, common, table);
    if (result != 0) {
        return result;
    }
    return leftLength > common ? compareWithBlanks(left + common, leftLength - common, table)
                               : -compareWithBlanks(right + common, rightLength - common, table);
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorcCmpACS(const void *left, int32_t leftLength, const void *right, int32_t rightLength,
                    const uint8_t *table) {
    const auto *const leftBytes = static_cast<const uint8_t *>(left);
    const auto *const rightBytes = static_cast<const uint8_t *>(right);
    const std::size_t leftCount = magnitude(leftLength);
    const std::size_t rightCount = magnitude(rightLength);
    // Of two constants the longer one is what the other is repeated against.
    const bool rightIsConstant = rightLength < 0 && (leftLength >= 0 || leftCount >= rightCount);
    if (rightIsConstant) {
        return compareWithConstant(leftBytes, leftCount, rightBytes, rightCount, table);
    }
    if (leftLength < 0) {
        return -compareWithConstant(rightBytes, rightCount, leftBytes, leftCount, table);
    }
    return compareItems(leftBytes, leftCount, rightBytes, rightCount, table);
}

// As long as the bytes are the pad, each equals the one ahead of it: the first that does not is the
// first other than the pad.
int32_t _zorcCmpToPad(const void *data, uint8_t pad, int32_t length) {
    if (length <= 0) {
        return 0;
    }
    const auto *const bytes = static_cast<const uint8_t *>(data);
    const int32_t first = order(bytes[0], pad);
    if (first != 0) {
        return first;
    }
    const int rest = memcmp(bytes + 1, bytes, static_cast<std::size_t>(length) - 1);
    return (rest > 0 ? 1 : 0) - (rest < 0 ? 1 : 0);
}

// As long as the data are copies of the literal, each byte equals the one a literal ahead of it.
int32_t _zorcCmpMultiByteFig(const void *data, int32_t dataLength, const void *literal,
                             int32_t literalLength) {
    if (dataLength <= 0 || literalLength <= 0) {
        return 0;
    }
    const auto *const bytes = static_cast<const uint8_t *>(data);
    const auto length = static_cast<std::size_t>(dataLength);
    const std::size_t step = std::min(length, static_cast<std::size_t>(literalLength));
    const int32_t first = memcmp(bytes, literal, step);
    return first != 0 ? first : memcmp(bytes + step, bytes, length - step);
}

// The class conditions KANJI and DBCS, which look at data in their EBCDIC form.
#include <algorithm>
#include <cstddef>

#include "base/ebcdic.h"
#include "base/storage.h"
#include "class_tests.h"
#include "national.h"

namespace zor {
namespace {

constexpr uint8_t kFirstByte = 0x41;
constexpr uint8_t kLastByte = 0xFE;
constexpr uint8_t kLastKanjiRow = 0x7F;

// Whether the bytes are pairs of the class, whose first bytes go up to lastRow. Shift characters
// lie below all first bytes.
bool arePairs(const uint8_t *bytes, std::size_t length, uint8_t lastRow) {
    if (length % 2 != 0) {
        return false;
    }
    for (const uint8_t *const end = bytes + length; bytes != end; bytes += 2) {
        const bool blank = bytes[0] == kEbcdicBlank && bytes[1] == kEbcdicBlank;
        const bool character = bytes[0] >= kFirstByte && bytes[0] <= lastRow &&
                               bytes[1] >= kFirstByte && bytes[1] <= kLastByte;
        if (!blank && !character) {
            return false;
        }
    }
    return true;
}

// Whether converted data are one run of pairs of the class.
bool areShiftedPairs(const uint8_t *bytes, std::size_t length, uint8_t lastRow) {
    if (length == 0 || bytes[0] != kShiftOut) {
        return false;
    }
    const bool closed = length > 1 && bytes[length - 1] == kShiftIn;
    return arePairs(bytes + 1, length - (closed ? 2 : 1), lastRow);
}

bool isDbcs(const void *data, int32_t signedLength, uint8_t lastRow) {
    constexpr std::size_t kLocalBytes = 512;
    if (signedLength < 0) {
        return arePairs(static_cast<const uint8_t *>(data),
                        0U - static_cast<uint32_t>(signedLength), lastRow);
    }
    // Not the thread's scratch buffer, which the conversion may use itself.
    uint8_t local[kLocalBytes];
    const auto capacity = static_cast<std::size_t>(std::min(signedLength, INT32_MAX / 2)) * 2;
    uint8_t *const converted =
        capacity <= kLocalBytes ? local : static_cast<uint8_t *>(allocateOrReport(capacity));
    if (converted == nullptr) {
        return false;
    }
    auto length = static_cast<int32_t>(capacity);
    const bool answer = _zorConvToEBCDIC(data, signedLength, converted, &length) == 0 &&
                        areShiftedPairs(converted, static_cast<std::size_t>(length), lastRow);
    if (converted != local) {
        release(converted);
    }
    return answer;
}

} // namespace
} // namespace zor

int32_t _zorcClasKanji(const void *data, int32_t signedLength) {
    return zor::isDbcs(data, signedLength, zor::kLastKanjiRow) ? 1 : 0;
}

int32_t _zorcClasDBCS(const void *data, int32_t signedLength) {
    return zor::isDbcs(data, signedLength, zor::kLastByte) ? 1 : 0;
}

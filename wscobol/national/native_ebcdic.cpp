// Conversions between the native and the EBCDIC code page: by look-up where each byte becomes one,
// otherwise through national data.
#include <algorithm>

#include "base/message_list.h"
#include "base/storage.h"
#include "national.h"
#include "national/conversions.h"
#include "national/item_bytes.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr std::size_t kAreaOnStack = 32768;

// National data for the whole of a source, on the stack where it is not large.
class NationalArea {
public:
    explicit NationalArea(std::size_t sourceBytes) : bytes_(2 * sourceBytes + 2) {
        if (bytes_ + 2 > kAreaOnStack) {
            block_ = allocateTracked(bytes_);
            area_ = block_;
            if (block_ == nullptr) {
                message::insufficientStorage();
            }
        }
    }
    ~NationalArea() { releaseTracked(block_); }
    NationalArea(const NationalArea &) = delete;
    NationalArea &operator=(const NationalArea &) = delete;
    void *address() { return area_; } // null when storage is exhausted
    int32_t bytes() const { return static_cast<int32_t>(std::min<std::size_t>(bytes_, INT32_MAX)); }

private:
    std::size_t bytes_;
    char local_[kAreaOnStack];
    void *area_ = local_;
    void *block_ = nullptr;
};

// A character that the end of the source cuts does not keep the others from the target.
int32_t convertThroughNational(int32_t fromPage, int32_t toPage, const void *source,
                               int32_t sourceLength, void *target, int32_t *targetLength) {
    NationalArea area(lengthOrNone(sourceLength));
    if (area.address() == nullptr) {
        return kNoStorage;
    }
    const Produced national =
        convertToNational(source, sourceLength, area.address(), area.bytes(), nullptr, fromPage);
    const bool cut = national.status == kCharacterCut;
    if (national.status != 0 && !cut) {
        return national.status;
    }
    const Produced made = convertFromNational(area.address(), national.length, target,
                                              *targetLength, nullptr, toPage);
    if (made.status != 0 && !(cut && made.status == kCharacterCut)) {
        return made.status;
    }
    *targetLength -= made.length;
    return 0;
}

int32_t convertBetween(int32_t fromPage, int32_t toPage, const void *source, int32_t sourceLength,
                       void *target, int32_t *targetLength) {
    const int32_t capacity = *targetLength;
    const Translation &translation = translationTo(toPage);
    const std::size_t bytes = lengthOrNone(sourceLength);
    const std::size_t whole = sourceLength < 0 || capacity < 0
                                  ? kUntranslatable
                                  : translatedBytes(source, bytes, translation);
    if (whole == kUntranslatable) {
        return convertThroughNational(fromPage, toPage, source, sourceLength, target, targetLength);
    }
    const std::size_t converted = std::min(whole, lengthOrNone(capacity));
    if (whole == bytes) {
        translateBytes(target, source, converted, translation.table);
    } else {
        translateCharacters(target, source, converted, translation);
    }
    if (converted < whole) {
        message::conversionFailed(kTargetTooSmall);
        return kTargetTooSmall;
    }
    *targetLength = capacity - static_cast<int32_t>(converted);
    return 0;
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorUniAtoE(const void *source, int32_t sourceLength, void *target, int32_t *targetLength) {
    return convertBetween(kNativePage, kEbcdicPage, source, sourceLength, target, targetLength);
}

int32_t _zorUniEtoA(const void *source, int32_t sourceLength, void *target, int32_t *targetLength) {
    return convertBetween(kEbcdicPage, kNativePage, source, sourceLength, target, targetLength);
}

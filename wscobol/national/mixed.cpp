// Conversions of mixed data, in which SO and SI enclose runs of double-byte characters: items of a
// program, padded and cut to their length.
#include <algorithm>
#include <cstring>

#include "base/ebcdic.h"
#include "national.h"
#include "national/item_bytes.h"
#include "national/services.h"
#include "national/work_area.h"

namespace zor {
namespace {

constexpr std::size_t kLocalBytes = 256;

struct Text {
    const char *data;
    std::size_t length;
};

struct Shifts {
    std::size_t out;
    std::size_t in;
};

bool isShift(char c) {
    return c == kShiftOut || c == kShiftIn;
}

Shifts countShifts(const char *data, std::size_t length) {
    return {static_cast<std::size_t>(std::count(data, data + length, kShiftOut)),
            static_cast<std::size_t>(std::count(data, data + length, kShiftIn))};
}

// A lone shift character is data of its own. True when the source is one, and has been copied.
bool copiedLoneShift(const void *source, int32_t signedLength, void *target, uint32_t capacity,
                     int32_t *targetLength) {
    const auto *const byte = static_cast<const char *>(source);
    if (signedLength != 1 || !isShift(*byte)) {
        return false;
    }
    *targetLength = capacity > 0 ? 1 : 0;
    if (capacity > 0) {
        *static_cast<char *>(target) = *byte;
    }
    return true;
}

void stripShifts(Text &text) {
    if (text.length == 0 || *text.data != kShiftOut) {
        return;
    }
    ++text.data;
    --text.length;
    if (text.length > 0 && text.data[text.length - 1] == kShiftIn) {
        --text.length;
    }
}

// True when a run was left open.
bool isOpen(const Text &text) {
    const Shifts shifts = countShifts(text.data, text.length);
    return shifts.out == shifts.in + 1;
}

// Writes double-byte data with its shift characters repaired: one that is missing is put in where
// the next one, or the end, shows that it is. What is left of a character that was cut by the end
// goes.
class Repair {
public:
    explicit Repair(char *target) : first_(target), out_(target) {}

    void put(char c) {
        if (c == kShiftOut) {
            if (run_ != nullptr) {
                *out_++ = kShiftIn;
            }
            run_ = out_ + 1;
        } else if (c == kShiftIn) {
            if (run_ == nullptr) {
                *out_++ = kShiftOut;
            }
            run_ = nullptr;
        }
        *out_++ = c;
    }

    Text finish() {
        if (run_ != nullptr) {
            out_ -= (out_ - run_) % 2;
            *out_++ = kShiftIn;
        }
        return {first_, static_cast<std::size_t>(out_ - first_)};
    }

private:
    char *first_;
    char *out_;
    char *run_ = nullptr; // first byte of the open run
};

// The source of a conversion from EBCDIC whose data are double-byte characters: enclosed in shift
// characters where it has none, repaired where one is missing, otherwise as it stands. The data are
// null when storage is exhausted.
Text prepareDoubleByte(const char *source, std::size_t length, WorkArea<kLocalBytes> &area) {
    const Shifts shifts = countShifts(source, length);
    const bool bare = shifts.out + shifts.in == 0;
    if (!bare && shifts.out == shifts.in) {
        return {source, length};
    }
    char *const copy = area.take(length + std::max<std::size_t>(shifts.out + shifts.in + 1, 2));
    if (copy == nullptr) {
        return {nullptr, 0};
    }
    if (bare) {
        copy[0] = kShiftOut;
        memcpy(copy + 1, source, length);
        copy[length + 1] = kShiftIn;
        return {copy, length + 2};
    }
    Repair repair(copy);
    std::for_each(source, source + length, [&](char c) { repair.put(c); });
    return repair.finish();
}

void padWithBlanks(char *target, std::size_t length, std::size_t capacity, bool justifiedRight) {
    const std::size_t blanks = capacity - length;
    if (blanks == 0) {
        return;
    }
    if (justifiedRight) {
        memmove(target + blanks, target, length);
        memset(target, ' ', blanks);
    } else {
        memset(target + length, ' ', blanks);
    }
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorConvToEBCDIC(const void *source, int32_t signedSourceLength, void *target,
                         int32_t *signedTargetLength) {
    const uint32_t capacity = magnitude(*signedTargetLength);
    const bool closing = *signedTargetLength < 0;
    if (copiedLoneShift(source, signedSourceLength, target, capacity, signedTargetLength)) {
        return 0;
    }
    *signedTargetLength = 0;
    const uint64_t wanted = uint64_t{capacity} * 5 / 3 + 1;
    const auto room = static_cast<int32_t>(std::min<uint64_t>(wanted, INT32_MAX));
    WorkArea<kLocalBytes> area;
    char *const work = area.take(static_cast<std::size_t>(room));
    if (work == nullptr) {
        return kNoStorage;
    }
    int32_t left = room;
    const auto sourceLength = static_cast<int32_t>(magnitude(signedSourceLength));
    const int32_t status = _zorUniAtoE(source, sourceLength, work, &left);
    if (status != 0) {
        return status;
    }
    Text text = {work, static_cast<std::size_t>(room - left)};
    if (signedSourceLength < 0) {
        stripShifts(text);
    } else if (closing && left > 0 && isOpen(text)) {
        work[text.length++] = kShiftIn;
    }
    text.length = std::min<std::size_t>(text.length, capacity);
    memcpy(target, text.data, text.length);
    *signedTargetLength = static_cast<int32_t>(text.length);
    return 0;
}

int32_t _zorConvToASCII(const void *source, int32_t signedSourceLength, void *target,
                        int32_t *signedTargetLength) {
    const uint32_t capacity = magnitude(*signedTargetLength);
    const bool justifiedRight = *signedTargetLength < 0;
    if (copiedLoneShift(source, signedSourceLength, target, capacity, signedTargetLength)) {
        return 0;
    }
    *signedTargetLength = 0;
    WorkArea<kLocalBytes> area;
    Text text = {static_cast<const char *>(source), magnitude(signedSourceLength)};
    if (signedSourceLength < 0) {
        text = prepareDoubleByte(text.data, text.length, area);
        if (text.data == nullptr) {
            return kNoStorage;
        }
    }
    auto left = static_cast<int32_t>(capacity);
    const int32_t status = _zorUniEtoA(text.data, static_cast<int32_t>(text.length), target, &left);
    if (status != 0) {
        return status;
    }
    const std::size_t produced = capacity - static_cast<uint32_t>(left);
    padWithBlanks(static_cast<char *>(target), produced, capacity, justifiedRight);
    *signedTargetLength = static_cast<int32_t>(produced);
    return 0;
}

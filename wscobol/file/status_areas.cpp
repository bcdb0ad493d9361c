// Most verbs end with status 0, on each record of a file: that fills an area without formatting and
// without the conversion services.
#include "file/status_areas.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "base/bits.h"
#include "base/ebcdic.h"
#include "file/statuses.h"
#include "national.h"

namespace zor {
namespace {

constexpr std::size_t kDigits = 6;

constexpr FileDescription kNoDescription{};

uint8_t *itemAt(uint8_t **base, int32_t offset) {
    const auto start = base != nullptr ? reinterpret_cast<uintptr_t>(*base) : 0;
    return reinterpret_cast<uint8_t *>(start + static_cast<uintptr_t>(offset));
}

bool isEbcdic(const FileDescription &description) {
    return has(description.statusflags, FILE_STATUS2_EBCDIC);
}

// Writes texts one behind the other, cut at the end of an area.
class AreaWriter {
public:
    explicit AreaWriter(std::span<uint8_t> area) : left_(area) {}

    void put(const char *text, std::size_t length) {
        const std::size_t fitting = std::min(length, left_.size());
        memcpy(left_.data(), text, fitting);
        left_ = left_.subspan(fitting);
    }
    void put(const char *text) { put(text, strlen(text)); }

private:
    std::span<uint8_t> left_;
};

bool needsNoService(uint8_t byte) {
    return byte == ' ' || (byte >= '0' && byte <= '9');
}

// The rest of what the service converts to fewer bytes becomes blanks.
void convertByService(std::span<uint8_t> area) {
    char copy[INT16_MAX]; // as long as an area can be
    memcpy(copy, area.data(), area.size());
    const auto length = static_cast<int32_t>(area.size());
    int32_t written = length;
    if (_zorConvToEBCDIC(copy, length, area.data(), &written) == 0) {
        std::fill(area.begin() + written, area.end(), kEbcdicBlank);
    }
}

void convert(std::span<uint8_t> area) {
    if (!std::ranges::all_of(area, needsNoService)) {
        convertByService(area);
        return;
    }
    for (uint8_t &byte : area) {
        byte = byte == ' ' ? kEbcdicBlank : static_cast<uint8_t>(kEbcdicZero + byte - '0');
    }
}

// In EBCDIC a text begins with a letter or digit, all of them above ASCII, or a blank or sign.
bool isConverted(std::span<const uint8_t> area) {
    return area[0] >= 0x80 || area[0] == kEbcdicBlank || area[0] == kEbcdicMinus;
}

void fill(std::span<uint8_t> area, uint8_t blank, uint8_t zero) {
    const std::ptrdiff_t digits = area.size() >= kDigits ? std::ptrdiff_t{kDigits} : 0;
    std::fill(area.begin(), area.begin() + digits, zero);
    std::fill(area.begin() + digits, area.end(), blank);
}

bool namesTheFile(const FCB &file) {
    return file.status == kNoList || file.status == kNoFile || file.status == kNoModule;
}

// The program's own description of an EXTERNAL file, by the block's index. That may be the index of
// the program that made the block: when this one has another block there, or nothing, the place of
// the block among its own decides.
const FileDescription *ownDescription(const FCB &file, const IPCB &ipcb) {
    FileDescription *const *descriptions = ipcb.pcb->fcbsrc;
    const int32_t indexed = file.descindex - 1;
    const std::span<FCB *const> blocks(ipcb.fcbs, static_cast<std::size_t>(ipcb.nfcbs));
    const auto place = std::find(blocks.begin(), blocks.end(), &file);
    const bool isOwn =
        indexed < ipcb.nfcbs && (ipcb.fcbs[indexed] == nullptr || ipcb.fcbs[indexed] == &file);
    return descriptions[isOwn || place == blocks.end() ? indexed : place - blocks.begin()];
}

} // namespace

const FileDescription &descriptionOf(const FCB &file, const IPCB *ipcb) {
    const bool shared = has(file.flags, FCB_SHARED_EXTERNAL) && ipcb != nullptr &&
                        ipcb->pcb != nullptr && file.descindex > 0;
    const FileDescription *description = shared ? ownDescription(file, *ipcb) : file.desc;
    return description != nullptr ? *description : kNoDescription;
}

uint8_t *statusItemOf(const FileDescription &description) {
    return itemAt(description.statusbase, description.statusoffset);
}

std::span<uint8_t> extendedStatusOf(const FileDescription &description) {
    uint8_t *area = itemAt(description.status2base, description.status2offset);
    if (area == nullptr || description.status2len <= 0) {
        return {};
    }
    return {area, static_cast<std::size_t>(description.status2len)};
}

void storeStatusDigits(const FCB &file, const FileDescription &description) {
    uint8_t *item = statusItemOf(description);
    if (item == nullptr) {
        return;
    }
    const auto status = static_cast<uint16_t>(file.status);
    const auto tens = static_cast<uint8_t>(status / 10 % 10);
    const auto units = static_cast<uint8_t>(status % 10);
    if (has(description.statusflags, FILE_STATUS_NATIONAL)) {
        const uint16_t digits[] = {static_cast<uint16_t>('0' + tens),
                                   static_cast<uint16_t>('0' + units)};
        memcpy(item, digits, sizeof digits);
        return;
    }
    const uint8_t zero = has(description.statusflags, FILE_STATUS_EBCDIC) ? kEbcdicZero : '0';
    item[0] = static_cast<uint8_t>(zero + tens);
    item[1] = static_cast<uint8_t>(zero + units);
}

void buildExtendedStatus(const FCB &file, const FileDescription &description) {
    const std::span<uint8_t> area = extendedStatusOf(description);
    if (file.status == 0 || area.size() < kDigits) {
        clearExtendedStatus(description);
        return;
    }
    memset(area.data(), ' ', area.size());
    char digits[16];
    const int length = snprintf(digits, sizeof digits, "%6.6d", file.status2);
    AreaWriter writer(area);
    writer.put(digits, static_cast<std::size_t>(length));
    if (namesTheFile(file)) {
        if (file.status == kNoModule) {
            writer.put(",");
            writer.put(file.fscode, sizeof file.fscode);
        }
        writer.put(",");
        writer.put(file.name != nullptr ? file.name : "");
    }
    if (isEbcdic(description)) {
        convert(area);
    }
}

void clearExtendedStatus(const FileDescription &description) {
    if (isEbcdic(description)) {
        fill(extendedStatusOf(description), kEbcdicBlank, kEbcdicZero);
    } else {
        fill(extendedStatusOf(description), ' ', '0');
    }
}

void convertExtendedStatus(const FileDescription &description) {
    const std::span<uint8_t> area = extendedStatusOf(description);
    if (isEbcdic(description) && !area.empty() && !isConverted(area)) {
        convert(area);
    }
}

} // namespace zor

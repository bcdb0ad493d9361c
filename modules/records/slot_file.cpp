// Sequential and relative files of slots. Each WRITE, REWRITE and DELETE reaches the system before
// it comes back, by one call.
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "core/numbered_file.h"
#include "core/placed_write.h"
#include "core/read_window.h"
#include "proccom.h"
#include "records/slot_layout.h"

namespace zor::modules {
namespace {

constexpr uint32_t kVersion = 1;
constexpr SlotFileHead kHead = {"ZORSLOT", {}, {'v', 'f', 's', '\0'}, kVersion, 0, 0, 0, 0, {}};

struct SlotFile : NumberedFile {
    ReadWindow window;
    uint8_t *slot; // one slot, made up to be written
    int64_t size;  // of the file

    SlotLayout layout() const { return SlotLayout(maxrec); }
};

SlotFile &slotFile(OpenFile &file) {
    return static_cast<SlotFile &>(file);
}

bool servesSlots(const FileDescription &description) {
    return description.organization == 0 || description.organization == FILE_RELATIVE;
}

Outcome putAndSync(const SlotFile &file, std::span<const uint8_t> bytes, int64_t offset) {
    const Outcome outcome = putAt(file, bytes, offset);
    return outcome.good() ? syncChange(file) : outcome;
}

SlotFileHead headOf(const SlotFile &file) {
    SlotFileHead head = kHead;
    head.maxrec = file.maxrec;
    head.minrec = file.minrec;
    head.organization = file.description->organization;
    head.recfmt = file.description->recfmt;
    return head;
}

// Writes the head of an empty file, and compares that of any other.
Outcome settleHead(SlotFile &file) {
    const SlotFileHead mine = headOf(file);
    if (file.size == 0) {
        const Outcome outcome =
            file.updates()
                ? putAndSync(file, {reinterpret_cast<const uint8_t *>(&mine), sizeof mine}, 0)
                : kDone;
        if (!outcome.good()) {
            ftruncate(file.descriptor, 0); // a part of it would be a file of another kind
        }
        return outcome;
    }
    SlotFileHead head{};
    const ssize_t done = pread(file.descriptor, &head, sizeof head, 0);
    return done == sizeof head && memcmp(&head, &mine, sizeof head) == 0 ? kDone
                                                                         : kAttributesDiffer;
}

// Others may have changed what was read before.
Outcome refresh(SlotFile &file) {
    if (!file.shared && file.size >= 0) {
        return kDone;
    }
    struct stat facts {};
    if (fstat(file.descriptor, &facts) != 0) {
        return failureOf(errno);
    }
    file.size = facts.st_size;
    file.window.forget();
    return kDone;
}

// The word ahead of a slot's record; 0 behind the end of the file.
uint32_t wordOf(SlotFile &file, int64_t number) {
    const SlotLayout layout = file.layout();
    if (number > layout.slotsIn(file.size)) {
        return 0;
    }
    uint32_t word = 0;
    const std::span<uint8_t> bytes = file.window.at(layout.offsetOf(number), sizeof word);
    if (bytes.size() >= sizeof word) {
        memcpy(&word, bytes.data(), sizeof word);
    }
    return word;
}

// The next number that may have a record: a stretch that was never written is passed over.
int64_t nextNumber(const SlotFile &file, int64_t number) {
    const SlotLayout layout = file.layout();
    const int64_t offset = layout.offsetOf(number + 1);
    if (offset % kPage != 0) {
        return number + 1;
    }
    const off_t data = lseek(file.descriptor, offset, SEEK_DATA);
    if (data < 0 && errno == ENXIO) {
        return layout.slotsIn(file.size) + 1;
    }
    return data > offset ? layout.firstFrom(data) : number + 1;
}

// The number ahead that may have a record. Nothing tells where a stretch that was never written
// begins: from page to page it is looked for at twice the distance.
int64_t numberAhead(const SlotFile &file, int64_t number, int64_t &distance) {
    const SlotLayout layout = file.layout();
    const int64_t offset = layout.offsetOf(number);
    if (number == 1 || layout.offsetOf(number - 1) / kPage == offset / kPage) {
        return number - 1;
    }
    const int64_t from = std::max<int64_t>(offset - distance, 0) / kPage * kPage;
    const off_t data = lseek(file.descriptor, from, SEEK_DATA);
    const bool isHole = data >= offset || (data < 0 && errno == ENXIO);
    distance = isHole ? 2 * distance : kPage;
    return isHole ? std::min(layout.firstFrom(from), number) - 1 : number - 1;
}

Outcome give(SlotFile &file, int64_t number, uint32_t word, FCB &fcb) {
    const auto length = static_cast<std::size_t>(word - 1);
    if (length > static_cast<std::size_t>(file.maxrec)) {
        return kDamaged;
    }
    const std::span<uint8_t> bytes =
        file.window.at(file.layout().offsetOf(number), sizeof word + length);
    if (bytes.size() < sizeof word + length) {
        return file.window.error() != 0 ? failureOf(file.window.error()) : kDamaged;
    }
    memcpy(fcb.data, bytes.data() + sizeof word, length);
    fcb.reclen = static_cast<int32_t>(length);
    return kDone;
}

Outcome findSlot(OpenFile &opened, Reading reading, int64_t &number, FCB *target) {
    SlotFile &file = slotFile(opened);
    const Outcome outcome = refresh(file);
    if (!outcome.good()) {
        return outcome;
    }
    const int64_t slots = file.layout().slotsIn(file.size);
    int64_t at = number;
    if (reading == Reading::Next) {
        at = std::max<int64_t>(at, 1);
    } else if (reading == Reading::Previous) {
        at = std::min(at, slots);
    }
    int64_t distance = kPage;
    while (at >= 1 && at <= slots) {
        const uint32_t word = wordOf(file, at);
        if (file.window.error() != 0) {
            return failureOf(file.window.error());
        }
        if (word != 0) {
            number = at;
            return target != nullptr ? give(file, at, word, *target) : kDone;
        }
        if (reading == Reading::ByKey) {
            break;
        }
        at = reading == Reading::Next ? nextNumber(file, at) : numberAhead(file, at, distance);
    }
    return kEndOfFile;
}

// A slot that could be written in part alone, on a full disk, is empty again.
Outcome putSlot(SlotFile &file, int64_t number, std::span<const uint8_t> record) {
    const SlotLayout layout = file.layout();
    const auto word = static_cast<uint32_t>(record.size() + 1);
    const auto bytes = static_cast<std::size_t>(layout.slot);
    const int64_t offset = layout.offsetOf(number);
    memcpy(file.slot, &word, sizeof word);
    memcpy(file.slot + sizeof word, record.data(), record.size());
    memset(file.slot + sizeof word + record.size(), 0, bytes - sizeof word - record.size());
    const Outcome outcome = putAndSync(file, {file.slot, bytes}, offset);
    if (outcome.good()) {
        file.window.patch(offset, {file.slot, bytes});
        file.size = std::max(file.size, offset + layout.slot);
    }
    return outcome;
}

Outcome insertSlot(OpenFile &opened, int64_t number, std::span<const uint8_t> record) {
    SlotFile &file = slotFile(opened);
    Outcome outcome = refresh(file);
    if (!outcome.good()) {
        return outcome;
    }
    if (wordOf(file, number) != 0) {
        return kDuplicateKey;
    }
    const int64_t size = file.size;
    outcome = putSlot(file, number, record);
    const int64_t offset = file.layout().offsetOf(number);
    if (!outcome.good() && offset >= size) {
        outcome = ftruncate(file.descriptor, size) == 0 ? outcome : failureOf(errno);
    } else if (!outcome.good()) {
        constexpr uint32_t kEmpty = 0;
        pwrite(file.descriptor, &kEmpty, sizeof kEmpty, offset);
    }
    return outcome;
}

Outcome replaceSlot(OpenFile &opened, int64_t number, std::span<const uint8_t> record) {
    int64_t found = number;
    const Outcome outcome = findSlot(opened, Reading::ByKey, found, nullptr);
    if (!outcome.good()) {
        return outcome.status == kEndOfFile.status ? kNotFound : outcome;
    }
    return putSlot(slotFile(opened), number, record);
}

Outcome eraseSlot(OpenFile &opened, int64_t number) {
    SlotFile &file = slotFile(opened);
    int64_t found = number;
    Outcome outcome = findSlot(opened, Reading::ByKey, found, nullptr);
    if (!outcome.good()) {
        return outcome.status == kEndOfFile.status ? kNotFound : outcome;
    }
    constexpr uint8_t kEmpty[sizeof(uint32_t)] = {};
    const int64_t offset = file.layout().offsetOf(number);
    outcome = putAndSync(file, kEmpty, offset);
    if (outcome.good()) {
        file.window.patch(offset, kEmpty);
    }
    return outcome;
}

constexpr NumberedStore kSlots = {
    .find = findSlot,
    .insert = insertSlot,
    .replace = replaceSlot,
    .erase = eraseSlot,
    .most = INT64_MAX >> 32, // offsets stay far below those of locks
};

Outcome openSlots(OpenFile &opened, FCB &) {
    SlotFile &file = slotFile(opened);
    const auto bytes = static_cast<std::size_t>(file.layout().slot);
    const bool walks = file.accesses(FILE_SEQUENTIAL) && !file.shared;
    file.slot = static_cast<uint8_t *>(_Tvq_mem_alloc(static_cast<uint32_t>(bytes)));
    if (file.slot == nullptr ||
        !file.window.acquire(file, bytes, walks ? ReadWindow::kLarge : std::size_t{kPage})) {
        return kNoStorage;
    }
    file.size = -1;
    const Outcome outcome = refresh(file);
    beginNumbered(file, kSlots);
    return outcome.good() ? settleHead(file) : outcome;
}

Outcome closeSlots(OpenFile &opened) {
    SlotFile &file = slotFile(opened);
    _Tvq_mem_free(file.slot);
    file.slot = nullptr;
    file.window.release();
    return kDone;
}

} // namespace

constinit const FileSystem kFileSystem = {
    .stateSize = sizeof(SlotFile),
    .buffersOutput = false,
    .writesToRead = false,
    .devices = false,
    .serves = servesSlots,
    .open = openSlots,
    .close = closeSlots,
    .read = readNumbered,
    .write = writeNumbered,
    .rewrite = rewriteNumbered,
    .start = startNumbered,
    .delete_ = deleteNumbered,
    .errorText = nullptr,
};

} // namespace zor::modules

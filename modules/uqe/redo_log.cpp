// An entry counts from the moment that the head's word `used` covers it.
#include "uqe/redo_log.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zor::modules {

struct RedoHead {
    char mark[8]; // "UQEREDO"
    uint8_t id[kFileIdBytes];
    int64_t base;               // number of the last change ahead of the entries
    uint32_t count;             // of entries
    std::atomic<uint32_t> used; // bytes of them
};

namespace {

constexpr char kMark[8] = "UQEREDO";
constexpr std::size_t kBytes = 4 * 1024 * 1024;
constexpr std::size_t kAlign = alignof(int64_t);

std::size_t spaceOf(std::size_t record) {
    return (sizeof(RedoEntry) + record + kAlign - 1) / kAlign * kAlign;
}

void *mapped(int descriptor, std::size_t bytes) {
    void *map = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return map == MAP_FAILED ? nullptr : map;
}

} // namespace

// A program can be killed ahead of the mark, too.
void RedoLog::remove(const char *path) {
    char mark[sizeof kMark] = {};
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    const ssize_t done = read(descriptor, mark, sizeof mark);
    ::close(descriptor);
    constexpr char kNoMark[sizeof kMark] = {};
    if (done >= 0 &&
        (memcmp(mark, kMark, sizeof mark) == 0 || memcmp(mark, kNoMark, sizeof mark) == 0)) {
        unlink(path);
    }
}

// All of the file is given its place on the disk: an access to a page that finds none is a signal.
bool RedoLog::create(const char *path, const uint8_t (&id)[kFileIdBytes], int64_t base) {
    remove(path);
    const int descriptor = ::open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        return false;
    }
    const bool placed = posix_fallocate(descriptor, 0, kBytes) == 0;
    head_ = placed ? static_cast<RedoHead *>(mapped(descriptor, kBytes)) : nullptr;
    ::close(descriptor);
    if (head_ == nullptr) {
        unlink(path);
        return false;
    }
    bytes_ = kBytes;
    memcpy(head_->id, id, sizeof head_->id);
    begin(base);
    memcpy(head_->mark, kMark, sizeof kMark);
    return true;
}

bool RedoLog::open(const char *path, const uint8_t (&id)[kFileIdBytes], int64_t applied) {
    const int descriptor = ::open(path, O_RDWR | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    struct stat facts {};
    const bool sound = fstat(descriptor, &facts) == 0 && facts.st_size == kBytes;
    head_ = sound ? static_cast<RedoHead *>(mapped(descriptor, kBytes)) : nullptr;
    ::close(descriptor);
    bytes_ = kBytes;
    if (head_ == nullptr) {
        return false;
    }
    if (memcmp(head_->mark, kMark, sizeof kMark) != 0 ||
        memcmp(head_->id, id, sizeof head_->id) != 0 || head_->base > applied) {
        close();
        return false;
    }
    return true;
}

void RedoLog::close() {
    if (head_ != nullptr) {
        munmap(head_, bytes_);
        head_ = nullptr;
    }
}

bool RedoLog::hasRoom(std::size_t record) const {
    return sizeof(RedoHead) + head_->used + spaceOf(record) <= bytes_;
}

void RedoLog::note(const RedoEntry &entry, std::span<const uint8_t> record) {
    const uint32_t used = head_->used.load(std::memory_order_relaxed);
    uint8_t *target = entries() + used;
    memcpy(target, &entry, sizeof entry);
    std::ranges::copy(record, target + sizeof entry);
    head_->count++;
    head_->used.store(used + static_cast<uint32_t>(spaceOf(record.size())),
                      std::memory_order_release);
}

// Killed in between, the log is empty, whatever the base says.
void RedoLog::begin(int64_t base) {
    head_->used.store(0, std::memory_order_release);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    head_->base = base;
    head_->count = 0;
}

int64_t RedoLog::base() const {
    return head_->base;
}

int64_t RedoLog::lastNumber() const {
    return head_->base + head_->count;
}

bool RedoLog::hasEntries() const {
    return head_->used != 0;
}

uint8_t *RedoLog::entries() const {
    return reinterpret_cast<uint8_t *>(head_ + 1);
}

const RedoEntry *RedoLog::entryAt(std::size_t at) const {
    const std::size_t used = head_->used;
    if (used > bytes_ - sizeof(RedoHead) || at + sizeof(RedoEntry) > used) {
        return nullptr;
    }
    const auto *entry = reinterpret_cast<const RedoEntry *>(entries() + at);
    return entry->length <= used - at - sizeof(RedoEntry) ? entry : nullptr;
}

std::span<const uint8_t> RedoLog::recordAt(std::size_t at) const {
    return {entries() + at + sizeof(RedoEntry), entryAt(at)->length};
}

std::size_t RedoLog::behind(std::size_t at) const {
    return at + spaceOf(entryAt(at)->length);
}

} // namespace zor::modules

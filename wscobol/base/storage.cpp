// Storage services. Plain blocks come from the C library's aligned allocator; tracked blocks carry
// a 16-byte head by which the end of the run unit finds them.

#include "base/storage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/anchors.h"
#include "base/locks.h"
#include "base/message_list.h"

// Head of a tracked block; the storage handed out begins right behind it.
struct alignas(16) TrackedBlock {
    TrackedBlock *next;
    TrackedBlock *previous;
    Runcom *owner;
};
static_assert(sizeof(TrackedBlock) == 16);

namespace zor {
namespace {

constexpr std::size_t kAlignment = 16;

// The run unit whose list takes a new block, or null while storage is not tracked.
Runcom *trackingRunUnit() {
    const Proccom *process = proccom();
    const bool tracks = process != nullptr && has(process->state, PROCCOM_TRACKED);
    return tracks ? currentOrIdleRunUnit(process) : nullptr;
}

} // namespace

void *allocate(std::size_t bytes) {
    const std::size_t rounded = (bytes + kAlignment - 1) & ~(kAlignment - 1);
    return rounded < bytes ? nullptr : aligned_alloc(kAlignment, rounded);
}

void *allocateZeroed(std::size_t bytes) {
    void *block = allocate(bytes);
    if (block != nullptr) {
        memset(block, 0, bytes);
    }
    return block;
}

void release(void *block) {
    free(block);
}

void *allocateOrReport(std::size_t bytes) {
    void *block = allocate(bytes);
    if (block == nullptr) {
        message::insufficientStorage();
    }
    return block;
}

void *allocateZeroedOrReport(std::size_t bytes) {
    void *block = allocateZeroed(bytes);
    if (block == nullptr) {
        message::insufficientStorage();
    }
    return block;
}

// Every block has the head, tracked or not, so that one release serves blocks from before and after
// the switch to tracking.
void *allocateTracked(std::size_t bytes) {
    if (bytes > SIZE_MAX - sizeof(TrackedBlock)) {
        return nullptr;
    }
    auto *block = static_cast<TrackedBlock *>(allocate(sizeof(TrackedBlock) + bytes));
    if (block == nullptr) {
        return nullptr;
    }
    Runcom *unit = trackingRunUnit();
    *block = {nullptr, nullptr, unit};
    if (unit != nullptr) {
        pthread_mutex_lock(&TrackedLock);
        block->next = unit->tracked;
        if (block->next != nullptr) {
            block->next->previous = block;
        }
        unit->tracked = block;
        pthread_mutex_unlock(&TrackedLock);
    }
    return block + 1;
}

void releaseTracked(void *storage) {
    if (storage == nullptr) {
        return;
    }
    TrackedBlock *block = static_cast<TrackedBlock *>(storage) - 1;
    if (block->owner != nullptr) {
        pthread_mutex_lock(&TrackedLock);
        (block->previous != nullptr ? block->previous->next : block->owner->tracked) = block->next;
        if (block->next != nullptr) {
            block->next->previous = block->previous;
        }
        pthread_mutex_unlock(&TrackedLock);
    }
    release(block);
}

void releaseAllTracked(Runcom &unit) {
    const bool locked = takeLockWithinASecond(TrackedLock); // an ending must come through
    TrackedBlock *block = unit.tracked;
    unit.tracked = nullptr;
    if (locked) {
        giveLock(TrackedLock);
    }
    while (block != nullptr) {
        TrackedBlock *next = block->next;
        release(block);
        block = next;
    }
}

} // namespace zor

void *_zorMalloc(uint32_t size, int32_t msgno, uint32_t flags) {
    void *block = zor::allocate(size);
    if (block == nullptr) {
        _zorWriteERRmsg(msgno, flags);
    }
    return block;
}

void *_zorcalloc(int32_t mode, uint32_t size, uint32_t extra) {
    if (size == 0 && extra == 0) {
        return nullptr;
    }
    return mode == 1 ? zor::allocateZeroed(size) : zor::allocate(size);
}

void _zorcfree(void *block) {
    zor::release(block);
}

void *_Tvq_mem_alloc(uint32_t size) {
    return zor::allocate(size);
}

void _Tvq_mem_free(void *block) {
    zor::release(block);
}

uint16_t *_Tvq_wmemset(uint16_t *target, uint16_t value, uint32_t count) {
    std::fill_n(target, count, value);
    return target;
}

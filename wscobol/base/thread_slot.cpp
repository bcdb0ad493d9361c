// The per-thread record is found by a key of the thread library, which frees it when the thread
// ends.
#include "base/thread_slot.h"

#include <pthread.h>
#include <unistd.h>

#include "base/anchors.h"
#include "base/storage.h"

namespace zor {
namespace {

constexpr int32_t kNoKey = -1;
constexpr std::size_t kScratchStep = 16;

// What is allocated for a slot; programs know the slot alone.
struct ThreadRecord {
    ThreadSlot slot;
    uint32_t descriptor[2];
    void (*end)(ThreadSlot &slot);
};

ThreadRecord &recordOf(ThreadSlot &slot) {
    return reinterpret_cast<ThreadRecord &>(slot);
}

// One key for the life of the library: the slots of other threads outlive the run-time.
pthread_once_t keyOnce = PTHREAD_ONCE_INIT;
int32_t keyOfProcess = kNoKey;

void freeSlot(void *value) {
    auto *slot = static_cast<ThreadSlot *>(value);
    if (auto *end = recordOf(*slot).end; end != nullptr) {
        end(*slot);
    }
    release(slot->scratch);
    release(slot);
}

void createKey() {
    pthread_key_t key = 0;
    if (pthread_key_create(&key, freeSlot) == 0) {
        keyOfProcess = static_cast<int32_t>(key);
    }
}

} // namespace

ThreadSlot *existingThreadSlot() {
    const Proccom *process = proccom();
    if (process == nullptr) {
        return nullptr;
    }
    if (process->threadkey == kNoKey) {
        return process->threadslot;
    }
    return static_cast<ThreadSlot *>(
        pthread_getspecific(static_cast<pthread_key_t>(process->threadkey)));
}

ThreadSlot *threadSlot() {
    Proccom *process = proccom();
    if (process == nullptr) {
        return nullptr;
    }
    pthread_once(&keyOnce, createKey);
    __atomic_store_n(&process->threadkey, keyOfProcess, __ATOMIC_RELAXED);
    ThreadSlot *slot = existingThreadSlot();
    if (slot != nullptr) {
        return slot;
    }
    slot = static_cast<ThreadSlot *>(allocateZeroedOrReport(sizeof(ThreadRecord)));
    if (slot == nullptr) {
        return nullptr;
    }
    slot->threadid = gettid();
    if (keyOfProcess == kNoKey) {
        process->threadslot = slot;
    } else {
        pthread_setspecific(static_cast<pthread_key_t>(keyOfProcess), slot);
    }
    return slot;
}

void *threadDescriptor() {
    ThreadSlot *slot = threadSlot();
    return slot == nullptr ? nullptr : recordOf(*slot).descriptor;
}

void *threadScratch(std::size_t bytes) {
    ThreadSlot *slot = threadSlot();
    if (slot == nullptr) {
        return nullptr;
    }
    if (slot->scratchsize < bytes) {
        const std::size_t rounded = (bytes + kScratchStep - 1) & ~(kScratchStep - 1);
        void *grown = allocateOrReport(rounded);
        if (grown == nullptr) {
            return nullptr;
        }
        release(slot->scratch);
        slot->scratch = grown;
        slot->scratchsize = static_cast<uint32_t>(rounded);
    }
    return slot->scratch;
}

void atEndOfSlot(ThreadSlot &slot, void (*end)(ThreadSlot &slot)) {
    recordOf(slot).end = end;
}

void releaseThreadSlot() {
    ThreadSlot *slot = existingThreadSlot();
    if (slot == nullptr) {
        return;
    }
    Proccom *process = proccom();
    process->threadslot = nullptr;
    if (process->threadkey != kNoKey) {
        pthread_setspecific(static_cast<pthread_key_t>(process->threadkey), nullptr);
    }
    freeSlot(slot);
}

void forgetThreadKey(bool unloads) {
    proccom()->threadkey = kNoKey;
    if (unloads && keyOfProcess != kNoKey) {
        pthread_key_delete(static_cast<pthread_key_t>(keyOfProcess));
        keyOfProcess = kNoKey;
        keyOnce = PTHREAD_ONCE_INIT;
    }
}

} // namespace zor

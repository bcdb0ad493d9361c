// The per-thread record: a scratch buffer and the sort state.
#ifndef ZOR_BASE_THREAD_SLOT_H
#define ZOR_BASE_THREAD_SLOT_H

#include <cstddef>
#include <cstdint>

// 84 bytes on a 16-byte boundary.
struct ThreadSlot {
    int32_t threadid;
    void *scratch;          // scratch buffer, or 0
    uint32_t scratchsize;   // its size in bytes, a multiple of 16, never shrunk
    uint32_t sortstate[18]; // belongs to SORT and MERGE
};
static_assert(sizeof(ThreadSlot) == 84);

namespace zor {

// The calling thread's slot; made when there is none. Null when storage is exhausted (907 issued).
ThreadSlot *threadSlot();

// The calling thread's slot, or null when it has none.
ThreadSlot *existingThreadSlot();

// 8 bytes for the descriptor that a CALL gives, apart from the scratch buffer: they are the
// thread's own until its next CALL, whatever services it uses in between. Null like threadScratch.
void *threadDescriptor();

// At least this many bytes that stay the thread's own until its next call. Null when storage is
// exhausted (message 907 was issued).
void *threadScratch(std::size_t bytes);

// What is to be done when the slot goes, with the thread or the run-time.
void atEndOfSlot(ThreadSlot &slot, void (*end)(ThreadSlot &slot));

// Frees the calling thread's slot.
void releaseThreadSlot();

// The process anchor knows the key no more; the next use tells it again. The key itself goes with
// the library, since its destructor does.
void forgetThreadKey(bool unloads);

} // namespace zor

#endif

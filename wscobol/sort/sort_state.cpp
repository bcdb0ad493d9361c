// The records of all threads hang on one list, so that the end of the run-time finds the work files
// of threads that it does not wait for. The list only grows: a record whose thread has ended waits
// there for the next one, so that nobody needs a lock.
#include "sort/sort_state.h"

#include <utility>

#include "base/storage.h"
#include "sort/engine.h"

namespace zor {
namespace {

SortState *allStates = nullptr;

// The word of the slot that holds the record's address.
uint32_t &wordOf(ThreadSlot &slot) {
    return slot.sortstate[0];
}

SortState *stateOf(ThreadSlot &slot) {
    return reinterpret_cast<SortState *>(wordOf(slot));
}

template <class Visit> SortState *findState(Visit visit) {
    SortState *state = __atomic_load_n(&allStates, __ATOMIC_ACQUIRE);
    while (state != nullptr && !visit(*state)) {
        state = state->next;
    }
    return state;
}

bool takeIfIdle(SortState &state) {
    uint32_t expected = 0;
    return __atomic_compare_exchange_n(&state.isTaken, &expected, 1, false, __ATOMIC_ACQ_REL,
                                       __ATOMIC_RELAXED);
}

SortState *makeState() {
    auto *state = static_cast<SortState *>(allocateZeroedOrReport(sizeof(SortState)));
    if (state != nullptr) {
        state->isTaken = 1;
        state->next = __atomic_load_n(&allStates, __ATOMIC_RELAXED);
        while (!__atomic_compare_exchange_n(&allStates, &state->next, state, false,
                                            __ATOMIC_RELEASE, __ATOMIC_RELAXED)) {
        }
    }
    return state;
}

void releaseStateOf(ThreadSlot &slot) {
    SortState &state = *stateOf(slot);
    giveUpStatement(state);
    release(std::exchange(state.keytext, nullptr));
    release(std::exchange(state.filesKeytext, nullptr));
    release(std::exchange(state.buffer, nullptr));
    state.active = nullptr;
    state.activeIsLost = false;
    state.errorWord = 0;
    wordOf(slot) = 0;
    __atomic_store_n(&state.isTaken, 0, __ATOMIC_RELEASE);
}

// A thread may leave from within a call of the engine.
void endStateOf(ThreadSlot &slot) {
    if (stateOf(slot) != nullptr) {
        endActiveCall(*stateOf(slot));
        releaseStateOf(slot);
    }
}

} // namespace

SortState *sortState() {
    ThreadSlot *slot = threadSlot();
    if (slot == nullptr || stateOf(*slot) != nullptr) {
        return slot == nullptr ? nullptr : stateOf(*slot);
    }
    SortState *state = findState(takeIfIdle);
    if (state == nullptr) {
        state = makeState();
    }
    if (state != nullptr) {
        state->threadId = slot->threadid;
        wordOf(*slot) = reinterpret_cast<uint32_t>(state);
        atEndOfSlot(*slot, endStateOf);
    }
    return state;
}

SortState *existingSortState() {
    ThreadSlot *slot = existingThreadSlot();
    return slot == nullptr ? nullptr : stateOf(*slot);
}

void giveUpStatement(SortState &state) {
    state.stage = SortStage::none;
    removeWorkFile(state.spill);
    removeWorkFile(state.output);
}

void releaseSortState() {
    if (existingSortState() != nullptr) {
        releaseStateOf(*existingThreadSlot());
    }
}

void removeAllWorkFiles() {
    findState([](SortState &state) {
        removeWorkFile(state.spill);
        removeWorkFile(state.output);
        return false;
    });
}

void releaseIdleSortStates() {
    SortState **link = &allStates;
    while (SortState *state = *link) {
        if (state->isTaken != 0) {
            link = &state->next;
        } else {
            *link = state->next;
            release(state);
        }
    }
}

} // namespace zor

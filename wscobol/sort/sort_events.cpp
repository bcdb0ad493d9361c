// No work file outlives what it was made for: each way in which a statement may be left half-way
// comes here, or to the end of its thread.
#include "sort/sort_events.h"

#include <sys/single_threaded.h>

#include "base/message_list.h"
#include "sort/engine.h"
#include "sort/sort_state.h"

namespace zor {

void endSorting() {
    if (existingThreadSlot() == nullptr) {
        return;
    }
    if (SortState *state = existingSortState(); state != nullptr) {
        endActiveCall(*state);
        giveUpStatement(*state);
    }
    unloadEngine();
}

void endSortOfRunUnit(const Proccom & /*process*/, Runcom &unit) {
    SortState *state = existingSortState();
    if (state == nullptr) {
        return;
    }
    if (state->active != nullptr && state->activeUnit == &unit) {
        state->activeIsLost = true;
    }
    if (state->unit == &unit) {
        giveUpStatement(*state);
    }
}

void endSortOfThread() {
    endSorting();
    const SortState *state = existingSortState();
    if (state != nullptr && state->active != nullptr) {
        message::sortStillActive();
    }
    releaseSortState();
}

void endSortOfRunTime(Proccom & /*process*/) {
    removeAllWorkFiles();
    unloadEngine();
    if (__libc_single_threaded != 0) {
        releaseIdleSortStates();
    }
}

} // namespace zor

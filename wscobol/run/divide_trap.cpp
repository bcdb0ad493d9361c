// The trap is the run-time's from its start to its end, and the host's own before and behind.
#include "run/divide_trap.h"

#include <unistd.h>
#include <utility>

#include "base/divide_masks.h"

namespace zor {
namespace {

// What was there ahead of the run-time, and whose.
DivideMasks hostMasks;
pid_t startingThread = 0;

} // namespace

void enableDivideTrap() {
    hostMasks = exchangeDivideMasks({0, 0});
    startingThread = gettid();
}

void restoreDivideTrap() {
    if (std::exchange(startingThread, 0) == gettid()) {
        exchangeDivideMasks(hostMasks);
    }
}

} // namespace zor

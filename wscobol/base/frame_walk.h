// The return addresses of the calling thread, taken from any state.
#ifndef ZOR_BASE_FRAME_WALK_H
#define ZOR_BASE_FRAME_WALK_H

#include <csignal>
#include <span>

namespace zor {

// Fills frames from the innermost on; gives how many were found before the walk ended or failed.
int walkFrames(std::span<void *> frames);

// A fault of the walk goes back into it; any other signal returns. Called first by the dispatcher.
void leaveFailedWalk(int signo, const siginfo_t *info);

} // namespace zor

#endif

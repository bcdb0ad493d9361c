// Shows the call chain of the calling thread.
#ifndef ZOR_BASE_TRACEBACK_H
#define ZOR_BASE_TRACEBACK_H

#include <cstdio>

namespace zor {

// Whether the code that a handler interrupted will go on: then streams that it is at work on stay
// as they are.
enum class AfterTraceback : bool { runEnds, runGoesOn };

// Writes the call chain to a stream (null means stderr) between its head and its closing line.
void printTraceback(FILE *stream, AfterTraceback after = AfterTraceback::runEnds);

} // namespace zor

#endif

// Shows the call chain of the calling thread.
#ifndef ZOR_RUN_TRACEBACK_H
#define ZOR_RUN_TRACEBACK_H

#include <cstdio>

namespace zor {

// Writes the call chain to a stream (null means stderr) between its head and its closing line.
void printTraceback(FILE *stream);

} // namespace zor

#endif

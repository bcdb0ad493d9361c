// The start of the run-time.
#ifndef ZOR_RUN_START_UP_H
#define ZOR_RUN_START_UP_H

namespace zor {

// True once InitCobolRte ran for the present Proccom.
bool runTimeStarted();

// Makes the Proccom, one idle run unit and the message catalogue ready; runs when the library is
// loaded, and again when a run-time that has ended starts anew.
void zor_init();

// Starts the run-time: container markers, options, switches. caller is a PCB, kNoProgram, or null
// when a host starts the run-time ahead of any program.
void InitCobolRte(const void *caller);

// Stands for a caller that is neither a program nor a host ahead of any program.
extern const char kNoProgram[1];

} // namespace zor

#endif

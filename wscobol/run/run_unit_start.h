// The start of a run unit.
#ifndef ZOR_RUN_RUN_UNIT_START_H
#define ZOR_RUN_RUN_UNIT_START_H

namespace zor {

// Begins a run unit and makes it current. caller is a PCB, kNoProgram, or null when a host starts
// the run-time ahead of any program; the debug log shows it.
void RunUnitInit(const void *caller);

} // namespace zor

#endif

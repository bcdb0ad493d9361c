// The trap for division by zero of the floating unit.
#ifndef ZOR_RUN_DIVIDE_TRAP_H
#define ZOR_RUN_DIVIDE_TRAP_H

namespace zor {

// Lets a division by zero of the calling thread, and of those that it starts, raise SIGFPE.
void enableDivideTrap();

// Puts the trap back as the host had it ahead of the call above. Does nothing on another thread,
// whose floating unit is its own.
void restoreDivideTrap();

} // namespace zor

#endif

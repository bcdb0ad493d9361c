// The trap for division by zero of the floating unit.
#ifndef ZOR_RUN_DIVIDE_TRAP_H
#define ZOR_RUN_DIVIDE_TRAP_H

namespace zor {

// Lets a division by zero of the calling thread raise SIGFPE.
void enableDivideTrap();

} // namespace zor

#endif

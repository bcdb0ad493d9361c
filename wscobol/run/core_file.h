// Core files of the run-time's own making.
#ifndef ZOR_RUN_CORE_FILE_H
#define ZOR_RUN_CORE_FILE_H

#include "proccom.h"

namespace zor {

// The options under which an abnormal end makes a core file.
inline constexpr uint32_t kCoreOptions = OPTION_TRAP_NEW | OPTION_TRAP_DUMP;

// Logs the attempt and, outside the transaction monitor, makes a core file of this process with the
// system's tool. True when one was made; a core limit of 0 makes none, without a word.
bool dumpCore();

// Keeps the system from writing a core file of its own.
void suppressSystemCore();

} // namespace zor

#endif

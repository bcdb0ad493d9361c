// Programs are shared objects: how one is found, loaded and entered, and how it goes.
#ifndef ZOR_DYNAMIC_PROGRAM_FILE_H
#define ZOR_DYNAMIC_PROGRAM_FILE_H

#include "proccom.h"

namespace zor {

// Files of the transaction monitor.
inline constexpr const char *kMonitorEnding = ".qbxcob";

// Why a program cannot be called: the variants of message 96.
enum class CallFailure : uint8_t { none = 0, noStorage = 3, emptyName = 6, notLoaded = 7 };

// Finds the program's file, opens it and finds its entry. Fills load, entry and flags of the LLE,
// whose name is terminated; they stay empty after a failure. Unloads cached programs where the
// system has no room for the file.
CallFailure loadProgram(Proccom &process, LLE &program);

// True when an address lies in a file, given by the handle of its load. Null lies nowhere.
bool liesInFile(const void *address, void *file);

// Closes the file of a program that the library opened itself, and tells of a failure.
void closeProgramFile(const LLE &program);

} // namespace zor

#endif

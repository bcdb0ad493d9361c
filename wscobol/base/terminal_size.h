// The sizes of the terminals that the standard files go to.
#ifndef ZOR_BASE_TERMINAL_SIZE_H
#define ZOR_BASE_TERMINAL_SIZE_H

#include <unistd.h>

#include "proccom.h"

namespace zor {

// Reads the terminal size of a descriptor into size, zeros when it is no terminal.
void readTerminalSize(int descriptor, winsize &size);

struct TerminalDescriptors {
    int input = STDIN_FILENO;
    int output = STDOUT_FILENO;
    int error = STDERR_FILENO;
};

// Reads the three sizes in the order of the descriptors; that of the input goes to inputSize.
void readTerminalSizes(Proccom &process, const TerminalDescriptors &descriptors = {},
                       winsize Proccom::*inputSize = &Proccom::stdinsize);

} // namespace zor

#endif

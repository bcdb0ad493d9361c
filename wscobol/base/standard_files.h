// The run-time's own streams, opened on first use, and the rule for generated file names.
#ifndef ZOR_BASE_STANDARD_FILES_H
#define ZOR_BASE_STANDARD_FILES_H

#include <cstdio>
#include <sys/ioctl.h>

namespace zor {

enum class StandardFile : char {
    consoleIn = 'A',
    consoleOut = 'D',
    sysin = 'I',
    cobmsgs = 'M',
    sysout = 'O',
    syspunch = 'P',
};

// Opens the file when its field in Proccom is 0; gives the field's value, which stays 0 only for a
// SYSPUNCH that is unset or cannot be opened.
FILE *standardFile(StandardFile file);

// Expands an output file name: a value that ends in "%" becomes a generated name. fresh asks for a
// new clock reading for this call alone. The result lives until the next call.
const char *expandOutputName(const char *value, bool fresh, const char *base);

// The next use of the name rule by the current run unit takes a new clock reading; called at its
// start.
void forgetNameStamp();

// Reads the terminal size of a descriptor into size, zeros when it is no terminal.
void readTerminalSize(int descriptor, winsize &size);

} // namespace zor

#endif

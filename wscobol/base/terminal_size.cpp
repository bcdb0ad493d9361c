// A terminal's column count is the width at which messages wrap.
#include "base/terminal_size.h"

namespace zor {

void readTerminalSize(int descriptor, winsize &size) {
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0) {
        size = {};
    }
}

void readTerminalSizes(Proccom &process, const TerminalDescriptors &descriptors,
                       winsize Proccom::*inputSize) {
    readTerminalSize(descriptors.input, process.*inputSize);
    readTerminalSize(descriptors.output, process.stdoutsize);
    readTerminalSize(descriptors.error, process.stderrsize);
}

} // namespace zor

// DISPLAY has no status: the program goes on when its output does not reach the file. Operators
// learn of it when the run unit ends.
#include "base/lost_output.h"

#include <atomic>
#include <cerrno>
#include <cstring>

#include "base/anchors.h"
#include "base/patient_streams.h"
#include "base/standard_files.h"

namespace zor {
namespace {

struct OutputFile {
    const char *name;
    FILE *Proccom::*field;
};

constexpr OutputFile kOutputFiles[] = {{"SYSOUT", &Proccom::sysout},
                                       {"CONSOLE", &Proccom::consoleout},
                                       {"SYSPUNCH", &Proccom::syspunch},
                                       {"COBMSGS", &Proccom::cobmsgs}};
constexpr std::size_t kFiles = sizeof kOutputFiles / sizeof kOutputFiles[0];

std::atomic<int> losses[kFiles]; // errno of the first one, 0 for none

} // namespace

void noteLostOutput(const FILE *stream) {
    const Proccom *process = proccom();
    for (std::size_t i = 0; process != nullptr && i < kFiles; ++i) {
        if (openedFile(process->*kOutputFiles[i].field) == stream) {
            int none = 0;
            losses[i].compare_exchange_strong(none, errno);
            return; // two names of one stream are told as one
        }
    }
}

void tellLostOutput() {
    for (std::size_t i = 0; i < kFiles; ++i) {
        if (const int reason = losses[i].exchange(0); reason != 0) {
            reportPatiently("%s: output could not be written: %s\n", kOutputFiles[i].name,
                            strerror(reason));
        }
    }
}

} // namespace zor

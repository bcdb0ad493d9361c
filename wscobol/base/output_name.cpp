// Names of output files. A value that ends in "%" asks for a name that no other run uses: it holds
// the main program, the time the run unit first asked, the time zone and the process id.
#include "base/output_name.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "base/anchors.h"
#include "base/clock.h"
#include "base/environment.h"

namespace zor {
namespace {

constexpr std::size_t kNameSize = 4096; // of a generated name, with its end
constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;

// Taken once per run unit, so that all files of one run carry the same stamp.
struct NameStamp {
    bool taken;
    int32_t unit;
    long long pid;
    ClockReading clock;
    int zoneHours;
    int zoneMinutes;
};

constexpr int32_t kNoUnit = -1;

// Run units nest, and the outer one goes on with the stamp that it has: the last ones are kept.
constexpr std::size_t kKeptStamps = 8;
std::array<NameStamp, kKeptStamps> nameStamps;
std::size_t oldestStamp;
char outputDirectory[kNameSize]; // ends in "/", empty when files go to the working directory
bool outputDirectoryRead;
char outputName[kNameSize];

void readOutputDirectory() {
    if (outputDirectoryRead) {
        return;
    }
    outputDirectoryRead = true;
    const char *value = settingOf("COBOUTDIR");
    const std::size_t length = value == nullptr ? 0 : strlen(value);
    if (length == 0 || length > kNameSize - 2) {
        return;
    }
    memcpy(outputDirectory, value, length);
    if (value[length - 1] != '/') {
        outputDirectory[length] = '/';
    }
}

int32_t currentUnit() {
    const Runcom *unit = currentRunUnit();
    return unit == nullptr ? kNoUnit : unit->id;
}

const NameStamp &takeNameStamp() {
    const int32_t unit = currentUnit();
    for (const NameStamp &stamp : nameStamps) {
        if (stamp.taken && stamp.unit == unit) {
            return stamp;
        }
    }
    NameStamp &stamp = nameStamps[oldestStamp];
    oldestStamp = (oldestStamp + 1) % kKeptStamps;
    tzset();
    const Proccom *process = proccom();
    stamp = {.taken = true,
             .unit = unit,
             .pid = process != nullptr ? process->pid : getpid(),
             .clock = readClock(),
             .zoneHours = static_cast<int>(timezone / kSecondsPerHour),
             .zoneMinutes = static_cast<int>(labs(timezone % kSecondsPerHour) / kSecondsPerMinute)};
    return stamp;
}

const PCB *currentMainProgram() {
    const Runcom *unit = currentRunUnit();
    return unit == nullptr ? nullptr : mainProgram(*unit);
}

// What stands ahead of the program in "dir/name.PROG.20220714.200442.123456+0500.4711".
struct NameHead {
    const char *directory;
    const char *value;
    int valueLength;
    const char *base;
    const char *separator;
};

void generateName(const NameHead &head, const NameStamp &stamp, const ClockReading &clock) {
    const PCB *program = currentMainProgram();
    char time[sizeof "20220714.200442"];
    strftime(time, sizeof time, "%Y%m%d.%H%M%S", &clock.local);
    snprintf(outputName, sizeof outputName, "%s%.*s%s%s%.*s%s%s.%6.6d%+2.2d%2.2d.%lld",
             head.directory, head.valueLength, head.value, head.base, head.separator,
             program == nullptr ? 0 : static_cast<int>(program->namelen),
             program == nullptr ? "" : program->name, program == nullptr ? "" : ".", time,
             clock.microseconds, stamp.zoneHours, stamp.zoneMinutes, stamp.pid);
}

} // namespace

void forgetNameStamp() {
    const int32_t unit = currentUnit();
    for (NameStamp &stamp : nameStamps) {
        stamp.taken = stamp.taken && stamp.unit != unit && stamp.unit != kNoUnit;
    }
}

const char *expandOutputName(const char *value, bool fresh, const char *base) {
    readOutputDirectory();
    const NameStamp &stamp = takeNameStamp();
    const ClockReading clock = fresh ? readClock() : stamp.clock;
    if (base == nullptr) {
        base = "";
    }
    if (value == nullptr || *value == '\0') {
        const bool named = *base != '\0';
        generateName({named ? outputDirectory : "", "", 0, base, named ? "." : ""}, stamp, clock);
        return outputName;
    }
    const char *directory = value[0] == '.' || value[0] == '/' ? "" : outputDirectory;
    const std::size_t shown = strlen(value) - 1;
    if (value[shown] != '%') {
        snprintf(outputName, sizeof outputName, "%s%s", directory, value);
        return outputName;
    }
    const bool unnamed = shown == 0 || value[shown - 1] == '/';
    generateName({directory, value, static_cast<int>(shown), unnamed ? base : "", "."}, stamp,
                 clock);
    return outputName;
}

} // namespace zor

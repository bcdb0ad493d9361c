// The run-time's own streams: each is opened on first use, from the variable that names it, and
// stays open to the end of the process.
#include "base/standard_files.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/environment.h"
#include "base/locks.h"
#include "base/output_name.h"
#include "base/stream_calls.h"
#include "base/terminal_size.h"

namespace zor {
namespace {

constexpr std::size_t kVariables = 3;

enum class NameRule : char {
    whole,       // the variable's value as it stands
    withoutLast, // less a "%" at its end: CONSOLE serves both directions
    outputName,  // expanded by the rule for output files
};

struct StandardFileRow {
    StandardFile file;
    NameRule rule;
    FILE *Proccom::*field;
    const char *variables[kVariables]; // the first one that is set wins
    FILE *const *fallback;             // unset, empty, or not to be opened; null: the field stays 0
    const char *mode;
    const char *base;
    winsize Proccom::*size; // null: the stream has no terminal size
    const char *notice;
};

// clang-format off
constexpr StandardFileRow kRows[] = {
    {StandardFile::consoleIn, NameRule::withoutLast, &Proccom::consolein, {"CONSOLE"},
     &stdin, "r", nullptr, &Proccom::stdinsize, nullptr},
    {StandardFile::consoleOut, NameRule::outputName, &Proccom::consoleout, {"CONSOLE"},
     &stdout, "a", "tty", &Proccom::stdoutsize, "Creating CONSOLE file: %s\n"},
    {StandardFile::sysin, NameRule::whole, &Proccom::sysin, {"SYSIN", "SYSIPT"},
     &stdin, "r", nullptr, &Proccom::stdinsize, nullptr},
    {StandardFile::cobmsgs, NameRule::outputName, &Proccom::cobmsgs, {"COBMSGS"},
     &stderr, "a", "stderr", &Proccom::stderrsize, "Creating COBMSGS file: %s\n"},
    {StandardFile::sysout, NameRule::outputName, &Proccom::sysout, {"SYSOUT", "SYSLIST", "SYSLST"},
     &stdout, "a", "stdout", &Proccom::stdoutsize, "Creating SYSOUT file: %s\n"},
    {StandardFile::syspunch, NameRule::outputName, &Proccom::syspunch, {"SYSPUNCH", "SYSPCH"},
     nullptr, "w", "syspunch", nullptr, "Creating SYSPUNCH file: %s\n"},
};
// clang-format on

const StandardFileRow &rowOf(StandardFile file) {
    const StandardFileRow *row = kRows;
    while (row->file != file) {
        ++row;
    }
    return *row;
}

const char *variableOf(const StandardFileRow &row) {
    for (const char *name : row.variables) {
        const char *value = name == nullptr ? nullptr : valueOf(name);
        if (value != nullptr) {
            return value;
        }
    }
    return nullptr;
}

FILE *openWithoutLast(const StandardFileRow &row, const char *value) {
    const std::size_t length = strlen(value);
    if (value[length - 1] != '%' || length > PATH_MAX) {
        return retryFopen(value, row.mode);
    }
    char name[PATH_MAX];
    memcpy(name, value, length - 1);
    name[length - 1] = '\0';
    return retryFopen(name, row.mode);
}

FILE *openOutput(const StandardFileRow &row, const char *value) {
    const char *name = expandOutputName(value, false, row.base);
    FILE *stream = retryFopen(name, row.mode);
    if (stream != nullptr && strcmp(name, value) != 0) {
        printf(row.notice, name);
    }
    return stream;
}

FILE *openNamed(const StandardFileRow &row, const char *value) {
    switch (row.rule) {
    case NameRule::whole:
        return retryFopen(value, row.mode);
    case NameRule::withoutLast:
        return openWithoutLast(row, value);
    case NameRule::outputName:
        break;
    }
    return openOutput(row, value);
}

FILE *openStandardFile(const StandardFileRow &row) {
    const char *value = variableOf(row);
    FILE *stream = value == nullptr || *value == '\0' ? nullptr : openNamed(row, value);
    return stream == nullptr && row.fallback != nullptr ? *row.fallback : stream;
}

} // namespace

FILE *standardFile(StandardFile file) {
    const StandardFileRow &row = rowOf(file);
    Proccom *process = proccom();
    if (process == nullptr) {
        return row.fallback == nullptr ? nullptr : *row.fallback;
    }
    FILE *&field = process->*row.field;
    // A stream once there never changes, so the usual case needs no lock.
    FILE *stream = openedFile(field);
    if (stream != nullptr) {
        return stream;
    }
    const ScopedLock lock(StdFileLock);
    if (field == nullptr) {
        stream = openStandardFile(row);
        if (stream != nullptr && row.size != nullptr) {
            readTerminalSize(fileno(stream), process->*row.size);
        }
        __atomic_store_n(&field, stream, __ATOMIC_RELEASE);
    }
    return field;
}

} // namespace zor

// Installs and removes the signal tables of run units.
#include "run/signal_table.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "base/patient_streams.h"
#include "run/signal_dispatch.h"
#include "run/signal_stack.h"

namespace zor {
namespace {

struct TemplateRow {
    const char *name;
    int signo;
    int saflags;
    int after;
    bool ignored;
};

constexpr std::array<TemplateRow, 25> kTemplate{{
    {"SIGHUP", SIGHUP, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGWINCH", SIGWINCH, 0, SIGNAL_AFTER_RETURN, false},
    {"SIGINT", SIGINT, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGQUIT", SIGQUIT, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGTTIN", SIGTTIN, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGTTOU", SIGTTOU, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGTSTP", SIGTSTP, 0, SIGNAL_AFTER_DEFAULT, false},
    {"SIGTERM", SIGTERM, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGABRT", SIGABRT, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGSEGV", SIGSEGV, SA_ONSTACK, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGILL", SIGILL, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGFPE", SIGFPE, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGBUS", SIGBUS, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGSYS", SIGSYS, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGPWR", SIGPWR, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGSTKFLT", SIGSTKFLT, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGSTKFLT", SIGSTKFLT, SA_ONSTACK, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGXCPU", SIGXCPU, 0, SIGNAL_AFTER_RETURN, false},
    {"SIGXFSZ", SIGXFSZ, 0, SIGNAL_AFTER_RETURN, false},
    {"SIGUSR1", SIGUSR1, 0, SIGNAL_AFTER_RETURN, false},
    {"SIGUSR2", SIGUSR2, 0, SIGNAL_AFTER_RETURN, false},
    {"SIGCONT", SIGCONT, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGTRAP", SIGTRAP, 0, SIGNAL_AFTER_PREVIOUS, false},
    {"SIGPIPE", SIGPIPE, 0, SIGNAL_AFTER_RETURN, true},
    {"SIGIO", SIGIO, 0, SIGNAL_AFTER_RETURN, true},
}};
constexpr std::size_t kRows = kTemplate.size();
static_assert(kSignalTableBytes == (kRows + 1) * sizeof(SignalRow));

// Run units that nest deeper than this go on with the handlers of those below them.
constexpr int kMaxTables = 256;

std::array<SignalRow *, kMaxTables> tables;
int depth = 0; // counts the tables that found no room, too
SignalRow defaultTable[kRows + 1];

// Completes a table ahead of its installation, with the actions that are in force: a signal may
// find it as soon as it is on the stack.
void prepareActions(SignalRow *table, int unwantedFlags) {
    struct sigaction common {};
    common.sa_sigaction = dispatchSignal;
    common.sa_flags = SA_SIGINFO;
    for (const TemplateRow &row : kTemplate) {
        sigaddset(&common.sa_mask, row.signo);
    }
    for (std::size_t i = 0; i < kRows; ++i) {
        SignalRow &row = table[i];
        row.action = common;
        if (kTemplate[i].ignored) {
            row.action.sa_handler = SIG_IGN;
        }
        row.action.sa_flags = (row.action.sa_flags | row.saflags) & ~unwantedFlags;
        row.handler = reinterpret_cast<void *>(_zorSignal);
        sigaction(row.signo, nullptr, &row.previous);
    }
}

void setAction(int signo, const struct sigaction &action, struct sigaction *replaced) {
    const int result = sigaction(signo, &action, replaced);
    if (result != 0) {
        const int error = errno;
        reportPatiently("Error on sigaction(%d,...)=%d %d %s\n", signo, result, error,
                        strerror(error));
    }
}

// Where the table lies on the stack, -1 for none.
int indexOfTable(const SignalRow *table) {
    int index = topSignalTable();
    while (index >= 0 && tables[static_cast<std::size_t>(index)] != table) {
        --index;
    }
    return index;
}

} // namespace

int topSignalTable() {
    return std::min(__atomic_load_n(&depth, __ATOMIC_ACQUIRE), kMaxTables) - 1;
}

SignalRow *findSignalRow(SignalRow *table, int signo) {
    for (SignalRow *row = table; row != nullptr && row->signo != 0; ++row) {
        if (row->signo == signo) {
            return row;
        }
    }
    return nullptr;
}

SignalRow *signalRowAt(int index, int signo) {
    return findSignalRow(index < 0 ? defaultTable : tables[static_cast<std::size_t>(index)], signo);
}

bool runGoesOnAfter(int signo) {
    return signo == SIGWINCH || signo == SIGCONT || signo == SIGUSR1 || signo == SIGUSR2 ||
           signo == SIGXCPU || signo == SIGXFSZ;
}

void fillSignalTable(SignalRow *table) {
    memset(table, 0, kSignalTableBytes);
    for (std::size_t i = 0; i < kRows; ++i) {
        const TemplateRow &from = kTemplate[i];
        SignalRow &row = table[i];
        row.name = from.name;
        row.signo = from.signo;
        row.saflags = from.saflags;
        row.after = from.after;
        row.handler = from.ignored ? reinterpret_cast<void *>(SIG_IGN) : nullptr;
    }
}

void installSignalTable(SignalRow *table) {
    if (defaultTable[0].signo == 0) {
        fillSignalTable(defaultTable);
    }
    if (depth >= kMaxTables) {
        ++depth;
        return;
    }
    prepareActions(table, provideThreadStack() ? 0 : SA_ONSTACK);
    tables[static_cast<std::size_t>(depth)] = table;
    __atomic_store_n(&depth, depth + 1, __ATOMIC_RELEASE);
    for (SignalRow *row = table; row->signo != 0; ++row) {
        setAction(row->signo, row->action, &row->previous);
    }
}

void removeSignalTable(SignalRow *table) {
    const int top = topSignalTable();
    const int index = indexOfTable(table);
    if (index < 0) {
        depth -= depth > kMaxTables ? 1 : 0; // it found no place on the stack
        return;
    }
    if (index == top) {
        // From the last row to the first: a signal that stands twice gets back what its first row
        // replaced.
        for (std::size_t i = kRows; i-- > 0;) {
            setAction(table[i].signo, table[i].previous, nullptr);
        }
    } else {
        // The table above stays in force, and will put back what this one replaced.
        SignalRow *above = tables[static_cast<std::size_t>(index) + 1];
        for (std::size_t i = 0; i < kRows; ++i) {
            above[i].previous = table[i].previous;
        }
        std::copy(tables.begin() + index + 1, tables.begin() + top + 1, tables.begin() + index);
    }
    __atomic_store_n(&depth, depth - 1, __ATOMIC_RELEASE);
}

namespace {

// A thread that a signal ended left its table in force; the handlers go with the library.
__attribute__((destructor)) void removeAllSignalTables() {
    while (topSignalTable() >= 0) {
        removeSignalTable(tables[static_cast<std::size_t>(topSignalTable())]);
    }
}

} // namespace
} // namespace zor

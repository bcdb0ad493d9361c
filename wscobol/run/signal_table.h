// The stack of installed signal tables, as the dispatcher sees it.
#ifndef ZOR_RUN_SIGNAL_TABLE_H
#define ZOR_RUN_SIGNAL_TABLE_H

#include "signal_row.h"

namespace zor {

// Index of the table on top, -1 when no table is installed.
int topSignalTable();

// The row of a signal in the table at an index of the stack; below the stack lies a table of the
// system's default actions. Null when the table does not have the signal.
SignalRow *signalRowAt(int index, int signo);

// The row of a signal in one table, which may be null.
SignalRow *findSignalRow(SignalRow *table, int signo);

// True when the run goes on after the signal.
bool runGoesOnAfter(int signo);

// The routine that receives the signals of all tables.
void dispatchSignal(int signo, siginfo_t *info, void *context);

} // namespace zor

#endif

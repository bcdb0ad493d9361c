// The run-time's signal tables: one per run unit that needs it, on a stack like the run units.
#ifndef ZOR_RUN_SIGNAL_TABLE_H
#define ZOR_RUN_SIGNAL_TABLE_H

#include <cstddef>

#include "signal_row.h"

namespace zor {

// Bytes of one run unit's signal table: 25 rows and the row that ends it.
inline constexpr std::size_t kSignalTableBytes = 7800;

// Fills a run unit's new table from the template: a signal must find its name there as soon as the
// run unit is current.
void fillSignalTable(SignalRow *table);

// Puts a filled table in force with _zorSignal as the routine.
void installSignalTable(SignalRow *table);

// Takes a table out of force and puts the actions back that it replaced.
void removeSignalTable(SignalRow *table);

// Index of the table on top, -1 when no table is installed.
int topSignalTable();

// The row of a signal in the table at an index of the stack; below the stack lies a table of the
// system's default actions. Null when the table does not have the signal.
SignalRow *signalRowAt(int index, int signo);

// The row of a signal in one table, which may be null.
SignalRow *findSignalRow(SignalRow *table, int signo);

// True when the run goes on after the signal.
bool runGoesOnAfter(int signo);

} // namespace zor

#endif

// The run-time's signal tables: one per run unit that needs it, nested like the run units.
#ifndef ZOR_RUN_SIGNALS_H
#define ZOR_RUN_SIGNALS_H

#include <cstddef>

struct SignalRow;

namespace zor {

// Bytes of one run unit's signal table: 25 rows and the row that ends it.
inline constexpr std::size_t kSignalTableBytes = 7800;

// Fills a run unit's table from the template and puts it in force with _zorSignal as the routine.
void installSignalTable(SignalRow *table);

// Takes a table out of force and puts the actions back that it replaced.
void removeSignalTable(SignalRow *table);

// Gives back the alternate stack when it is the run-time's own and not in use.
void removeAlternateStack();

} // namespace zor

#endif

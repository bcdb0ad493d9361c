// The records of processes and run units that have ended. Other threads may still hold their
// addresses, so they are kept and taken up again at the next start.
#ifndef ZOR_RUN_KEPT_ANCHORS_H
#define ZOR_RUN_KEPT_ANCHORS_H

#include "proccom.h"

namespace zor {

// A zeroed record, a kept one before a new one. A run unit's has its signal table. Null when
// storage is exhausted (message 907 was issued).
Proccom *takeProccom();
Runcom *takeRuncom();

void keep(Proccom &process);
void keep(Runcom &unit);

// Frees the kept records: no other thread is left that could hold one.
void releaseKeptAnchors();

} // namespace zor

#endif

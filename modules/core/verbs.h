// The vectors of an open file.
#ifndef ZOR_MODULES_CORE_VERBS_H
#define ZOR_MODULES_CORE_VERBS_H

#include "fcb.h"

namespace zor::modules {

// OPEN and CLOSE; a good OPEN installs the verbs that its mode allows.
void installOpenAndClose(FCB &fcb);

// At the end of one of several concatenated files: closes it and opens the next. True when there
// was one, and FCB.status tells how its OPEN ended; false leaves the file as it is.
bool stepToNextMember(FCB &fcb, IPCB *ipcb);

} // namespace zor::modules

#endif

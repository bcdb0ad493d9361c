// The vectors of an open file.
#ifndef ZOR_MODULES_CORE_VERBS_H
#define ZOR_MODULES_CORE_VERBS_H

#include "fcb.h"

namespace zor::modules {

// Those that an open file has whatever its mode, and those that it has while the mode allows them.
void installOpenAndClose(FCB &fcb);
void installVerbs(FCB &fcb, uint16_t mode);

// Ends the verb of a READ at the end of a member: true when a next member was opened, or could not
// be, which the block's status tells; false when there is none and the file is as it was.
bool stepToNextMember(FCB &fcb, IPCB *ipcb);

} // namespace zor::modules

#endif

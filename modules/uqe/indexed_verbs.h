// The verbs of indexed files.
#ifndef ZOR_MODULES_UQE_INDEXED_VERBS_H
#define ZOR_MODULES_UQE_INDEXED_VERBS_H

#include "uqe/database.h"

namespace zor::modules {

Outcome readIndexed(UqeFile &file, FCB &fcb, Reading reading);
Outcome writeIndexed(UqeFile &file, FCB &fcb);
Outcome rewriteIndexed(UqeFile &file, FCB &fcb);
Outcome startIndexed(UqeFile &file, FCB &fcb);
Outcome deleteIndexed(UqeFile &file, FCB &fcb);

} // namespace zor::modules

#endif

// Gets an OPEN as far as all file systems have it in common: which modes make a file, what an
// absent OPTIONAL file means, who else may have it open.
#ifndef ZOR_MODULES_CORE_OPENING_H
#define ZOR_MODULES_CORE_OPENING_H

#include "core/open_file.h"

namespace zor::modules {

// Fills the head of the state. Good with status 0, or with 5 for an OPTIONAL file that was absent:
// it was made, or the descriptor is negative. After a failure there is no descriptor.
Outcome openDescriptor(OpenFile &file, const FCB &fcb, const FileDescription &description);

// Gives the descriptor back.
Outcome closeDescriptor(OpenFile &file);

} // namespace zor::modules

#endif

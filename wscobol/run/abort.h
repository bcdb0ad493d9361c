// The abnormal end; its entry is _zorAbort.
#ifndef ZOR_RUN_ABORT_H
#define ZOR_RUN_ABORT_H

#include "proccom.h"

namespace zor {

// This thread becomes the main one, which an abnormal end ends by a signal.
void noteMainThread();

} // namespace zor

#endif

// Output of the standard files that could not be written, as on a full disk.
#ifndef ZOR_BASE_LOST_OUTPUT_H
#define ZOR_BASE_LOST_OUTPUT_H

#include "proccom.h"

namespace zor {

// Remembers that a write to the stream failed, and by errno why; nothing for other streams. The
// first loss since the last telling counts. errno is kept.
void noteLostOutput(const FILE *stream);

// Tells each loss once on stderr: "SYSOUT: output could not be written: No space left on device".
void tellLostOutput();

} // namespace zor

#endif

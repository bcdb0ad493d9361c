// The way back to compiled code: its epilogue, or a host's stub in its place.
#ifndef ZOR_RUN_EPILOGUE_H
#define ZOR_RUN_EPILOGUE_H

#include <csetjmp>

namespace zor {

// True when generated code or a host filled the way back to its epilogue.
bool epilogueIsKnown(const sigjmp_buf &jmp);

} // namespace zor

#endif

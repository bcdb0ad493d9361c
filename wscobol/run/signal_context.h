// What a handler's context tells about the interrupted code.
#ifndef ZOR_RUN_SIGNAL_CONTEXT_H
#define ZOR_RUN_SIGNAL_CONTEXT_H

#include <ucontext.h>

namespace zor {

// A register of the interrupted code, 0 without a context.
inline greg_t interruptedRegister(const void *context, int index) {
    return context == nullptr ? 0
                              : static_cast<const ucontext_t *>(context)->uc_mcontext.gregs[index];
}

// The address of the interrupted instruction.
inline void *interruptedAddress(const void *context) {
    return reinterpret_cast<void *>(interruptedRegister(context, REG_EIP));
}

} // namespace zor

#endif

// How a step of a sort ended.
#ifndef ZOR_ENGINE_FAILURE_H
#define ZOR_ENGINE_FAILURE_H

#include <cerrno>
#include <cstdint>

#include "sort_engine.h"

namespace zor::engine {

// True when the step failed.
struct Failure {
    int32_t word = 0; // SORT_ERROR_
    int32_t value = 0;

    explicit operator bool() const { return word != 0; }
};

inline Failure systemFailure(int32_t word) {
    return {word, errno};
}

inline Failure longFailure(int32_t word, uint32_t length) {
    return {word, static_cast<int32_t>(length)};
}

} // namespace zor::engine

#endif

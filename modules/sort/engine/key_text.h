// Reads the text by which a compiler tells the keys of a sort.
#ifndef ZOR_ENGINE_KEY_TEXT_H
#define ZOR_ENGINE_KEY_TEXT_H

#include "engine/failure.h"
#include "engine/keys.h"

namespace zor::engine {

constexpr std::size_t kWeights = 256;

// Fills the keys of the set, of which there must be as many as it has room for, and its sums.
// weights has room for a collating sequence; programWeights are those of the sorting program, or
// null. Each key must lie within longestRecord bytes.
Failure readKeyText(const char *text, uint32_t longestRecord, const uint8_t *programWeights,
                    uint8_t *weights, KeySet &set);

} // namespace zor::engine

#endif

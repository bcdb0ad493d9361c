// SORT-RETURN, and what is told when a program does not look at it.
#ifndef ZOR_SORT_SORT_RETURN_H
#define ZOR_SORT_SORT_RETURN_H

#include <cstdint>

#include "sort.h"

namespace zor {

// Stores a status; a failure issues message 26 unless the program looks at SORT-RETURN.
void setSortReturn(const SortControl &control, int32_t status, int32_t errorWord);

} // namespace zor

#endif

/* Branches that ALTER changes, in a segmented program: a table of the program has for each its
 * segment number, its current and its initial address. Segments from SEGMENT_INDEPENDENT up start
 * anew each time that control enters them. */
#ifndef ZOR_SEGMENTS_H
#define ZOR_SEGMENTS_H

#include "zor_abi.h"

enum { SEGMENT_INDEPENDENT = 50 };

ZOR_BEGIN_C

/* Puts the branches of a segment back to their initial addresses. current, initial and numbers have
 * count entries each. */
ZOR_EXPORT void _zorcRfshUncond(int32_t segment, int32_t count, uint32_t *current,
                                const uint32_t *initial, const int8_t *numbers);

/* Puts the branches of a segment back if it is an independent one and not oldSegment. */
ZOR_EXPORT void _zorcRfshCond(int32_t oldSegment, int32_t count, int32_t segment, uint32_t *current,
                              const uint32_t *initial, const int8_t *numbers);

/* Does so ahead of a GO TO DEPENDING ON, for the segment segments[index - 1]. An index below 1 does
 * nothing. */
ZOR_EXPORT void _zorcRfshGoDepend(const int8_t *segments, int32_t oldSegment, int32_t count,
                                  int32_t index, uint32_t *current, const uint32_t *initial,
                                  const int8_t *numbers);

ZOR_END_C

#endif

// The refresh of altered branches when control enters an independent segment.
#include "segments.h"

void _zorcRfshUncond(int32_t segment, int32_t count, uint32_t *current, const uint32_t *initial,
                     const int8_t *numbers) {
    for (int32_t i = 0; i < count; ++i) {
        if (numbers[i] == segment) {
            current[i] = initial[i];
        }
    }
}

void _zorcRfshCond(int32_t oldSegment, int32_t count, int32_t segment, uint32_t *current,
                   const uint32_t *initial, const int8_t *numbers) {
    if (segment >= SEGMENT_INDEPENDENT && segment != oldSegment) {
        _zorcRfshUncond(segment, count, current, initial, numbers);
    }
}

void _zorcRfshGoDepend(const int8_t *segments, int32_t oldSegment, int32_t count, int32_t index,
                       uint32_t *current, const uint32_t *initial, const int8_t *numbers) {
    if (index >= 1) {
        _zorcRfshCond(oldSegment, count, segments[index - 1], current, initial, numbers);
    }
}

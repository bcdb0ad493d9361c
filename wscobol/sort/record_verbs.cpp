// RELEASE and RETURN: records go into the thread's buffer and come out of it. No storage is asked
// for here, and no lock taken.
#include <cerrno>
#include <cstring>

#include "sort.h"
#include "sort/sort_return.h"
#include "sort/sort_state.h"

namespace zor {
namespace {

constexpr uint8_t kBlank = ' ';
constexpr char kSpillKind[] = "sortwki.";
constexpr uint32_t kMostVariable = uint32_t{SORT_BUFFER} - SORT_PREFIX;

bool isVariable(const RecordDesc &desc) {
    return desc.format == SORT_VARIABLE;
}

// Bytes that a record takes in the buffer; 0 for one that it cannot take.
uint32_t releasedSize(const RecordDesc &desc, uint32_t length) {
    if (isVariable(desc)) {
        return length > kMostVariable ? 0 : length + SORT_PREFIX;
    }
    return length > desc.length || desc.length > SORT_BUFFER ? 0 : desc.length;
}

bool spillBuffer(SortState &state) {
    if (state.spill.process == 0) {
        nameWorkFile(state.spill, state.folder, kSpillKind, state.threadId);
    }
    if (!append(state.spill, state.buffer, state.used)) {
        return false;
    }
    state.cursor = state.buffer;
    state.used = 0;
    return true;
}

bool releaseRecord(SortState &state, uint32_t length, const void *record) {
    const RecordDesc &desc = state.statement.recdesc;
    const uint32_t size = releasedSize(desc, length);
    if (size == 0 || (state.used + size > SORT_BUFFER && !spillBuffer(state))) {
        return false;
    }
    uint8_t *target = state.cursor;
    if (isVariable(desc)) {
        memcpy(target, &size, SORT_PREFIX);
        memcpy(target + SORT_PREFIX, record, length);
    } else {
        memcpy(target, record, length);
        if (length < size) {
            memset(target + length, kBlank, size - length);
        }
    }
    state.cursor += size;
    state.used += size;
    return true;
}

// ---- RETURN

uint32_t left(const SortState &state) {
    return state.filled - state.used;
}

bool hasFile(const SortState &state) {
    return state.output.process != 0;
}

// Bytes that the next record takes in the buffer; 0 when what is left holds no whole record.
uint32_t nextSize(const SortState &state) {
    const RecordDesc &desc = state.statement.outdesc;
    uint32_t size = desc.length;
    uint32_t least = 1;
    if (isVariable(desc)) {
        least = SORT_PREFIX;
        if (left(state) < SORT_PREFIX) {
            return 0;
        }
        memcpy(&size, state.cursor, SORT_PREFIX);
    }
    return size < least || size > left(state) ? 0 : size;
}

// Reads on in the work file, which goes when its end is read. False when that fails.
bool refill(SortState &state) {
    const ssize_t bytes = readAt(state.output, state.buffer, SORT_BUFFER, state.fileOffset);
    if (bytes < 0) {
        return false;
    }
    state.cursor = state.buffer;
    state.used = 0;
    state.filled = static_cast<uint32_t>(bytes);
    state.fileOffset += bytes;
    if (state.filled < SORT_BUFFER) {
        removeWorkFile(state.output);
    }
    return true;
}

// Records that the engine sorted cannot be had: that must not pass for the end of the data.
void loseRecords(SortState &state, int32_t reason) {
    state.errorWord = reason;
    giveUpStatement(state);
    setSortReturn(state.control, SORT_BAD, reason);
}

void takeRecord(SortState &state, uint32_t size, uint32_t *length, void *record) {
    const uint32_t prefix = isVariable(state.statement.outdesc) ? SORT_PREFIX : 0;
    *length = size - prefix;
    memcpy(record, state.cursor + prefix, size - prefix);
    state.cursor += size;
    state.used += size;
}

// False at the end of the data, and when it cannot be read.
bool returnRecord(SortState &state, uint32_t *length, void *record) {
    if (left(state) == 0) {
        if (hasFile(state) && !refill(state)) {
            loseRecords(state, errno);
            return false;
        }
        if (left(state) == 0) {
            return false;
        }
    }
    const uint32_t size = nextSize(state);
    if (size == 0) {
        loseRecords(state, EIO);
        return false;
    }
    takeRecord(state, size, length, record);
    // A record that the buffer holds in part is read as a whole by the next call.
    if (hasFile(state) && left(state) != 0 && nextSize(state) == 0) {
        state.fileOffset -= left(state);
        state.used = state.filled;
    }
    return true;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorRelease(uint32_t length, const void *record, int16_t *rc) {
    SortState *state = existingSortState();
    if (state == nullptr || state->stage != SortStage::releasing ||
        !releaseRecord(*state, length, record)) {
        *rc = SORT_BAD;
    }
}

void _zorReturn(uint32_t *length, void *record, int16_t *eof) {
    SortState *state = existingSortState();
    if (state == nullptr || state->stage != SortStage::returning ||
        !returnRecord(*state, length, record)) {
        *eof = 1;
    }
}

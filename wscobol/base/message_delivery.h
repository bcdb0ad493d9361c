// How a finished message leaves the library: to the message stream or to the host.
#ifndef ZOR_BASE_MESSAGE_DELIVERY_H
#define ZOR_BASE_MESSAGE_DELIVERY_H

#include <cstdint>
#include <cstdio>

#include "base/message_text.h"

namespace zor {

// Whether a message ends the run, in the terms of the host's message routine.
enum class RunEnd : int32_t { none = 0, severity = 1, errorCount = -1 };

// A synchronisation takes milliseconds on a disk, also when nothing is new.
enum class Flush : uint8_t {
    all,
    pending, // leaves alone the streams that hold nothing back
};

// Writes out what the program displayed, so that it stands ahead of the message, or what a host's
// message routine displayed.
void flushDisplayStreams(Flush which);

// Delivers a message; the caller holds the lock of stream.
void deliverMessage(const MessageText &message, FILE *stream, RunEnd end);

// For a jump to the epilogue of a run unit: whether it leaves a host's message routine, which was
// called under that lock. A run unit that the routine itself began ends within it.
bool leaveMessageRoutine(int32_t unitId);

} // namespace zor

#endif

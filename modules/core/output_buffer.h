// Collects what a program writes in sequence and hands it to the system in large pieces.
#ifndef ZOR_MODULES_CORE_OUTPUT_BUFFER_H
#define ZOR_MODULES_CORE_OUTPUT_BUFFER_H

#include <cstddef>
#include <cstdint>

#include "core/open_file.h"

namespace zor::modules {

class OutputBuffer {
public:
    // Takes records of at most `record` bytes. False without storage.
    bool acquire(const OpenFile &file, std::size_t record);
    void release();

    // Room for a record, to be followed by take(); null when the system did not take what is
    // waiting, which stays. Then failure() tells why.
    uint8_t *room(std::size_t bytes) {
        return bytes <= capacity_ - filled_ || writeOut() ? bytes_ + filled_ : nullptr;
    }

    // The bytes put into the room belong to the file. False when they had to reach the system, or
    // the disk, and did not: they are as if they had not been put.
    bool take(std::size_t bytes) {
        filled_ += bytes;
        return sync_ == Sync::Buffered || writeThrough(bytes);
    }

    bool writeOut();
    Outcome failure() const { return failureOf(error_); }

private:
    bool writeThrough(std::size_t bytes);

    uint8_t *bytes_;
    std::size_t capacity_;
    std::size_t filled_;
    int descriptor_;
    int error_;
    Sync sync_;
};

} // namespace zor::modules

#endif

// A stretch of a file in storage, through which records are read without a system call for each.
#ifndef ZOR_MODULES_CORE_READ_WINDOW_H
#define ZOR_MODULES_CORE_READ_WINDOW_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/open_file.h"

namespace zor::modules {

class ReadWindow {
public:
    static constexpr std::size_t kLarge = 128 * 1024; // for walks through a file

    // Serves requests of at most `request` bytes, reads about `stretch` at a time. False without
    // storage.
    bool acquire(const OpenFile &file, std::size_t request, std::size_t stretch = kLarge);
    void release();

    // What the file holds from an offset on: `bytes` of it, fewer at its end, and perhaps more. An
    // error shows as what could be read, and in error().
    std::span<uint8_t> at(int64_t offset, std::size_t bytes) {
        if (offset >= start_ && offset + static_cast<int64_t>(bytes) <= end_) {
            const auto skipped = static_cast<std::size_t>(offset - start_);
            return {bytes_ + skipped, static_cast<std::size_t>(end_ - offset)};
        }
        return move(offset, bytes);
    }

    // Everything in storage from an offset on; empty when that lies outside.
    std::span<uint8_t> held(int64_t offset) { return at(offset, 0); }

    // The next request leads to the file: others may have changed it.
    void forget() { start_ = end_ = 0; }

    // What was written to the file shows in the window, too.
    void patch(int64_t offset, std::span<const uint8_t> bytes);

    int error() const { return error_; }

private:
    std::span<uint8_t> move(int64_t offset, std::size_t bytes);
    void skipTo(int64_t offset);

    uint8_t *bytes_;
    std::size_t capacity_;
    int64_t start_; // offsets in the file of what is in storage
    int64_t end_;
    int64_t at_; // where a file that cannot be positioned is
    int descriptor_;
    int error_;
    bool positions_; // the file can be read from any offset; else just onward
};

} // namespace zor::modules

#endif

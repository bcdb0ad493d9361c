// A page as a printer would have it: lines written before and after advancing, logical pages of a
// LINAGE clause.
#ifndef ZOR_MODULES_LSQ_LINES_OUT_H
#define ZOR_MODULES_LSQ_LINES_OUT_H

#include <span>

#include "core/output_buffer.h"

namespace zor::modules {

class LinesOut {
public:
    // `open`: the file's last line has no end yet.
    bool acquire(const OpenFile &file, bool open);
    void release() { buffer_.release(); }

    // The text of a line, with what the statement says about advancing.
    Outcome write(FCB &fcb, std::span<const uint8_t> text);

    // Ends the last line and hands everything to the system.
    Outcome finish();

private:
    Outcome writeAdvancing(FCB &fcb, std::span<const uint8_t> text);

    OutputBuffer buffer_;
    bool open_;   // the line at the end has no line feed yet
    bool linage_; // the file has logical pages
    bool footing_;
    bool begun_; // the top of the first page is written
};

} // namespace zor::modules

#endif

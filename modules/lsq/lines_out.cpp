// A line written AFTER advancing stays open: the next one says how far it is from it. Anything else
// ends it first. No lines at all is a carriage return, which prints one line over another.
//
// A file with LINAGE has no form feeds: its pages are counted lines, top and bottom margin
// included.
#include "lsq/lines_out.h"

#include <algorithm>
#include <cstring>

namespace zor::modules {
namespace {

constexpr int32_t kMostLines = INT16_MAX; // of an advance, and of each part of a page

constexpr uint8_t kNone = 0;
constexpr uint8_t kReturn = '\r';

// The values of a LINAGE clause, as they stand in FCB.linage.
enum { kBody, kFootingAt, kTop, kBottom };

int32_t bounded(int32_t lines) {
    return std::clamp(lines, 0, kMostLines);
}

// Where the device stands on the page, moved on a copy: it becomes the file's when the line has
// been taken.
struct Page {
    int32_t linage[4];
    int32_t line;
    bool footing;
    bool ended = false; // END-OF-PAGE

    explicit Page(const FCB &fcb, bool hasFooting) : line(fcb.linecount), footing(hasFooting) {
        memcpy(linage, fcb.linage, sizeof linage);
    }

    // The line feeds that lead to the first line of the next page, whose values count from there.
    int32_t turn(const FCB &fcb) {
        const int32_t rest = bounded(bounded(linage[kBody]) - line) + 1 + bounded(linage[kBottom]);
        memcpy(linage, fcb.linageset, sizeof linage);
        line = 1;
        return rest + bounded(linage[kTop]);
    }

    int32_t advance(const FCB &fcb, int32_t lines) {
        if (line + lines > linage[kBody]) {
            ended = true;
            return turn(fcb);
        }
        line += lines;
        ended = ended || (footing && lines > 0 && line >= linage[kFootingAt]);
        return lines;
    }
};

// What goes around a line's text.
struct Feeds {
    int32_t before = 0;
    uint8_t controlBefore = 0;
    int32_t after = 0;
    uint8_t controlAfter = 0;
};

Feeds feedsOf(const FCB &fcb, bool open) {
    const int32_t lines = bounded(fcb.advance);
    switch (fcb.advancekind) {
    case FCB_BEFORE_LINES:
        return {.before = open, .after = lines, .controlAfter = lines == 0 ? kReturn : kNone};
    case FCB_AFTER_LINES:
        return {.before = lines, .controlBefore = lines == 0 && open ? kReturn : kNone};
    case FCB_BEFORE_PAGE:
        return {.before = open, .after = 1, .controlAfter = '\f'};
    case FCB_AFTER_PAGE:
        return {.before = open, .controlBefore = '\f'};
    default:
        return {.before = open, .after = 1};
    }
}

// On logical pages a form feed is the way to the next one.
void countLines(const FCB &fcb, Page &page, Feeds &feeds) {
    const auto count = [&](int32_t &lines, uint8_t &control) {
        if (control == '\f') {
            control = 0;
            lines = page.turn(fcb);
        } else if (lines > 0) {
            lines = page.advance(fcb, lines);
        }
    };
    count(feeds.before, feeds.controlBefore);
    count(feeds.after, feeds.controlAfter);
}

uint8_t *put(uint8_t *target, int32_t feeds, uint8_t control) {
    memset(target, '\n', static_cast<std::size_t>(feeds));
    target += feeds;
    if (control != 0) {
        *target++ = control;
    }
    return target;
}

} // namespace

bool LinesOut::acquire(const OpenFile &file, bool open) {
    constexpr std::size_t kMostFeeds = 4 * (kMostLines + 1) * 2;
    open_ = open;
    linage_ = has(file.description->linageflags, FILE_LINAGE);
    footing_ = has(file.description->linageflags, FILE_FOOTING);
    return buffer_.acquire(file, static_cast<std::size_t>(file.maxrec) + kMostFeeds);
}

Outcome LinesOut::write(FCB &fcb, std::span<const uint8_t> text) {
    if (open_ || linage_ || fcb.advancekind != FCB_ADVANCE_NONE) {
        return writeAdvancing(fcb, text);
    }
    uint8_t *target = buffer_.room(text.size() + 1);
    if (target == nullptr) {
        return buffer_.failure();
    }
    memcpy(target, text.data(), text.size());
    target[text.size()] = '\n';
    return buffer_.take(text.size() + 1) ? kDone : buffer_.failure();
}

Outcome LinesOut::writeAdvancing(FCB &fcb, std::span<const uint8_t> text) {
    Feeds feeds = feedsOf(fcb, open_);
    Page page(fcb, footing_);
    if (linage_) {
        countLines(fcb, page, feeds);
        if (!begun_) {
            feeds.before += bounded(fcb.linage[kTop]);
        }
    }
    uint8_t *start = buffer_.room(text.size() + static_cast<std::size_t>(feeds.before) +
                                  static_cast<std::size_t>(feeds.after) + 2);
    if (start == nullptr) {
        return buffer_.failure();
    }
    uint8_t *target = put(start, feeds.before, feeds.controlBefore);
    memcpy(target, text.data(), text.size());
    target = put(target + text.size(), feeds.after, feeds.controlAfter);
    if (!buffer_.take(static_cast<std::size_t>(target - start))) {
        return buffer_.failure();
    }
    open_ = feeds.after == 0;
    begun_ = true;
    if (linage_) {
        memcpy(fcb.linage, page.linage, sizeof fcb.linage);
        fcb.linecount = page.line;
        clear(fcb.flags, FCB_END_OF_PAGE);
        set(fcb.flags, page.ended ? FCB_END_OF_PAGE : 0);
    }
    return kDone;
}

Outcome LinesOut::finish() {
    if (open_) {
        uint8_t *target = buffer_.room(1);
        if (target == nullptr) {
            return buffer_.failure();
        }
        *target = '\n';
        if (!buffer_.take(1)) {
            return buffer_.failure();
        }
        open_ = false;
    }
    return buffer_.writeOut() ? kDone : buffer_.failure();
}

} // namespace zor::modules

// The message catalogue: texts by number and variant, and what it tells about the look of messages.
#ifndef ZOR_BASE_MESSAGE_CATALOG_H
#define ZOR_BASE_MESSAGE_CATALOG_H

#include <cstddef>
#include <cstdint>
#include <nl_types.h>

namespace zor {

inline constexpr const char *kCatalogName = "cobol2run.cat";

enum Severity : uint8_t { informational, warning, severe, critical };

// One entry: a severity digit, a character that is skipped, a printf format.
struct CatalogEntry {
    Severity severity;
    const char *format; // null: no such entry
};

// How the header of a message looks.
struct MessageLook {
    char prefix[4];
    char letters[5]; // in the order of Severity
};

// Opens the catalogue of the LC_MESSAGES locale, or of the nearest one that has it, and allocates
// the message buffer. Does nothing when that is done already.
void openCatalog();
void closeCatalog();

const MessageLook &messageLook();
// Breaking lines anywhere is right only where a character is a byte.
bool catalogIsSingleByte();

CatalogEntry parseEntry(const char *entry);

// The texts of the catalogue stay where they are while this lives, whatever other threads end. It
// spans no call that leaves the library.
class CatalogReading {
public:
    CatalogReading();
    ~CatalogReading();
    CatalogReading(const CatalogReading &) = delete;
    CatalogReading &operator=(const CatalogReading &) = delete;

    bool isOpen() const { return handle_ != nullptr; }
    // variant counts from 0.
    CatalogEntry findEntry(int32_t number, uint32_t variant) const;

private:
    nl_catd handle_; // null: there was no catalogue
};

// The format that tells of a message without room; keeps its text while the catalogue is closed.
const char *noRoomFormat();

// The message buffer for the time of one message. It is claimed with one atomic step and never
// waited for: whoever finds it taken (another thread, a signal handler or a host routine above the
// message that it interrupts) writes into storage of its own, so nothing is shared and nothing can
// lock up.
class BufferClaim {
public:
    BufferClaim();
    ~BufferClaim();
    BufferClaim(const BufferClaim &) = delete;
    BufferClaim &operator=(const BufferClaim &) = delete;

    char *text() const { return text_; } // null: taken, or there is none
    std::size_t size() const { return size_; }

private:
    char *text_;
    std::size_t size_;
};

bool bufferExists();

// For a jump or an end: the message that this thread leaves half-way needs the buffer no more.
void giveBackMessageBuffer();

} // namespace zor

#endif

// Finds and opens the message catalogue of the user's language, or of the nearest one that has it,
// and keeps the message buffer.
#include "base/message_catalog.h"

#include <atomic>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <nl_types.h>
#include <unistd.h>

#include "base/storage.h"

namespace zor {
namespace {

constexpr std::size_t kLeastBufferSize = 4096;
constexpr std::size_t kNoRoomTextSize = 81;
constexpr std::size_t kLocaleNameSize = 256;
constexpr std::size_t kEntryLead = 2; // severity digit and the character behind it
constexpr int kNoRoomSet = 993;
constexpr int kLookSet = 9999;
constexpr int kFirstMessage = 1;

constexpr MessageLook kDefaultLook = {"ZOR", "IWSC"};
constexpr const char *kDefaultNoRoomText =
    "1 Insufficient storage. Cannot find space for message %d.";

struct Catalog {
    std::atomic<nl_catd> handle = nullptr; // null: closed
    std::atomic<int> readers = 0;          // CatalogReading scopes
    MessageLook look = kDefaultLook;
    std::size_t bytesPerCharacter = 1;
    char noRoomText[kNoRoomTextSize] = "Insufficient storage. Cannot find space for message %d.";
    std::atomic<char *> buffer = nullptr;
    std::size_t bufferSize = 0;         // 0: never opened, or closed since
    std::atomic<pid_t> bufferOwner = 0; // the thread whose message is in the buffer
    char *claimed = nullptr;            // the buffer that it has
};

constinit Catalog catalog;

bool takeBuffer() {
    pid_t none = 0;
    return catalog.bufferOwner.compare_exchange_strong(none, gettid());
}

// A buffer that the catalogue dropped while a message was in it is freed here.
void giveBuffer() {
    if (catalog.claimed != catalog.buffer) {
        release(catalog.claimed);
    }
    catalog.claimed = nullptr;
    catalog.bufferOwner = 0;
}

// A locale category's name, which the next setlocale would overwrite.
struct LocaleName {
    explicit LocaleName(int category) {
        const char *name = setlocale(category, nullptr);
        known = name != nullptr && strlen(name) < kLocaleNameSize;
        strcpy(text, known ? name : "");
    }
    void restore(int category) const {
        if (known) {
            setlocale(category, text);
        }
    }
    char text[kLocaleNameSize];
    bool known;
};

nl_catd openNamed(const char *name) {
    const nl_catd handle = catopen(name, NL_CAT_LOCALE);
    return handle == reinterpret_cast<nl_catd>(-1) ? nullptr : handle;
}

nl_catd openForCurrentLocale() {
    return openNamed(kCatalogName);
}

// Expands an entry of NLSPATH; false when it asks for more than locale and name, or is too long.
bool expandEntry(const char *entry, std::size_t length, const char *locale, char *path) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const char literal[2] = {entry[i], '\0'};
        const char *part = literal;
        if (entry[i] == '%' && ++i < length) {
            part = entry[i] == 'L' ? locale : entry[i] == 'N' ? kCatalogName : nullptr;
        }
        if (part == nullptr || strlen(part) >= PATH_MAX - used) {
            return false;
        }
        used += strlen(strcpy(path + used, part));
    }
    path[used] = '\0';
    return used != 0;
}

// The catalogue of a locale that the system does not know.
nl_catd openAlongPath(const char *locale) {
    const char *entry = getenv("NLSPATH"); // as the start of the library left it
    while (entry != nullptr) {
        char path[PATH_MAX];
        const std::size_t length = strcspn(entry, ":");
        if (expandEntry(entry, length, locale, path)) {
            const nl_catd handle = openNamed(path);
            if (handle != nullptr) {
                return handle;
            }
        }
        entry = entry[length] == ':' ? entry + length + 1 : nullptr;
    }
    return nullptr;
}

// A system that has de_DE.UTF-8 alone must still find the catalogue of de_DE.
nl_catd openFor(const char *locale) {
    return setlocale(LC_MESSAGES, locale) != nullptr ? openForCurrentLocale()
                                                     : openAlongPath(locale);
}

// Tries ever more general names: de_DE.UTF-8@euro, de_DE.UTF-8, de_DE, de, and then the locales
// whose catalogue every installation has.
nl_catd openNearest(LocaleName locale) {
    for (const char separator : {'@', '.', '_'}) {
        char *part = strchr(locale.text, separator);
        if (part == nullptr) {
            continue;
        }
        *part = '\0';
        const nl_catd handle = openFor(locale.text);
        if (handle != nullptr) {
            return handle;
        }
    }
    for (const char *fallback : {"en_US", "POSIX", "C"}) {
        const nl_catd handle = openFor(fallback);
        if (handle != nullptr) {
            return handle;
        }
    }
    return nullptr;
}

// Characters are measured in the locale of the messages, which need not be that of LC_CTYPE.
void openHandle() {
    const LocaleName messages(LC_MESSAGES);
    const LocaleName characters(LC_CTYPE);
    setlocale(LC_CTYPE, messages.text);
    catalog.bytesPerCharacter = MB_CUR_MAX;
    nl_catd handle = openForCurrentLocale();
    if (handle == nullptr) {
        handle = openNearest(messages);
        messages.restore(LC_MESSAGES);
    }
    catalog.handle = handle;
    characters.restore(LC_CTYPE);
}

const char *textBehindLead(const char *entry) {
    return strlen(entry) < kEntryLead ? "" : entry + kEntryLead;
}

const char *skipBlanks(const char *text) {
    return text + strspn(text, " ");
}

// Copies a word of fixed length and gives what follows it and its blanks; null when it is not
// whole.
const char *readWord(const char *text, char *word, std::size_t length) {
    if (text == nullptr || strlen(text) < length) {
        return nullptr;
    }
    memcpy(word, text, length);
    return skipBlanks(text + length);
}

// "2 ZOR IWSC 8192": what is missing stays at its default. Gives the size of the message buffer.
std::size_t readLook() {
    const char *text = textBehindLead(catgets(catalog.handle, kLookSet, kFirstMessage, ""));
    text = readWord(skipBlanks(text), catalog.look.prefix, sizeof catalog.look.prefix - 1);
    text = readWord(text, catalog.look.letters, sizeof catalog.look.letters - 1);
    const unsigned long size = text == nullptr ? 0 : strtoul(text, nullptr, 0);
    return size > kLeastBufferSize ? size : kLeastBufferSize;
}

} // namespace

void openCatalog() {
    if (catalog.handle != nullptr || catalog.bufferSize != 0) {
        return;
    }
    catalog.look = kDefaultLook;
    openHandle();
    const nl_catd handle = catalog.handle;
    if (handle == nullptr) {
        return;
    }
    const char *noRoom = catgets(handle, kNoRoomSet, kFirstMessage, kDefaultNoRoomText);
    snprintf(catalog.noRoomText, sizeof catalog.noRoomText, "%s", textBehindLead(noRoom));
    catalog.bufferSize = readLook();
    catalog.buffer = static_cast<char *>(allocate(catalog.bufferSize));
    if (catalog.buffer == nullptr) {
        fputs("Insufficient storage, Cannot allocate message buffer.\n", stderr);
        closeCatalog();
    }
}

// A thread that reads a text at this moment goes on reading it: the catalogue then stays mapped for
// the life of the process.
void closeCatalog() {
    const nl_catd handle = catalog.handle.exchange(nullptr);
    if (handle != nullptr && catalog.readers == 0) {
        catclose(handle);
    }
    char *buffer = catalog.buffer.exchange(nullptr);
    if (takeBuffer()) {
        catalog.claimed = buffer;
        giveBuffer();
    }
    catalog.bufferSize = 0;
}

const MessageLook &messageLook() {
    return catalog.look;
}
bool catalogIsSingleByte() {
    return catalog.bytesPerCharacter == 1;
}
const char *noRoomFormat() {
    return catalog.noRoomText;
}
bool bufferExists() {
    return catalog.buffer != nullptr;
}

CatalogEntry parseEntry(const char *entry) {
    const int digit = *entry - '0';
    const bool known = digit >= informational && digit <= critical;
    return {known ? static_cast<Severity>(digit) : critical, textBehindLead(entry)};
}

CatalogReading::CatalogReading() {
    ++catalog.readers;
    handle_ = catalog.handle;
}

CatalogReading::~CatalogReading() {
    --catalog.readers;
}

CatalogEntry CatalogReading::findEntry(int32_t number, uint32_t variant) const {
    if (handle_ == nullptr) {
        return {critical, nullptr};
    }
    const char *entry = catgets(handle_, number, static_cast<int>(variant + 1), nullptr);
    return entry == nullptr ? CatalogEntry{critical, nullptr} : parseEntry(entry);
}

void giveBackMessageBuffer() {
    const pid_t owner = catalog.bufferOwner;
    if (owner != 0 && owner == gettid()) {
        giveBuffer();
    }
}

BufferClaim::BufferClaim() : text_(nullptr), size_(0) {
    if (catalog.buffer == nullptr || !takeBuffer()) {
        return;
    }
    text_ = catalog.claimed = catalog.buffer;
    size_ = catalog.bufferSize;
    if (text_ == nullptr) {
        giveBuffer();
    }
}

BufferClaim::~BufferClaim() {
    if (text_ != nullptr) {
        giveBuffer();
    }
}

} // namespace zor

// Changes that a program was told are done, while the transaction that they belong to is still
// open. They stand in a file that is mapped into storage, so noting one is a copy, and the system
// has it even when the process is killed right behind. OPEN makes up for what a killed process
// left.
#ifndef ZOR_MODULES_UQE_REDO_LOG_H
#define ZOR_MODULES_UQE_REDO_LOG_H

#include <span>

#include "uqe/file_head.h"

namespace zor::modules {

enum class Change : uint32_t { Insert = 1, Replace, Erase };

struct RedoEntry {
    Change change;
    uint32_t length; // bytes of the record behind the entry
    int64_t number;  // of the record; 0 where its key tells
};

struct RedoHead;

class RedoLog {
public:
    // Removes the file, if it is a log and no other file that happens to have its name.
    static void remove(const char *path);

    // Makes the file for changes behind number `base`. False when it cannot be had.
    bool create(const char *path, const uint8_t (&id)[kFileIdBytes], int64_t base);
    // Maps what is there: false when there is none, or it belongs to another file or state.
    bool open(const char *path, const uint8_t (&id)[kFileIdBytes], int64_t applied);
    void close();

    bool isOpen() const { return head_ != nullptr; }
    bool hasRoom(std::size_t record) const;
    // There is room.
    void note(const RedoEntry &entry, std::span<const uint8_t> record);
    // The transaction is over: everything up to number `base` stands in the database.
    void begin(int64_t base);
    int64_t lastNumber() const;
    bool hasEntries() const;

    // Calls body(number, entry, record) for each change, while it gives true.
    template <class Body> bool forEach(Body body) const {
        std::size_t at = 0;
        int64_t number = base();
        while (const RedoEntry *entry = entryAt(at)) {
            if (!body(++number, *entry, recordAt(at))) {
                return false;
            }
            at = behind(at);
        }
        return true;
    }

private:
    int64_t base() const;
    const RedoEntry *entryAt(std::size_t at) const;
    std::span<const uint8_t> recordAt(std::size_t at) const;
    std::size_t behind(std::size_t at) const;
    uint8_t *entries() const;

    RedoHead *head_;
    std::size_t bytes_; // of the mapping
};

} // namespace zor::modules

#endif

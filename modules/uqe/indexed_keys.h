// The keys of an indexed file: bytes at fixed places of its records, compared as bytes.
#ifndef ZOR_MODULES_UQE_INDEXED_KEYS_H
#define ZOR_MODULES_UQE_INDEXED_KEYS_H

#include <span>

#include "fcb.h"

namespace zor::modules {

inline constexpr std::size_t kLongestKey = 1024;

// The table of the description, the prime key first; empty when it makes no sense.
std::span<const FileKey> keysOf(const FileDescription &description);

// The key's bytes in a record, blanks for those behind its end.
struct KeyValue {
    uint8_t bytes[kLongestKey + 1];
    std::size_t length = 0;

    KeyValue() {} // the bytes stay as they are
    KeyValue(const KeyValue &other) { set(other.value()); }
    KeyValue &operator=(const KeyValue &other) {
        if (this != &other) {
            set(other.value());
        }
        return *this;
    }
    KeyValue(const FileKey &key, std::span<const uint8_t> record) { set(key, record); }

    void set(std::span<const uint8_t> value);
    void set(const FileKey &key, std::span<const uint8_t> record);
    std::span<const uint8_t> value() const { return {bytes, length}; }
    bool operator==(const KeyValue &other) const;
    bool beginsWith(const KeyValue &prefix) const;

    // Becomes the least value above all that begin with it; false when there is none.
    bool makeSuccessor();
    // Becomes a value above all keys.
    void makeHighest();
};

} // namespace zor::modules

#endif

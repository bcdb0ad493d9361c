// Keys are compared as bytes: a shorter one that another begins with comes ahead of it.
#include "uqe/indexed_keys.h"

#include <algorithm>
#include <cstring>

namespace zor::modules {

std::span<const FileKey> keysOf(const FileDescription &description) {
    if (description.nkeys < 1 || description.keyoffset <= 0) {
        return {};
    }
    const auto *table = reinterpret_cast<const FileKey *>(
        reinterpret_cast<const uint8_t *>(&description) + description.keyoffset);
    const std::span<const FileKey> keys(table, static_cast<std::size_t>(description.nkeys));
    const auto isSound = [&](const FileKey &key) {
        return key.length > 0 && key.length <= kLongestKey && key.position >= 0 &&
               key.position <= description.maxrec - key.length;
    };
    const bool sound =
        std::ranges::all_of(keys, isSound) && (keys[0].attribute & FILE_KEY_DUPLICATES) == 0;
    return sound ? keys : std::span<const FileKey>{};
}

void KeyValue::set(const FileKey &key, std::span<const uint8_t> record) {
    const auto start = static_cast<std::size_t>(key.position);
    if (start + key.length <= record.size()) {
        set(record.subspan(start, key.length));
        return;
    }
    const std::size_t there = record.size() - std::min(start, record.size());
    length = key.length;
    memset(bytes, ' ', length);
    if (there > 0) {
        memcpy(bytes, record.data() + start, there);
    }
}

void KeyValue::set(std::span<const uint8_t> value) {
    length = std::min(value.size(), sizeof bytes);
    memcpy(bytes, value.data(), length);
}

bool KeyValue::operator==(const KeyValue &other) const {
    return length == other.length && beginsWith(other);
}

bool KeyValue::beginsWith(const KeyValue &prefix) const {
    return length >= prefix.length && memcmp(bytes, prefix.bytes, prefix.length) == 0;
}

bool KeyValue::makeSuccessor() {
    while (length > 0 && bytes[length - 1] == UINT8_MAX) {
        length--;
    }
    if (length == 0) {
        return false;
    }
    bytes[length - 1]++;
    return true;
}

void KeyValue::makeHighest() {
    length = sizeof bytes;
    memset(bytes, UINT8_MAX, length);
}

} // namespace zor::modules

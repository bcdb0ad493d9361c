// How records lie in buffers and work files.
#ifndef ZOR_ENGINE_RECORDS_H
#define ZOR_ENGINE_RECORDS_H

#include <cstdint>
#include <cstring>

#include "sort.h"

namespace zor::engine {

constexpr uint8_t kBlank = ' ';

struct Record {
    const uint8_t *data;
    uint32_t length; // bytes
};

// Fixed records lie one behind the other; a variable one stands behind its length and that of the
// prefix.
struct RecordForm {
    bool variable;
    uint32_t length; // bytes of each fixed record, or of the longest variable one

    uint32_t head() const { return variable ? SORT_PREFIX : 0; }
    uint32_t storedSize(uint32_t recordLength) const {
        return variable ? SORT_PREFIX + recordLength : length;
    }
    uint32_t storedSizeAt(const uint8_t *stored) const {
        if (!variable) {
            return length;
        }
        uint32_t size;
        memcpy(&size, stored, sizeof size);
        return size;
    }
    Record recordAt(const uint8_t *stored) const {
        return {stored + head(), storedSizeAt(stored) - head()};
    }
    bool operator==(const RecordForm &other) const {
        return variable == other.variable && (variable || length == other.length);
    }
};

// Lays a record of at most the form's length down; a fixed one is filled with blanks.
inline void storeRecord(const RecordForm &form, Record record, uint8_t *target) {
    if (form.variable) {
        const uint32_t size = form.storedSize(record.length);
        memcpy(target, &size, sizeof size);
        memcpy(target + sizeof size, record.data, record.length);
        return;
    }
    memcpy(target, record.data, record.length);
    if (record.length < form.length) {
        memset(target + record.length, kBlank, form.length - record.length);
    }
}

} // namespace zor::engine

#endif

// The table by which the bytes of an item are translated, while it changes nothing yet.
#ifndef ZOR_TEXT_INSPECT_TRANSLATION_H
#define ZOR_TEXT_INSPECT_TRANSLATION_H

#include "national/byte_table.h"

namespace zor::inspect {

inline constexpr ByteTable kSameBytes = [] {
    ByteTable table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = static_cast<uint8_t>(byte);
    }
    return table;
}();

} // namespace zor::inspect

#endif

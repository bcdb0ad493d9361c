// Bytes of national items.
#ifndef ZOR_TESTS_TEXT_WIDE_H
#define ZOR_TESTS_TEXT_WIDE_H

#include <string>

inline std::string wide(const std::u16string &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)};
}

#endif

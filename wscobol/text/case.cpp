// UPPER-CASE and LOWER-CASE by the tables of the C library's current locale.
#include <array>
#include <cctype>
#include <clocale>
#include <cstddef>

#include "text_functions.h"

namespace zor {
namespace {

// Where no locale has a name: the letters of ASCII alone. Indexed like the tables of the C library.
template <char first, char last, int distance>
constexpr std::array<int32_t, 256> kAsciiCase = [] {
    std::array<int32_t, 256> table{};
    for (int byte = 0; byte < 256; ++byte) {
        table[static_cast<std::size_t>(byte)] =
            byte >= first && byte <= last ? byte + distance : byte;
    }
    return table;
}();

constexpr const auto &kAsciiUpper = kAsciiCase<'a', 'z', 'A' - 'a'>;
constexpr const auto &kAsciiLower = kAsciiCase<'A', 'Z', 'a' - 'A'>;

void fold(int32_t length, const void *source, void *target, const int32_t *table) {
    const auto *const from = static_cast<const uint8_t *>(source);
    auto *const to = static_cast<uint8_t *>(target);
    for (int32_t i = 0; i < length; ++i) {
        to[i] = static_cast<uint8_t>(table[from[i]]);
    }
}

bool hasLocale() {
    return setlocale(LC_CTYPE, nullptr) != nullptr;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorToUpper(int32_t length, const void *source, void *target) {
    fold(length, source, target, hasLocale() ? *__ctype_toupper_loc() : kAsciiUpper.data());
}

void _zorToLower(int32_t length, const void *source, void *target) {
    fold(length, source, target, hasLocale() ? *__ctype_tolower_loc() : kAsciiLower.data());
}

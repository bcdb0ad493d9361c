// TRIM: a text without the characters of a set at its ends.
#include <array>
#include <cstddef>
#include <cstring>
#include <span>

#include "text_functions.h"

namespace zor {
namespace {

enum End : unsigned { left = 1, right = 2 };

// The characters of an item, which may lie at any address.
template <class Unit> struct Units {
    const char *start;
    std::size_t count;

    static Units of(const void *address, int32_t bytes) {
        return {static_cast<const char *>(address),
                bytes < 1 ? 0 : static_cast<std::size_t>(bytes) / sizeof(Unit)};
    }

    Unit operator[](std::size_t index) const {
        Unit unit;
        memcpy(&unit, start + index * sizeof unit, sizeof unit);
        return unit;
    }

    bool hold(Unit unit) const {
        for (std::size_t i = 0; i < count; ++i) {
            if ((*this)[i] == unit) {
                return true;
            }
        }
        return false;
    }
};

template <class Unit>
int32_t trimUnits(Units<Unit> text, Units<Unit> set, void *target, unsigned ends) {
    std::size_t from = 0;
    std::size_t to = text.count;
    while ((ends & End::left) != 0 && from < to && set.hold(text[from])) {
        ++from;
    }
    while ((ends & End::right) != 0 && from < to && set.hold(text[to - 1])) {
        --to;
    }
    const std::size_t bytes = (to - from) * sizeof(Unit);
    if (bytes != 0) {
        memmove(target, text.start + from * sizeof(Unit), bytes);
    }
    return static_cast<int32_t>(bytes);
}

template <class Unit, std::size_t count>
int32_t trimOr(const Unit (&blanks)[count], int32_t sourceLength, const void *source,
               int32_t setLength, const void *set, void *target, unsigned ends) {
    const bool given = set != nullptr && setLength > 0;
    return trimUnits(Units<Unit>::of(source, sourceLength),
                     given ? Units<Unit>::of(set, setLength)
                           : Units<Unit>{reinterpret_cast<const char *>(blanks), count},
                     target, ends);
}

int32_t trim(int32_t sourceLength, const void *source, int32_t setLength, const void *set,
             void *target, int32_t mode, unsigned ends) {
    static constexpr char kBlank[] = {' '};
    static constexpr char16_t kNationalBlanks[] = {u' ', u'\u3000'};
    static constexpr char16_t kNationalBlank[] = {u' '};
    switch (mode) {
    case TRIM_NATIONAL:
        return trimOr(kNationalBlank, sourceLength, source, setLength, set, target, ends);
    case TRIM_DBCS_AS_NATIONAL:
        return trimOr(kNationalBlanks, sourceLength, source, setLength, set, target, ends);
    case TRIM_BYTES:
    case TRIM_BYTES_4:
        break;
    default:
        ends = 0;
    }
    return trimOr(kBlank, sourceLength, source, setLength, set, target, ends);
}

} // namespace
} // namespace zor

int32_t _zor_triml(int32_t sourceLength, const void *source, int32_t setLength, const void *set,
                   void *target, int32_t mode) {
    return zor::trim(sourceLength, source, setLength, set, target, mode, zor::End::left);
}

int32_t _zor_trimr(int32_t sourceLength, const void *source, int32_t setLength, const void *set,
                   void *target, int32_t mode) {
    return zor::trim(sourceLength, source, setLength, set, target, mode, zor::End::right);
}

int32_t _zor_trim(int32_t sourceLength, const void *source, int32_t setLength, const void *set,
                  void *target, int32_t mode) {
    return zor::trim(sourceLength, source, setLength, set, target, mode,
                     zor::End::left | zor::End::right);
}

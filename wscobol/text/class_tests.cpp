// Class conditions of alphanumeric, numeric and national items.
#include "class_tests.h"

#include <array>
#include <cstring>

#include "base/bits.h"
#include "decimal/digits.h"
#include "decimal/options.h"
#include "decimal/validate.h"

namespace zor {
namespace {

constexpr uint8_t kUpper = 1;
constexpr uint8_t kLower = 2;
constexpr uint8_t kDigit = 4;
constexpr uint8_t kBlank = 8;

constexpr std::array<uint8_t, 256> kClasses = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        const bool upper = byte >= 'A' && byte <= 'Z';
        const bool lower = byte >= 'a' && byte <= 'z';
        const bool digit = byte >= '0' && byte <= '9';
        table[byte] = static_cast<uint8_t>((upper ? kUpper : 0) | (lower ? kLower : 0) |
                                           (digit ? kDigit : 0) | (byte == ' ' ? kBlank : 0));
    }
    return table;
}();

int32_t allBytesAre(uint8_t classes, const void *data, int32_t length) {
    const auto *const bytes = static_cast<const uint8_t *>(data);
    for (int32_t i = 0; i < length; ++i) {
        if ((kClasses[bytes[i]] & classes) == 0) {
            return 0;
        }
    }
    return 1;
}

// ---- national items

char16_t unitAt(const void *data, int32_t index) {
    char16_t unit;
    memcpy(&unit, static_cast<const char *>(data) + index * static_cast<int32_t>(sizeof unit),
           sizeof unit);
    return unit;
}

int32_t unitsOf(int32_t length) {
    return length / static_cast<int32_t>(sizeof(char16_t));
}

int32_t allUnitsAre(uint8_t classes, const void *data, int32_t from, int32_t to) {
    for (int32_t i = from; i < to; ++i) {
        const char16_t unit = unitAt(data, i);
        if (unit >= kClasses.size() || (kClasses[unit] & classes) == 0) {
            return 0;
        }
    }
    return 1;
}

// ---- zoned items

bool isSign(char16_t c) {
    return c == u'+' || c == u'-';
}

// Whether a byte may carry the sign, as far as that is more than the validation of the item tells.
bool carriesSign(uint8_t byte, bool testZone) {
    if ((decimal::loadBcdOptions() & decimal::EBCDIC_OVERPUNCH) != 0) {
        return decimal::zonedCarriesSign(byte); // in a zone that stands for 0x3 or 0x7
    }
    const uint8_t zone = byte & 0xF0U;
    return decimal::isDigit(byte & 0x0FU) &&
           (!testZone || zone == decimal::kZone || zone == decimal::kNegativeZone);
}

bool hasPlainZone(uint8_t byte) {
    return (byte & 0xF0U) == decimal::kZone;
}

bool areZonedDigits(const uint8_t *bytes, int32_t length) {
    return length < 1 || decimal::validateZoned(bytes, length, decimal::Strictness::strict) == 0;
}

bool isZoned(uint32_t flags, const uint8_t *bytes, int32_t length) {
    const uint8_t first = bytes[0];
    const uint8_t last = bytes[length - 1];
    const bool testZone = has(flags, CLASS_TEST_SIGN);
    switch (flags & CLASS_FORM_MASK) {
    case CLASS_UNSIGNED:
        return hasPlainZone(first) && hasPlainZone(last) && areZonedDigits(bytes, length);
    case CLASS_LEADING_SIGN:
        return carriesSign(first, testZone) && areZonedDigits(bytes, length);
    case CLASS_TRAILING_SIGN:
        return carriesSign(last, testZone) && areZonedDigits(bytes, length);
    case CLASS_LEADING_SEPARATE:
        return isSign(first) && areZonedDigits(bytes + 1, length - 1);
    case CLASS_TRAILING_SEPARATE:
        return isSign(last) && areZonedDigits(bytes, length - 1);
    default:
        return areZonedDigits(bytes, length);
    }
}

} // namespace
} // namespace zor

using namespace zor;

int32_t _zorcClasAlpha(const void *data, int32_t length) {
    return allBytesAre(kUpper | kLower | kBlank, data, length);
}

int32_t _zorcClasAlphaUpper(const void *data, int32_t length) {
    return allBytesAre(kUpper | kBlank, data, length);
}

int32_t _zorcClasAlphaLower(const void *data, int32_t length) {
    return allBytesAre(kLower | kBlank, data, length);
}

int32_t _zorcClasUserDef(const void *data, int32_t length, const uint8_t *classTable) {
    const auto *const bytes = static_cast<const uint8_t *>(data);
    for (int32_t i = 0; i < length; ++i) {
        if (classTable[bytes[i]] != 0) {
            return 0;
        }
    }
    return 1;
}

int32_t _zorcClasPackedDec(uint32_t flags, const void *data, int32_t length) {
    if (length < 1) {
        return 1;
    }
    const auto *const bytes = static_cast<const uint8_t *>(data);
    if (decimal::validatePacked(bytes, 2 * length - 1, decimal::Strictness::strict) != 0) {
        return 0;
    }
    const unsigned sign = bytes[length - 1] & 0x0FU;
    return !has(flags, CLASS_TEST_SIGN) || sign == 0xC || sign == 0xD || sign == 0xF ? 1 : 0;
}

int32_t _zorcClasZonedDec(uint32_t flags, const void *data, int32_t length) {
    return length < 1 || isZoned(flags, static_cast<const uint8_t *>(data), length) ? 1 : 0;
}

int32_t _zoruClasNumeric(const void *data, int32_t length) {
    return allUnitsAre(kDigit, data, 0, unitsOf(length));
}

int32_t _zoruClasAlpha(const void *data, int32_t length) {
    return allUnitsAre(kUpper | kLower | kBlank, data, 0, unitsOf(length));
}

int32_t _zoruClasUpper(const void *data, int32_t length) {
    return allUnitsAre(kUpper | kBlank, data, 0, unitsOf(length));
}

int32_t _zoruClasLower(const void *data, int32_t length) {
    return allUnitsAre(kLower | kBlank, data, 0, unitsOf(length));
}

int32_t _zoruSClasNumeric(uint32_t flags, const void *data, int32_t length) {
    const uint32_t form = flags & CLASS_FORM_MASK;
    const int32_t units = unitsOf(length);
    if (units < 1) {
        return 1;
    }
    const bool leads = form == CLASS_LEADING_SEPARATE;
    const bool trails = form == CLASS_TRAILING_SEPARATE;
    const int32_t from = leads ? 1 : 0;
    const int32_t to = trails ? units - 1 : units;
    const char16_t sign = unitAt(data, leads ? 0 : units - 1);
    if (((leads || trails) && !isSign(sign)) || allUnitsAre(kDigit, data, from, to) == 0) {
        return 0;
    }
    bool isZero = true;
    for (int32_t i = from; i < to; ++i) {
        isZero = isZero && unitAt(data, i) == u'0';
    }
    return !has(flags, CLASS_TEST_SIGN) || sign == u'+' || !isZero ? 1 : 0;
}

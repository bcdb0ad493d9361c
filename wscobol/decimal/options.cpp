// The variables of the environment, and which switches each sets and clears.
#include "decimal/options.h"

#include <cstdlib>

#include "base/environment.h"

namespace zor::decimal {

uint32_t bcdOptions = BCD_OPTIONS_UNSET;

namespace {

constexpr uint32_t kDirectBits = 0xFF; // the bits that COBOL_BCD_NOVALIDATE may name

// A later row overrules an earlier one.
struct Switch {
    const char *variable;
    uint32_t clears;
    uint32_t sets;
};

constexpr Switch kSwitches[] = {
    {"COBOL_BCD_SAFE", NOVALIDATE_ARITH | KEEP_NEGATIVE_ZERO | KEEP_UNSIGNED_TAIL,
     REZONE_DIGITS | VALIDATE_MOVES | VALIDATE_COMPARES},
    {"COBOL_BCD_FAST",
     NOVALIDATE_ARITH | KEEP_NEGATIVE_ZERO | REZONE_DIGITS | KEEP_UNSIGNED_TAIL | VALIDATE_MOVES |
         VALIDATE_COMPARES,
     KEEP_UNSIGNED_TAIL},
    {"COBOL_BCD_DEBUG", 0, TRACE},
    {"COBOL_BCD_EBCDIC", 0, EBCDIC_OVERPUNCH},
};

} // namespace

uint32_t readBcdOptions() {
    uint32_t options = 0;
    if (const char *mask = settingOf("COBOL_BCD_NOVALIDATE")) {
        options = strtoul(mask, nullptr, 0) & kDirectBits;
    }
    for (const Switch &item : kSwitches) {
        if (settingOf(item.variable) != nullptr) {
            options = (options & ~item.clears) | item.sets;
        }
    }
    __atomic_store_n(&bcdOptions, options, __ATOMIC_RELAXED);
    return options;
}

} // namespace zor::decimal

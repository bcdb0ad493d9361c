// The switches of the decimal family: one word for the process, read from the environment once.
#ifndef ZOR_DECIMAL_OPTIONS_H
#define ZOR_DECIMAL_OPTIONS_H

#include <cstdint>

namespace zor::decimal {

enum BcdOption : uint32_t {
    NOVALIDATE_ARITH = 0x001, // arithmetic, NEG, ABS_Pckd and conversions from packed take any data
    KEEP_NEGATIVE_ZERO = 0x002, // copies, shifts, NEG and conversions keep a negative zero
    REZONE_DIGITS = 0x004,      // conversions from or to unsigned rewrite every zone of the target
    KEEP_UNSIGNED_TAIL = 0x008, // unsigned to unsigned keeps the last byte; ahead of REZONE_DIGITS
    VALIDATE_MOVES = 0x010,     // copies and conversions from zoned are validated
    VALIDATE_COMPARES = 0x040,  // operands of comparisons are validated
    EBCDIC_OVERPUNCH = 0x080,   // overpunch letters are written, and read by zoned to packed
    TRACE = 0x100,              // calls are traced on stderr
    BCD_OPTIONS_UNSET = 0xFF00, // the environment has not been read; holds the bit of TRACE too
};

// Only read through loadBcdOptions. Hidden here too, which spares each call the way through the
// global offset table.
extern __attribute__((visibility("hidden"))) uint32_t bcdOptions;

// Reads the environment and stores the word, assembled before the store, so that a second thread
// finds either no word or the whole one. Gives the word.
uint32_t readBcdOptions();

// The word as it is, perhaps not read from the environment yet; for use with allOff.
inline uint32_t peekBcdOptions() {
    return __atomic_load_n(&bcdOptions, __ATOMIC_RELAXED);
}

inline uint32_t loadBcdOptions() {
    const uint32_t options = peekBcdOptions();
    return __builtin_expect(options == BCD_OPTIONS_UNSET, 0) ? readBcdOptions() : options;
}

// Whether none of the switches is set, TRACE to be one of them; then the environment has been read.
// With peekBcdOptions it is the first test of a call, at the cost of one load and one test.
template <uint32_t switches> inline bool allOff(uint32_t options) {
    static_assert((switches & TRACE) != 0 && (BCD_OPTIONS_UNSET & TRACE) != 0);
    return __builtin_expect((options & switches) == 0, 1);
}

// Whether there is a trace, or perhaps one: the environment may not have been read.
inline bool mayTrace() {
    return !allOff<TRACE>(peekBcdOptions());
}

} // namespace zor::decimal

#endif

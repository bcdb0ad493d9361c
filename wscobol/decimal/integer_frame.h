// The conversions between binary integers and packed or trailing-sign zoned items, by name, and the
// functions that know every case of each: trace, validation, items of any length.
#ifndef ZOR_DECIMAL_INTEGER_FRAME_H
#define ZOR_DECIMAL_INTEGER_FRAME_H

#include <cstdint>

// name, result, printed as, header, result format
#define ZOR_PACKED_TO_INTEGER(X)                                                                   \
    X(Pckd_To_Int1, int32_t, int, "packed to int8...\n", "out: %hhd\n")                            \
    X(Pckd_To_Uns1, uint32_t, unsigned, "packed to uint8...\n", "out: %hhu\n")                     \
    X(Pckd_To_Int2, int32_t, int, "packed to int16...\n", "out: %hd\n")                            \
    X(Pckd_To_Uns2, uint32_t, unsigned, "packed to uint16...\n", "out: %hu\n")                     \
    X(Pckd_To_Int4, int32_t, int, "packed to int32...\n", "out: %d\n")                             \
    X(Pckd_To_Uns4, uint32_t, unsigned, "packed to uint32...\n", "out: %u\n")                      \
    X(Pckd_To_Int8, int64_t, int64_t, "packed to int64...\n", "out: %lld\n")                       \
    X(Pckd_To_Uns8, uint64_t, uint64_t, "packed to uint64...\n", "out: %llu\n")
#define ZOR_ZONED_TO_INTEGER(X)                                                                    \
    X(Znd_To_Int4, int32_t, int64_t, "zoned to int32...\n", "out: %lld\n")                         \
    X(Znd_To_UInt4, uint32_t, int64_t, "zoned to uint32...\n", "out: %lld\n")                      \
    X(Znd_To_Int8, int64_t, int64_t, "zoned to int64...\n", "out: %lld\n")                         \
    X(Znd_To_UInt8, uint64_t, int64_t, "zoned to uint64...\n", "out: %lld\n")

// name, value, printed as, header, value format
#define ZOR_INTEGER_TO_PACKED(X)                                                                   \
    X(Int1_To_Pckd, int8_t, int, "int8 to packed...\n", "in:  %hhd\n")                             \
    X(Uns1_To_Pckd, uint8_t, unsigned, "uint8 to packed...\n", "in:  %hhu\n")                      \
    X(Int2_To_Pckd, int16_t, int, "int16 to packed...\n", "in:  %hd\n")                            \
    X(Uns2_To_Pckd, uint16_t, unsigned, "uint16 to packed...\n", "in:  %hu\n")                     \
    X(Int4_To_Pckd, int32_t, int, "int32 to packed...\n", "in:  %d\n")                             \
    X(Uns4_To_Pckd, uint32_t, unsigned, "uint32 to packed...\n", "in:  %u\n")                      \
    X(Int8_To_Pckd, int64_t, int64_t, "int64 to packed...\n", "in:  %lld\n")                       \
    X(Uns8_To_Pckd, uint64_t, uint64_t, "uint64 to packed...\n", "in:  %llu\n")
#define ZOR_INTEGER_TO_ZONED(X)                                                                    \
    X(Int4_To_Znd, int32_t, int64_t, "int32 to zoned...\n", "in:  %lld\n")                         \
    X(UInt4_To_Znd, uint32_t, int64_t, "uint32 to zoned...\n", "in:  %lld\n")                      \
    X(Int8_To_Znd, int64_t, int64_t, "int64 to zoned...\n", "in:  %lld\n")                         \
    X(UInt8_To_Znd, uint64_t, uint64_t, "uint64 to zoned...\n", "in:  %llu\n")

namespace zor::decimal {

// Hidden here too: the way to what another library might define needs a register, and those that
// convert to integers can spare none.
#define ZOR_DECLARE(name, Result, printed, header, format)                                         \
    __attribute__((visibility("hidden")))                                                          \
    Result name##InFrame(const uint8_t *source, int32_t sourceDigits);
ZOR_PACKED_TO_INTEGER(ZOR_DECLARE)
ZOR_ZONED_TO_INTEGER(ZOR_DECLARE)
#undef ZOR_DECLARE

#define ZOR_DECLARE(name, Value, printed, header, format)                                          \
    uint8_t *name##InFrame(Value value, uint8_t *target, int32_t targetDigits);
ZOR_INTEGER_TO_PACKED(ZOR_DECLARE)
ZOR_INTEGER_TO_ZONED(ZOR_DECLARE)
#undef ZOR_DECLARE

} // namespace zor::decimal

#endif

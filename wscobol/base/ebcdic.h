// The characters of EBCDIC that the library itself writes and looks for; they are the same bytes in
// all its code pages.
#ifndef ZOR_BASE_EBCDIC_H
#define ZOR_BASE_EBCDIC_H

#include <cstdint>

namespace zor {

inline constexpr uint8_t kShiftOut = 0x0E; // SO: begins a run of double-byte characters
inline constexpr uint8_t kShiftIn = 0x0F;  // SI: ends it
inline constexpr uint8_t kEbcdicBlank = 0x40;
inline constexpr uint8_t kEbcdicMinus = 0x60;
inline constexpr uint8_t kEbcdicZero = 0xF0;

} // namespace zor

#endif

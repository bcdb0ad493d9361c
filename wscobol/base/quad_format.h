// Text of 128-bit binary floating point.
#ifndef ZOR_BASE_QUAD_FORMAT_H
#define ZOR_BASE_QUAD_FORMAT_H

#include <cstddef>

namespace zor {

// Formats the finite 16-byte value at address as "% .*E" does, with the given precision, into a
// buffer of size bytes, and gives the length of the text. Without the library for these numbers the
// value is taken as a double, which may make it infinite.
int formatQuad(char *buffer, std::size_t size, int precision, const void *address);

} // namespace zor

#endif

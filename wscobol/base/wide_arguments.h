// Exported functions with arguments or results of 16 bytes. Such an argument lies at the next
// multiple of 16 from the start of the arguments, and the compiler believes that this is an aligned
// address: it aligns no stack for the function, and loads and calls fail when the caller has
// aligned its stack to 4 bytes only. So do stores of a result, of which the caller's stack has the
// room. Written with the types below, the same words lie in the same places, and nothing is
// believed.
#ifndef ZOR_BASE_WIDE_ARGUMENTS_H
#define ZOR_BASE_WIDE_ARGUMENTS_H

#include <cstdint>
#include <type_traits>

#include "zor_abi.h"

namespace zor {

// A value of 16 bytes as it lies on the stack, or where the hidden first argument points.
template <class T> struct __attribute__((packed, aligned(4))) Wide { T value; };

// How a value of any form is passed.
template <class T> using Passed = std::conditional_t<sizeof(T) == 16, Wide<T>, T>;
template <class T> T passedValue(T value) {
    return value;
}
template <class T> T passedValue(Wide<T> value) {
    return value.value;
}

// The words ahead of the first such argument; behind the address of the result there are 3.
template <int count> struct Gap { uint32_t unused[count]; };

// Begins the definition of an exported function. Its declaration in the header has the types that
// callers use.
#define ZOR_WIDE(Result, name, ...)                                                                \
    ZOR_EXPORT Result name##AsItLies(__VA_ARGS__) asm(#name);                                      \
    Result name##AsItLies(__VA_ARGS__)

// Declares a further exported name of such a function.
#define ZOR_WIDE_ALIAS(first, Result, name, ...)                                                   \
    ZOR_EXPORT Result name##AsItLies(__VA_ARGS__) asm(#name) __attribute__((alias(first)))

} // namespace zor

#endif

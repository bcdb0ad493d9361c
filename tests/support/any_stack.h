// Calls as from programs that align neither their stack nor the room of a result.
#ifndef ZOR_TESTS_SUPPORT_ANY_STACK_H
#define ZOR_TESTS_SUPPORT_ANY_STACK_H

#include <algorithm>
#include <cstring>

#include "support/kit.h"

namespace kit {

template <class T> uint32_t word(T *address) {
    return reinterpret_cast<uint32_t>(address);
}

// Among the words of a call: the address of 16 bytes that the function fills.
inline constexpr uint32_t kRoom = 0x0DD0'0DD0;

// Calls a function with words as its arguments, from every stack and with every room that is
// aligned to 4 bytes, or from some of them; gives what it fills the room with.
template <class Function>
std::string fillsAnywhere(Function *function, const std::vector<uint32_t> &words,
                          uint32_t begin = 0, uint32_t end = 256) {
    std::string first;
    for (uint32_t offset = end; offset > begin;) {
        offset -= 4; // from the end, so that the first is not aligned to 8 either
        alignas(16) char space[32] = {};
        char *const room = space + offset / 4 % 4 * 4;
        std::vector<uint32_t> arguments = words;
        std::replace(arguments.begin(), arguments.end(), kRoom, word(room));
        const uint32_t *from = arguments.data();
        std::size_t count = arguments.size();
        uint32_t address = word(function);
        uint32_t below = 512 + offset / 16 * 4;
        asm volatile("mov %%esp, %%ebx\n and $-16, %%esp\n sub %3, %%esp\n mov %%esp, %%edi\n"
                     "rep movsl\n call *%2\n mov %%ebx, %%esp\n emms"
                     : "+S"(from), "+c"(count), "+a"(address), "+d"(below)::"ebx", "edi", "memory",
                       "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
        const std::string filled = hex(room, 16);
        first = first.empty() ? filled : first;
        EXPECT_EQ(filled, first) << offset;
    }
    return first;
}

} // namespace kit

#endif

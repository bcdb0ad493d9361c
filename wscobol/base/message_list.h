// One typed helper per message (or per variant of a message), so that the compiler checks the
// arguments of each call against the number. The list is message_list.def.
#ifndef ZOR_BASE_MESSAGE_LIST_H
#define ZOR_BASE_MESSAGE_LIST_H

#include "messages.h"

namespace zor::message {

template <class... Arguments> struct Message {
    int32_t number;
    uint32_t flags; // the catalogue variant less 1, and MESSAGE_ bits

    int32_t operator()(Arguments... arguments) const {
        return _zorWriteERRmsg(number, flags, arguments...);
    }

    // The same message with further flags, for example another variant.
    int32_t issue(uint32_t moreFlags, Arguments... arguments) const {
        return _zorWriteERRmsg(number, flags | moreFlags, arguments...);
    }
};

#define ZOR_MESSAGE(name, number, flags, ...)                                                      \
    inline constexpr Message<__VA_ARGS__> name{number, flags};
#include "base/message_list.def"
#undef ZOR_MESSAGE

} // namespace zor::message

#endif

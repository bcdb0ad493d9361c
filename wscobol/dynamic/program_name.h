// The name of a CALL or CANCEL, as it is looked for, and the nested programs that it may mean.
#ifndef ZOR_DYNAMIC_PROGRAM_NAME_H
#define ZOR_DYNAMIC_PROGRAM_NAME_H

#include <algorithm>
#include <cctype>
#include <cstring>

#include "base/bits.h"
#include "call.h"

namespace zor {

// A terminated copy without the blanks and zero bytes that fill an item up.
class ProgramName {
public:
    ProgramName(const char *name, int32_t length, const PCB *caller)
        : length_(static_cast<uint32_t>(std::clamp(length, 0, kMostBytes))) {
        trim(name);
        memcpy(text_, name, length_);
        text_[length_] = '\0';
        if (caller != nullptr && has(caller->flags, PCB_UPPER_CASE_NAMES)) {
            std::transform(text_, text_ + length_, text_, [](char letter) {
                return static_cast<char>(toupper(static_cast<unsigned char>(letter)));
            });
        }
    }

    const char *text() const { return text_; }
    uint32_t length() const { return length_; }
    bool isEmpty() const { return length_ == 0; }

private:
    static constexpr int32_t kMostBytes = 160;
    static constexpr std::size_t kWordBytes = 4; // items are mostly filled up with words of blanks

    void trim(const char *name) {
        while (length_ >= kWordBytes &&
               memcmp(name + length_ - kWordBytes, "    ", kWordBytes) == 0) {
            length_ -= kWordBytes;
        }
        while (length_ > 0 && (name[length_ - 1] == ' ' || name[length_ - 1] == '\0')) {
            --length_;
        }
    }

    uint32_t length_;
    char text_[kMostBytes + 1];
};

// The record of a nested program, or null. The table may be null.
inline const NestedProgram *findNested(const NestedProgramTable *table, const ProgramName &name) {
    if (table == nullptr) {
        return nullptr;
    }
    const NestedProgram *const end = table->programs + table->count;
    const char *const names = reinterpret_cast<const char *>(end);
    const NestedProgram *found =
        std::find_if(table->programs, end, [&](const NestedProgram &program) {
            return program.namelen == name.length() &&
                   memcmp(names + program.nameoffset, name.text(), name.length()) == 0;
        });
    return found != end ? found : nullptr;
}

} // namespace zor

#endif

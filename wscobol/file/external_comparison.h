// Whether two programs describe an EXTERNAL file alike.
#ifndef ZOR_FILE_EXTERNAL_COMPARISON_H
#define ZOR_FILE_EXTERNAL_COMPARISON_H

#include <cstddef>

#include "fcb.h"

namespace zor {

// Bytes of a description together with the records that it has behind its fixed part.
std::size_t bytesOf(const FileDescription &description);

// What differs between two descriptions, in words for message 75.
class Differences {
public:
    Differences(const FileDescription &first, const FileDescription &second);
    bool any() const { return any_; }
    const char *list() const { return list_; } // names of attributes, divided by ", "

private:
    void compareFixedPart(const FileDescription &first, const FileDescription &second);
    void compareSharing(const FileDescription &first, const FileDescription &second);
    void compareLinage(const FileDescription &first, const FileDescription &second);
    void compareKeys(const FileDescription &first, const FileDescription &second);
    void note(bool differs, const char *attribute);

    bool any_;
    std::size_t length_ = 0;
    char list_[512] = ""; // more than all names together
};

} // namespace zor

#endif

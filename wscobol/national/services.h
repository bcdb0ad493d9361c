// The state of the conversion services: the names that the process goes by, and what is kept open
// between calls. It belongs to one thread at a time.
#ifndef ZOR_NATIONAL_SERVICES_H
#define ZOR_NATIONAL_SERVICES_H

#include <cstdint>

#include "national/byte_table.h"
#include "national/icu.h"
#include "proccom.h"

namespace zor {

// How callers tell the two code pages of the process from one that they name, by the length of the
// name.
constexpr int32_t kNativePage = 0;
constexpr int32_t kEbcdicPage = -1;

struct Services {
    bool ready;
    char locale[6]; // "en_US"
    char nativeName[sizeof Proccom::localename - 6];
    char ebcdicName[sizeof Proccom::ebcdicname];
    UConverter *native; // null until first used, like those below
    UConverter *ebcdic;
    UCollator *collator;
    decltype(IcuCollation::ucol_strcoll) collate; // by the collator
    Translation toEbcdic;
    Translation toNative;
};

// The services, set up if they are not.
Services &services();

// A converter of the process, opened at its first use; null, and a positive status, when that
// fails.
UConverter *cachedConverter(Services &services, int32_t page, int32_t &status);

// The conversion by look-up to one of the two code pages from the other; without any byte where a
// converter cannot be opened.
const Translation &translationTo(int32_t page);

// A converter for one call: a cached one, or one by a name of up to 29 bytes that is not
// terminated. Message 221 tells that it cannot be opened.
class OpenPage {
public:
    OpenPage(const char *name, int32_t length);
    ~OpenPage();
    OpenPage(const OpenPage &) = delete;
    OpenPage &operator=(const OpenPage &) = delete;
    UConverter *converter() const { return converter_; } // null when not opened
    int32_t status() const { return status_; }

private:
    UConverter *converter_;
    int32_t status_ = 0;
    bool named_;
};

} // namespace zor

#endif

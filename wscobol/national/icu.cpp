// Loads ICU, of the version whose headers the library was built with, and finds the addresses of
// its functions. The files stay loaded.
#include "national/icu.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <dlfcn.h>
#include <pthread.h>
#include <unicode/uvernum.h>

namespace zor {
namespace {

struct Entry {
    const char *name; // with the version, as the file has it
    std::size_t offset;
};

#define ZOR_ICU_TEXT(name) #name
#define ZOR_ICU_ENTRY(table, name) Entry{ZOR_ICU_TEXT(name), offsetof(table, name)},
#define ZOR_ICU_CONVERSION_ENTRY(name) ZOR_ICU_ENTRY(IcuConversion, name)
#define ZOR_ICU_COLLATION_ENTRY(name) ZOR_ICU_ENTRY(IcuCollation, name)
constexpr std::array kConversionEntries = {ZOR_ICU_CONVERSION(ZOR_ICU_CONVERSION_ENTRY)};
constexpr std::array kCollationEntries = {ZOR_ICU_COLLATION(ZOR_ICU_COLLATION_ENTRY)};

// A table is of use when every address was found.
template <class Table> struct Loaded {
    pthread_once_t once = PTHREAD_ONCE_INIT;
    Table table{};
    bool complete = false;
};
Loaded<IcuConversion> conversion;
Loaded<IcuCollation> collation;

template <class Table, std::size_t Size>
void load(Loaded<Table> &loaded, const char *file, const std::array<Entry, Size> &entries) {
    void *const library = dlopen(file, RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        return;
    }
    loaded.complete = true;
    for (const Entry &entry : entries) {
        void *const address = dlsym(library, entry.name);
        memcpy(reinterpret_cast<char *>(&loaded.table) + entry.offset, &address, sizeof address);
        loaded.complete = loaded.complete && address != nullptr;
    }
}

void loadConversion() {
    load(conversion, "libicuuc.so." U_ICU_VERSION_SHORT, kConversionEntries);
}

void loadCollation() {
    load(collation, "libicui18n.so." U_ICU_VERSION_SHORT, kCollationEntries);
}

} // namespace

const IcuConversion *icuConversion() {
    pthread_once(&conversion.once, loadConversion);
    return conversion.complete ? &conversion.table : nullptr;
}

const IcuCollation *icuCollation() {
    pthread_once(&collation.once, loadCollation);
    return collation.complete ? &collation.table : nullptr;
}

} // namespace zor

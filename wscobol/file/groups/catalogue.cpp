// Entries are ordered as plain words: the era, which grows with each wrap of the numbers, stands
// above the number.
#include "file/groups/catalogue.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/bits.h"

namespace zor::groups {
namespace {

constexpr char kMagic[4] = {'G', 'D', 'G', '\n'};
constexpr int32_t kByteOrder = 1234;
constexpr int32_t kVersion = 1;
constexpr uint32_t kEraStep = 0x8000;
constexpr uint32_t kHighestEra = 0xFFFF8000;
// A number this low behind one this high, or the other way round, tells of a wrap.
constexpr int32_t kLow = 999;
constexpr int32_t kHigh = 9000;

bool isWithin(int32_t value, int32_t least, int32_t most) {
    return value >= least && value <= most;
}

// All but the magic, which is text.
void swapBytes(Catalogue &catalogue) {
    uint32_t words[sizeof(Catalogue) / sizeof(uint32_t)];
    memcpy(words, &catalogue, sizeof words);
    for (uint32_t &word : words) {
        word = __builtin_bswap32(word);
    }
    memcpy(&catalogue, words, sizeof words);
    memcpy(catalogue.magic, kMagic, sizeof kMagic);
    catalogue.byteorder = kByteOrder;
}

// Counts the wraps anew from the oldest entry, which gets the era.
void renumberEras(Catalogue &catalogue, uint32_t era) {
    int32_t previous = 0;
    for (int32_t i = 0; i < catalogue.count; ++i) {
        const int32_t number = numberOf(catalogue.entries[i]);
        if (number < previous) {
            era += kEraStep;
        }
        previous = number;
        catalogue.entries[i] = era | static_cast<uint32_t>(number);
    }
    catalogue.era = era;
}

// The era of a number that comes behind the newest one. There is always one to give: eras that
// run out above or below are counted anew, and a thousand entries cannot use them up.
uint32_t eraOf(Catalogue &catalogue, int32_t number) {
    if (catalogue.last >= kHigh && number <= kLow) {
        if (catalogue.era >= kHighestEra) {
            renumberEras(catalogue, 0);
        }
        return catalogue.era + kEraStep;
    }
    if (catalogue.last <= kLow && number >= kHigh) {
        if (catalogue.era < kEraStep) {
            renumberEras(catalogue, kEraStep);
        }
        return catalogue.era - kEraStep;
    }
    return catalogue.era;
}

} // namespace

void makeCatalogue(Catalogue &catalogue, int32_t limit, int32_t days, uint32_t choices,
                   FileSystem system) {
    catalogue = {};
    memcpy(catalogue.magic, kMagic, sizeof kMagic);
    catalogue.byteorder = kByteOrder;
    catalogue.version = kVersion;
    catalogue.limit = limit;
    catalogue.days = days;
    catalogue.flags = choices | kChanged;
    catalogue.filesystem = system;
}

bool adoptCatalogue(Catalogue &catalogue) {
    if (memcmp(catalogue.magic, kMagic, sizeof kMagic) != 0) {
        return false;
    }
    const bool swaps = catalogue.byteorder != kByteOrder;
    if (swaps) {
        swapBytes(catalogue);
        fputs("Info: Endian swapped!\n", stderr);
    }
    if (catalogue.version != kVersion) {
        if (catalogue.version > kVersion) {
            fputs("Error: GDG catalogue version unkown!\n", stderr);
        }
        return false;
    }
    if (!isWithin(catalogue.count, 0, kMostGenerations) ||
        !isWithin(catalogue.limit, 1, kMostGenerations) ||
        !isWithin(catalogue.last, 0, kHighestNumber)) {
        return false;
    }
    clear(catalogue.flags, kChanged);
    set(catalogue.flags, swaps ? kRead | kChanged : kRead);
    return true;
}

int32_t findGeneration(const Catalogue &catalogue, int32_t number) {
    for (int32_t i = catalogue.count - 1; i >= 0; --i) {
        if (numberOf(catalogue.entries[i]) == number) {
            return i;
        }
    }
    return -1;
}

bool enterGeneration(Catalogue &catalogue, int32_t number) {
    if (catalogue.count == kMostGenerations) {
        return false;
    }
    const uint32_t entry = eraOf(catalogue, number) | static_cast<uint32_t>(number);
    uint32_t *end = catalogue.entries + catalogue.count;
    *end++ = entry;
    ++catalogue.count;
    if (catalogue.count > 1 && entry < end[-2]) {
        std::sort(catalogue.entries, end);
    }
    noteNewest(catalogue);
    return true;
}

void takeOut(Catalogue &catalogue, int32_t first, int32_t count) {
    uint32_t *to = catalogue.entries + first;
    uint32_t *end = catalogue.entries + catalogue.count;
    std::fill(std::copy(to + count, end, to), end, 0U);
    catalogue.count -= count;
    noteNewest(catalogue);
}

void noteNewest(Catalogue &catalogue) {
    const uint32_t newest = catalogue.count == 0 ? 0 : catalogue.entries[catalogue.count - 1];
    catalogue.last = numberOf(newest);
    catalogue.era = newest & kHighestEra;
    set(catalogue.flags, kChanged);
}

} // namespace zor::groups

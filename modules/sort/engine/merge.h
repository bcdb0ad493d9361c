// Merging: of several sources, each in order, the records come out in order, equal ones by the
// order of their sources.
#ifndef ZOR_ENGINE_MERGE_H
#define ZOR_ENGINE_MERGE_H

#include <span>

#include "engine/files.h"
#include "engine/keys.h"
#include "engine/work_files.h"

namespace zor::engine {

// What all sources of a sort have in common.
struct Shape {
    RecordForm form;
    KeySet keys;
};

// Stored records on their way out, one behind the other.
struct Block {
    uint8_t *start;
    std::size_t capacity; // at least the longest record's
    std::size_t used;
};

struct Source {
    // The present record with its key; record is null at the end.
    uint64_t prefix;
    const uint8_t *rest;
    const uint8_t *record;

    Failure (*next)(Source &source, const Shape &shape); // goes on to the next record

    std::span<const Entry> entries; // in memory: those that are left
    StoredReader *reader;           // a run: where it is read
    File file;                      // a file of MERGE
    int32_t number;                 // its place among the inputs, from 1
    uint8_t *stored;                // its record
    uint8_t *key;                   // room for the present key, and
    uint8_t *otherKey;              // for another
};

// Sources, which are yet at no record.
Source sourceOf(std::span<const Entry> entries);
Source sourceOf(StoredReader *reader, uint8_t *key);
Source sourceOf(const File &file, int32_t number, uint8_t *stored, uint8_t *key, uint8_t *otherKey);

class Merge {
public:
    // What the tree has for each source.
    struct Contender {
        uint64_t prefix;
        uint32_t source;
    };

    // Of nothing.
    Merge() = default;
    // contenders has room for one more than there are sources.
    Merge(const Shape &shape, std::span<Source> sources, Contender *contenders)
        : shape_(&shape), sources_(sources), contenders_(contenders) {}

    // Gets the first record of each source.
    Failure begin();

    // Fills a block, as far as whole records fit; it is empty only at the end.
    Failure fill(Block &block);

    // Whether all has been given.
    bool isAtEnd() const {
        return sources_.empty() || sources_[contenders_[0].source].record == nullptr;
    }

private:
    bool isLess(const Contender &left, const Contender &right) const;
    bool isTieLess(uint32_t left, uint32_t right) const;
    Contender contender(uint32_t source) const;
    void enter(uint32_t source);
    void replay();

    const Shape *shape_ = nullptr;
    std::span<Source> sources_{};
    Contender *contenders_ = nullptr; // the winner, and from 1 on the loser of each match
};

} // namespace zor::engine

#endif

// The memory of a sort: mapped at once and given back at once, so that a sort can be ended in the
// middle of anything, by a signal too.
#ifndef ZOR_ENGINE_MEMORY_H
#define ZOR_ENGINE_MEMORY_H

#include <cstddef>
#include <cstdint>

namespace zor::engine {

struct Memory {
    uint8_t *start = nullptr;
    std::size_t size = 0;
};

// Pages become real only when they are used. start is null when there is no room.
Memory mapMemory(std::size_t size);
void unmapMemory(Memory &memory);

// Lets the pages of a large area be large ones; but for its ends, which are all that a small sort
// uses of it.
void preferLargePages(uint8_t *start, std::size_t size);

// Makes pages real that will soon be used, all at once.
void makeReal(uint8_t *start, std::size_t size);

// The machine's, in bytes.
uint64_t installedMemory();

// Divides memory into parts.
class Divider {
public:
    explicit Divider(const Memory &memory) : at_(memory.start), end_(memory.start + memory.size) {}

    // count elements on a boundary of kBoundary bytes; there must be room for them.
    template <class T = uint8_t> T *take(std::size_t count = 1) {
        auto *part = reinterpret_cast<T *>(at_);
        at_ += roundUp(count * sizeof(T));
        return part;
    }
    Memory rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }

    static constexpr std::size_t kBoundary = 64;
    static constexpr std::size_t roundUp(std::size_t bytes) {
        return (bytes + kBoundary - 1) / kBoundary * kBoundary;
    }

private:
    uint8_t *at_;
    uint8_t *end_;
};

} // namespace zor::engine

#endif

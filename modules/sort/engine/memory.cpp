// Memory comes from the kernel, since the C library's allocator may be in use by what is ended.
#include "engine/memory.h"

#include <sys/mman.h>
#include <unistd.h>

namespace zor::engine {
namespace {

constexpr std::size_t kSmallAtStart = std::size_t{1} << 20;
constexpr std::size_t kSmallAtEnd = std::size_t{4} << 20;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kLargePage = std::size_t{2} << 20;

} // namespace

Memory mapMemory(std::size_t size) {
    void *start = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return start == MAP_FAILED ? Memory{} : Memory{static_cast<uint8_t *>(start), size};
}

void unmapMemory(Memory &memory) {
    if (memory.start != nullptr) {
        munmap(memory.start, memory.size);
        memory = {};
    }
}

void preferLargePages(uint8_t *start, std::size_t size) {
    if (size < kSmallAtStart + kSmallAtEnd + 2 * kLargePage) {
        return;
    }
    const auto round = [](uint8_t *address) {
        return reinterpret_cast<uintptr_t>(address) / kLargePage * kLargePage;
    };
    const uintptr_t from = round(start + kSmallAtStart + kLargePage);
    const uintptr_t to = round(start + size - kSmallAtEnd);
    madvise(reinterpret_cast<void *>(from), to - from, MADV_HUGEPAGE);
}

// Where the kernel does not know how to, each page becomes real at its first use.
void makeReal(uint8_t *start, std::size_t size) {
    const uintptr_t page = reinterpret_cast<uintptr_t>(start) / kPage * kPage;
    const uintptr_t end = reinterpret_cast<uintptr_t>(start) + size;
    madvise(reinterpret_cast<void *>(page), end - page, MADV_POPULATE_WRITE);
}

uint64_t installedMemory() {
    return static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

} // namespace zor::engine

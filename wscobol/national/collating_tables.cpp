// The tables by which programs compare in the order of the locale or in that of EBCDIC: one set for
// the process, built at the first call and never changed.
#include <array>
#include <atomic>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <numeric>

#include "base/locks.h"
#include "base/message_list.h"
#include "collating.h"
#include "national/services.h"

namespace zor {
namespace {

constexpr std::size_t kByteValues = 256;

// The order and the weights of single bytes in the locale. The comparison of strings reads on
// behind a byte, up to the zero byte at the end.
struct LocaleTables {
    std::atomic<bool> ready;
    std::array<uint8_t, kByteValues + 1> order;
    ByteTable weights;
};
constinit LocaleTables localeTables{};

struct EbcdicTables {
    std::atomic<bool> ready;
    ByteTable first;
    ByteTable second;
};
constinit EbcdicTables ebcdicTables{};

// Why the EBCDIC tables are not what they should be.
struct Failure {
    const char *unopened; // name of the code page, or null
    int32_t status;       // of the conversion library, or 0 for none
};

int compareStrings(const void *left, const void *right) {
    return strcoll(static_cast<const char *>(left), static_cast<const char *>(right));
}

// Single bytes have no order of their own in a multi-byte locale; that of "en_US", if it is there,
// stands in, for this thread alone.
void buildLocaleTables(LocaleTables &tables) {
    const locale_t standIn =
        MB_CUR_MAX > 1 ? newlocale(LC_COLLATE_MASK, "en_US", nullptr) : nullptr;
    const locale_t before = uselocale(standIn); // without one it only asks
    std::iota(tables.order.begin(), tables.order.end() - 1, uint8_t{0});
    tables.order.back() = 0;
    qsort(tables.order.data(), kByteValues, 1, compareStrings);
    if (standIn != nullptr) {
        uselocale(before);
        freelocale(standIn);
    }
    for (std::size_t rank = 0; rank < kByteValues; ++rank) {
        tables.weights[tables.order[rank]] = static_cast<uint8_t>(rank);
    }
}

Failure fillFromEbcdic(ByteTable &table) {
    Services &services = zor::services();
    table.fill(kSubstitution);
    int32_t status = 0;
    UConverter *const ebcdic = cachedConverter(services, kEbcdicPage, status);
    if (ebcdic == nullptr) {
        return {services.ebcdicName, status};
    }
    UConverter *const native = cachedConverter(services, kNativePage, status);
    if (native == nullptr) {
        return {services.nativeName, status};
    }
    return {nullptr, fillByteTable(*ebcdic, *native, table)};
}

// Builds the tables unless another thread has. Messages are left to the caller, who holds no lock:
// one may end the run.
Failure buildEbcdicTables(EbcdicTables &tables) {
    const ScopedLock lock(EbcdicLock);
    if (tables.ready.load(std::memory_order_relaxed)) {
        return {};
    }
    const Failure failure = fillFromEbcdic(tables.first);
    tables.second = tables.first;
    tables.ready.store(true, std::memory_order_release);
    return failure;
}

void report(const Failure &failure) {
    if (failure.status == 0) {
        return;
    }
    if (failure.unopened != nullptr) {
        message::converterNotOpened(failure.unopened, failure.status);
    } else {
        message::conversionFailed(failure.status);
    }
    message::ebcdicTablesFailed();
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcCollSeq(PCB *pcb) {
    if (!localeTables.ready.load(std::memory_order_acquire)) {
        const ScopedLock lock(CollatingLock);
        if (!localeTables.ready.load(std::memory_order_relaxed)) {
            buildLocaleTables(localeTables);
            localeTables.ready.store(true, std::memory_order_release);
        }
    }
    pcb->collatingWeights = localeTables.weights.data();
    pcb->collatingOrder = localeTables.order.data();
}

void _zorcEBCDIC(PCB *pcb) {
    if (!ebcdicTables.ready.load(std::memory_order_acquire)) {
        services(); // may issue a message too
        report(buildEbcdicTables(ebcdicTables));
    }
    pcb->ebcdicTable = ebcdicTables.first.data();
    pcb->ebcdicTable2 = ebcdicTables.second.data();
}

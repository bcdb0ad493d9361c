// Both lists are changed by the thread that starts or ends the run-time alone.
#include "run/kept_anchors.h"

#include <cstring>
#include <utility>

#include "base/storage.h"
#include "run/signal_table.h"

namespace zor {
namespace {

Proccom *keptProccom = nullptr;
Runcom *keptRuncoms = nullptr; // chained by link

} // namespace

Proccom *takeProccom() {
    Proccom *process = std::exchange(keptProccom, nullptr);
    if (process != nullptr) {
        memset(process, 0, sizeof *process);
        return process;
    }
    return static_cast<Proccom *>(allocateZeroedOrReport(sizeof(Proccom)));
}

Runcom *takeRuncom() {
    Runcom *unit = keptRuncoms;
    if (unit != nullptr) {
        keptRuncoms = unit->link;
        SignalRow *table = unit->sigtable;
        memset(unit, 0, sizeof *unit);
        unit->sigtable = table;
    } else {
        unit = static_cast<Runcom *>(allocateZeroedOrReport(sizeof(Runcom)));
    }
    if (unit != nullptr && unit->sigtable == nullptr) {
        unit->sigtable = static_cast<SignalRow *>(allocateZeroedOrReport(kSignalTableBytes));
        if (unit->sigtable == nullptr) {
            release(unit);
            return nullptr;
        }
        fillSignalTable(unit->sigtable);
    }
    return unit;
}

void keep(Proccom &process) {
    keptProccom = &process;
}

void keep(Runcom &unit) {
    unit.msg = nullptr; // whoever comes late must not call the host
    unit.link = keptRuncoms;
    keptRuncoms = &unit;
}

void releaseKeptAnchors() {
    release(std::exchange(keptProccom, nullptr));
    while (keptRuncoms != nullptr) {
        Runcom *unit = keptRuncoms;
        keptRuncoms = unit->link;
        release(unit->sigtable);
        release(unit);
    }
}

} // namespace zor

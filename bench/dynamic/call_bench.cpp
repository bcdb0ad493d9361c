// CALL of a program that is known, beside what stands for it without the run-time: the dynamic
// linker's symbol, or a pointer that the caller keeps.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>

#include "call.h"
#include "external_data.h"
#include "proccom.h"
#include "support/bench.h"

namespace {

using Routine = int (*)();

constexpr const char *kProgram = "CALLED07";
constexpr int32_t kNameBytes = 8;

struct Caller {
    Caller() {
        pcb.ipcb = &ipcb;
        pcb.name = "CALLER";
        pcb.namelen = 6;
        pcb.century = PCB_NO_CENTURY_WINDOW;
        ipcb.entry = this;
    }
    PCB pcb{};
    IPCB ipcb{};
};
Caller caller;

int32_t callByName(const char *name, int32_t length) {
    int32_t exception = 1;
    const FunctionDescriptor *target =
        _zorDynLd(nullptr, length, name, &caller.pcb, nullptr, &exception);
    return reinterpret_cast<Routine>(target->entry)();
}

// As many programs as an application may have called by then.
void callAll() {
    for (int number = 0; number < 64; ++number) {
        const std::string name =
            "CALLED" + std::to_string(number / 10) + std::to_string(number % 10);
        callByName(name.data(), kNameBytes);
    }
}

void measure(const std::string &label) {
    static void *const file = dlopen(BENCH_PROGRAMS "/called.so", RTLD_NOW);
    static const std::string item = kProgram + std::string(22, ' ');
    static const Routine volatile pointer = reinterpret_cast<Routine>(dlsym(file, kProgram));
    callAll();
    const double literal = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            bench::keep(callByName(kProgram, kNameBytes));
        }
    });
    const double identifier = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            bench::keep(callByName(item.data(), static_cast<int32_t>(item.size())));
        }
    });
    const double symbol = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            bench::keep(reinterpret_cast<Routine>(dlsym(file, kProgram))());
        }
    });
    const double direct = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            bench::keep(pointer());
        }
    });
    bench::row("CALL literal, " + label, literal, "dlsym", symbol);
    bench::row("CALL identifier, " + label, identifier, "dlsym", symbol);
    bench::row("CALL literal, " + label, literal, "call by pointer", direct);
}

// Runs a body in a run unit of a run-time of its own.
void inRunTime(const char *cache, void (*body)()) {
    setenv("COBPATH", BENCH_PROGRAMS, 1);
    setenv("COBOL_CPM_CACHE", cache, 1);
    _zorPgmInit(&caller.pcb);
    body();
    int32_t rc = 0;
    _zorCOBOLTerm(1, &rc);
}

constexpr int kItems = 8;
alignas(ExternalDataTable) unsigned char itemTable[sizeof(ExternalDataTable) +
                                                   kItems * sizeof(ExternalDataItem)];

} // namespace

ZOR_BENCH(calls) {
    inRunTime("0", [] { measure("no cache"); });
    inRunTime("1", [] { measure("cached"); });
}

// What each entry of a program with EXTERNAL items costs, an item.
ZOR_BENCH(externalData) {
    inRunTime("0", [] {
        static auto *const table = reinterpret_cast<ExternalDataTable *>(itemTable);
        static void *addresses[kItems];
        for (ExternalDataItem *item = table->items; table->count < kItems; ++item) {
            item->length = 80;
            snprintf(item->name, sizeof item->name, "CUSTOMER-RECORD-%d", table->count++);
        }
        const double ours = bench::nanoseconds([](unsigned times) {
            for (unsigned i = 0; i < times; i += kItems) {
                _zorExtVarInit(table, addresses);
            }
        });
        void *const self = dlopen(nullptr, RTLD_NOW);
        const double symbol = bench::nanoseconds([=](unsigned times) {
            while (times-- > 0) {
                bench::keep(dlsym(self, "environ"));
            }
        });
        bench::row("EXTERNAL item that exists", ours, "dlsym", symbol);
    });
}

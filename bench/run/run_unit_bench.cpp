// What the run-time itself costs: a run unit from start to end, an activation of a program that is
// linked already, and a whole process.

#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <spawn.h>
#include <sys/wait.h>

#include "pcb.h"
#include "proccom.h"
#include "support/bench.h"

namespace {

struct Program {
    explicit Program(const char *name) {
        pcb.level[0] = 5;
        pcb.level[1] = pcb.level[2] = 1;
        pcb.ipcb = &ipcb;
        pcb.name = name;
        pcb.namelen = strlen(name);
        pcb.century = PCB_NO_CENTURY_WINDOW;
        ipcb.entry = this;
    }
    PCB pcb{};
    IPCB ipcb{};
};

void runProcess(const char *path, const char *argument) {
    pid_t child = 0;
    char *const arguments[] = {const_cast<char *>(path), const_cast<char *>(argument), nullptr};
    if (posix_spawn(&child, path, nullptr, nullptr, arguments, environ) != 0) {
        abort();
    }
    int status = 0;
    waitpid(child, &status, 0);
}

ZOR_BENCH(runUnit) {
    static Program main("MAIN");
    static Program sub("SUB");
    const double unit = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            _zorPgmInit(&main.pcb);
            _zorPgmTerm(&main.pcb);
        }
    });
    _zorPgmInit(&main.pcb);
    const double activation = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            _zorPgmInit(&sub.pcb);
            _zorPgmTerm(&sub.pcb);
        }
    });
    _zorPgmTerm(&main.pcb);
    // No peer does this work: the figures stand beside a start and a wait of one thread.
    const double thread = bench::nanoseconds([](unsigned times) {
        while (times-- > 0) {
            pthread_t other{};
            pthread_create(
                &other, nullptr, [](void *) -> void * { return nullptr; }, nullptr);
            pthread_join(other, nullptr);
        }
    });
    bench::row("run unit, start to end", unit, "thread, start to end", thread);
    bench::row("activation of a linked program", activation, "thread, start to end", thread);
}

double process(const char *path, const char *argument = nullptr) {
    return bench::nanoseconds([=](unsigned times) {
        while (times-- > 0) {
            runProcess(path, argument);
        }
    });
}

ZOR_BENCH(processes) {
    const double ours = process(MINIMAL_COBOL);
    bench::row("process, minimal program", ours, "process without the library",
               process(MINIMAL_PLAIN));
    bench::row("process, minimal program", ours, "process with setlocale and catopen",
               process(MINIMAL_CATALOGUE));
    bench::row("process, minimal program", ours, "process with these and the unwinder",
               process(MINIMAL_CATALOGUE, "libgcc_s.so.1"));
}

} // namespace

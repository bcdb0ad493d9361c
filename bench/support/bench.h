// Measures a call beside a peer's call on the same data in the same run.
#ifndef ZOR_BENCH_SUPPORT_BENCH_H
#define ZOR_BENCH_SUPPORT_BENCH_H

#include <functional>
#include <string>

namespace bench {

// Keeps a value alive through the optimiser.
template <class T> inline void keep(const T &value) {
    asm volatile("" : : "g"(&value) : "memory");
}

// A case does its operation the given number of times; it is run until its time is stable, and the
// lowest of several samples counts, in nanoseconds per operation.
using Case = std::function<void(unsigned times)>;
double nanoseconds(const Case &body);

// One row of the table: name, ours, peer's name, peer's, ratio peer/ours (above 1: we are faster).
void row(const std::string &name, double ours, const std::string &peer, double peers);

// The cases are registered with ZOR_BENCH and run in the order of their files.
using Group = void (*)();
struct Registration {
    Registration(const char *name, Group group);
};
#define ZOR_BENCH(name)                                                                            \
    static void name();                                                                            \
    static const bench::Registration name##Registration(#name, name);                              \
    static void name()

} // namespace bench

#endif

// The work is handed over by words of memory, and not by anything of the C library that a thread
// could be broken off within and that would hold the library's own notes on it. Signals are for the
// program's own threads: this one takes none.
#include "engine/helper.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "engine/signals.h"

namespace zor::engine {
namespace {

constexpr std::size_t kStack = std::size_t{1} << 20;
constexpr int kPatience = 1000; // looks at an event before sleeping, which costs as much as these

long callFutex(std::atomic<uint32_t> &word, int operation, uint32_t value) {
    return syscall(SYS_futex, &word, operation, value, nullptr, nullptr, 0);
}

} // namespace

void Event::raise() {
    raised_ = 1;
    callFutex(raised_, FUTEX_WAKE_PRIVATE, 1);
}

// A futex may wake without cause, by a signal for one.
void Event::wait() {
    for (int look = 0; look < kPatience && raised_ == 0; ++look) {
        __builtin_ia32_pause();
    }
    while (raised_.exchange(0) == 0) {
        callFutex(raised_, FUTEX_WAIT_PRIVATE, 0);
    }
}

void *Helper::run(void *self) {
    auto &helper = *static_cast<Helper *>(self);
    for (;;) {
        helper.go_.wait();
        const Task task = helper.task_;
        if (task == nullptr) {
            return nullptr;
        }
        helper.result_ = task(helper.argument_);
        helper.done_.raise();
    }
}

bool Helper::startThread() {
    pthread_attr_t attributes;
    if (running_ || pthread_attr_init(&attributes) != 0) {
        return running_;
    }
    pthread_attr_setstacksize(&attributes, kStack);
    {
        const SignalsHeld held; // which the thread inherits
        running_ = pthread_create(&thread_, &attributes, run, this) == 0;
    }
    pthread_attr_destroy(&attributes);
    return running_;
}

Failure Helper::start(Task task, void *argument, bool worthAThread) {
    if (const Failure before = wait()) {
        return before;
    }
    if (!worthAThread || !allowed_ || !startThread()) {
        return task(argument);
    }
    argument_ = argument;
    task_ = task;
    busy_ = true;
    go_.raise();
    return {};
}

Failure Helper::wait() {
    if (busy_) {
        done_.wait();
        busy_ = false;
    }
    return std::exchange(result_, {});
}

// Not a word here of what the thread is at: whoever handed it over may have been broken off within.
void Helper::end() {
    if (running_) {
        task_ = nullptr;
        go_.raise();
        pthread_join(thread_, nullptr);
        running_ = false;
    }
}

} // namespace zor::engine

// Two semaphores hand the work over, since these alone may be raised in a signal's handler. Signals
// are for the program's own threads: this one takes none.
#include "engine/helper.h"

#include <csignal>
#include <utility>

namespace zor::engine {
namespace {

constexpr std::size_t kStack = std::size_t{1} << 20;

void waitFor(sem_t &semaphore) {
    while (sem_wait(&semaphore) != 0 && errno == EINTR) {
    }
}

} // namespace

void *Helper::run(void *self) {
    auto &helper = *static_cast<Helper *>(self);
    for (;;) {
        waitFor(helper.go_);
        if (helper.task_ == nullptr) {
            return nullptr;
        }
        helper.result_ = helper.task_(helper.argument_);
        sem_post(&helper.done_);
    }
}

bool Helper::startThread() {
    pthread_attr_t attributes;
    if (running_ || pthread_attr_init(&attributes) != 0) {
        return running_;
    }
    pthread_attr_setstacksize(&attributes, kStack);
    sem_init(&go_, 0, 0);
    sem_init(&done_, 0, 0);
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    running_ = pthread_create(&thread_, &attributes, run, this) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_attr_destroy(&attributes);
    return running_;
}

void Helper::waitForDone() {
    if (busy_) {
        waitFor(done_);
        busy_ = false;
    }
}

Failure Helper::start(Task task, void *argument, bool worthAThread) {
    if (const Failure before = wait()) {
        return before;
    }
    if (!worthAThread || !allowed_ || !startThread()) {
        result_ = task(argument);
        return {};
    }
    task_ = task;
    argument_ = argument;
    busy_ = true;
    sem_post(&go_);
    return {};
}

Failure Helper::wait() {
    waitForDone();
    return std::exchange(result_, {});
}

void Helper::end() {
    waitForDone();
    if (running_) {
        task_ = nullptr;
        sem_post(&go_);
        pthread_join(thread_, nullptr);
        running_ = false;
    }
}

} // namespace zor::engine

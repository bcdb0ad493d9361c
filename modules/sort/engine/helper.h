// A second thread that a sort has work done on, one task after the other, while its own goes on
// with files. It lives within a sort.
#ifndef ZOR_ENGINE_HELPER_H
#define ZOR_ENGINE_HELPER_H

#include <atomic>
#include <pthread.h>

#include "engine/failure.h"

namespace zor::engine {

// What one thread waits for and another raises.
class Event {
public:
    void raise();
    void wait(); // and lowers it

private:
    std::atomic<uint32_t> raised_{0};
};

class Helper {
public:
    using Task = Failure (*)(void *argument);

    // Whether there may be a thread at all.
    void allow(bool allowed) { allowed_ = allowed; }
    bool isAllowed() const { return allowed_; }

    // Waits for the task before and gives its failure, without starting the new one then. Without a
    // thread, or when the task is not worth one, it is done at once, and its own failure is given.
    Failure start(Task task, void *argument, bool worthAThread = true);

    // Waits for the last task and gives its failure.
    Failure wait();

    // Lets the thread go, when it has done what it is at. Safe within the handler of a signal that
    // came at any time.
    void end();

private:
    static void *run(void *self);
    bool startThread();

    bool allowed_ = false;
    bool running_ = false; // the thread is there
    bool busy_ = false;    // with a task
    pthread_t thread_{};
    Event go_;
    Event done_;
    std::atomic<Task> task_{nullptr}; // null: the thread ends
    void *argument_ = nullptr;
    Failure result_{};
};

} // namespace zor::engine

#endif

// A second thread that a sort has work done on, one task after the other, while its own goes on
// with files. It lives within a sort.
#ifndef ZOR_ENGINE_HELPER_H
#define ZOR_ENGINE_HELPER_H

#include <pthread.h>
#include <semaphore.h>

#include "engine/failure.h"

namespace zor::engine {

class Helper {
public:
    using Task = Failure (*)(void *argument);

    // Whether there may be a thread at all.
    void allow(bool allowed) { allowed_ = allowed; }
    bool isAllowed() const { return allowed_; }

    // Waits for the task before and gives its failure, without starting the new one then. Without a
    // thread, or when the task is not worth one, it is done at once.
    Failure start(Task task, void *argument, bool worthAThread = true);

    // Waits for the last task and gives its failure.
    Failure wait();

    // Waits and lets the thread go. Safe within a signal's handler.
    void end();

private:
    static void *run(void *self);
    bool startThread();
    void waitForDone();

    bool allowed_ = false;
    bool running_ = false; // the thread is there
    bool busy_ = false;    // with a task
    pthread_t thread_{};
    sem_t go_{};
    sem_t done_{};
    Task task_ = nullptr; // null: the thread ends
    void *argument_ = nullptr;
    Failure result_{};
};

} // namespace zor::engine

#endif

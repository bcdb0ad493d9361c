// Libraries that are loaded at the first call of one of their functions: a program that makes no
// such call does not pay for them. They stay loaded.
#ifndef ZOR_BASE_LATE_LIBRARY_H
#define ZOR_BASE_LATE_LIBRARY_H

#include <atomic>

namespace zor {

class LateLibrary {
public:
    explicit constexpr LateLibrary(const char *file) : file_(file) {}

    // False when it cannot be loaded.
    bool isPresent() { return handle() != nullptr; }
    // Null when the library cannot be loaded, or has no such function.
    void *find(const char *function);
    // The end of a run that cannot do without a function, by message 907.
    [[noreturn]] void endWithout(const char *function) const;

private:
    void *handle();

    const char *file_;
    std::atomic<void *> handle_ = nullptr;
};

inline constinit LateLibrary mathLibrary("libm.so.6");
inline constinit LateLibrary quadLibrary("libquadmath.so.0");
inline constinit LateLibrary decimalLibrary("libdfp.so.1");

// A function of such a library, called like any other. Threads that come here together find the
// same address.
template <class Signature> class LateFunction {
public:
    constexpr LateFunction(LateLibrary &library, const char *name)
        : library_(library), name_(name) {}

    // Null when there is no such function.
    Signature *address() {
        Signature *function = address_.load(std::memory_order_relaxed);
        if (function == nullptr) [[unlikely]] {
            function = reinterpret_cast<Signature *>(library_.find(name_));
            address_.store(function, std::memory_order_relaxed);
        }
        return function;
    }

    template <class... Arguments> auto operator()(Arguments... arguments) {
        Signature *const function = address();
        if (function == nullptr) [[unlikely]] {
            library_.endWithout(name_);
        }
        return function(arguments...);
    }

private:
    LateLibrary &library_;
    const char *name_;
    std::atomic<Signature *> address_ = nullptr;
};

} // namespace zor

#endif

// The critical section over creation and end of run units.
#ifndef ZOR_RUN_INIT_SECTION_H
#define ZOR_RUN_INIT_SECTION_H

namespace zor {

// Gives InitLock back, whichever thread holds it; does nothing when none does. Proccom.lockhook
// holds this address while the section runs, so that an abnormal end does not wait for it.
void releaseInitLock();

// Sets the hook anew for a Proccom that was made inside the section.
void rearmLockHook();

// Holds InitLock for a scope (not inside the transaction monitor) and has the lock hook set. A
// thread that is inside already, as in a program that the end of a run unit calls, stays inside.
class InitSection {
public:
    InitSection();
    ~InitSection();
    InitSection(const InitSection &) = delete;
    InitSection &operator=(const InitSection &) = delete;

private:
    bool entered_;
};

} // namespace zor

#endif

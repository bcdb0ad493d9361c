// The critical section over creation and end of run units.
#ifndef ZOR_RUN_INIT_SECTION_H
#define ZOR_RUN_INIT_SECTION_H

namespace zor {

// Gives InitLock back when this section's holder still has it; Proccom.lockhook holds this address
// while the section runs, so that an abnormal end inside it does not wait for itself.
void leaveInitSection();

// Takes InitLock (not inside the transaction monitor) and sets the lock hook.
void enterInitSection();

// Sets the hook anew for a Proccom that was made inside the section.
void rearmLockHook();

class InitSection {
public:
    InitSection() { enterInitSection(); }
    ~InitSection() { leaveInitSection(); }
    InitSection(const InitSection &) = delete;
    InitSection &operator=(const InitSection &) = delete;
};

} // namespace zor

#endif

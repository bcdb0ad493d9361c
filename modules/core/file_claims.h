// Which programs may have a file open at the same time. An open file holds locks on bytes far
// beyond any data, which say what it does and what it denies others; they belong to its descriptor,
// so two opens in one process stand against each other like two processes.
#ifndef ZOR_MODULES_CORE_FILE_CLAIMS_H
#define ZOR_MODULES_CORE_FILE_CLAIMS_H

#include <cstdint>
#include <fcntl.h>

#include "core/outcome.h"
#include "fcb.h"

namespace zor::modules {

struct Claim {
    bool reads;
    bool writes;
    bool deniesReaders;
    bool deniesWriters;
};

// What the description's share and lock modes mean for a mode of OPEN. Without them, INPUT shares
// with readers and everything else with nobody.
Claim claimOf(const FileDescription &description, uint16_t mode);

// Takes the claim: false when it and another's are against each other. A file system without locks
// lets everything pass.
bool take(int descriptor, const Claim &claim);

// Whether no other open has a claim to the file.
bool isAlone(int descriptor);

// Bytes of the region, for locks of another kind.
inline constexpr int64_t kClaimRegion = 0x7000000000000000;
inline constexpr int64_t kVerbByte = kClaimRegion + 16;
inline constexpr int64_t kRecordRegion = 0x6000000000000000;
inline constexpr int64_t kRecordBytes = 0x0FFFFFFFFFFFFFFF;

// Sets or clears a lock on bytes: type F_RDLCK, F_WRLCK or F_UNLCK. False when another holds one
// against it.
bool setLock(int descriptor, short type, int64_t start, int64_t length);

// Whether another holds any lock there.
bool othersHold(int descriptor, int64_t start);

// Holds a shared file still over a verb. Nothing for a file that no other program may write to.
class VerbLock {
public:
    // Without the right to write, just writers are kept out.
    VerbLock(int descriptor, bool shared, bool writable)
        : descriptor_(descriptor), held_(!shared || take(descriptor, writable)), shared_(shared) {}
    ~VerbLock() {
        if (shared_ && held_) {
            setLock(descriptor_, F_UNLCK, kVerbByte, 1);
        }
    }
    VerbLock(const VerbLock &) = delete;
    VerbLock &operator=(const VerbLock &) = delete;
    bool held() const { return held_; }

private:
    static bool take(int descriptor, bool writable);

    int descriptor_;
    bool held_;
    bool shared_;
};

} // namespace zor::modules

#endif

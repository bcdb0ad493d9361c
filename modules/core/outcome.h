// How a verb ended: the file status, and the extended status, which is an errno value or, from 1000
// on, a code of the file system.
#ifndef ZOR_MODULES_CORE_OUTCOME_H
#define ZOR_MODULES_CORE_OUTCOME_H

#include <cerrno>
#include <cstdint>

namespace zor::modules {

struct Outcome {
    int16_t status = 0;
    int32_t code = 0;

    constexpr bool good() const { return status < 10; }
};

inline constexpr Outcome kDone{};
inline constexpr Outcome kDuplicatesNoted{2, EEXIST};
inline constexpr Outcome kLengthDiffers{4, EMSGSIZE};
inline constexpr Outcome kOptionalAbsent{5, ENOENT};
inline constexpr Outcome kLineGoesOn{6, EMSGSIZE};
inline constexpr Outcome kEndOfFile{10, ESPIPE};
inline constexpr Outcome kOutOfSequence{21, EINVAL};
inline constexpr Outcome kDuplicateKey{22, EEXIST};
inline constexpr Outcome kNotFound{23, ESPIPE};
inline constexpr Outcome kBeyondFile{24, EFBIG};
inline constexpr Outcome kNotSupported{30, EOPNOTSUPP};
inline constexpr Outcome kNoStorage{30, ENOMEM};
inline constexpr Outcome kDamaged{30, EBADMSG};
inline constexpr Outcome kStillInVerb{30, EBUSY};
inline constexpr Outcome kModeNotSupported{37, EINVAL};
inline constexpr Outcome kAttributesDiffer{39, EINVAL};
inline constexpr Outcome kNoCurrentRecord{43, ENODATA};
inline constexpr Outcome kWrongLength{44, EMSGSIZE};
inline constexpr Outcome kNoNextRecord{46, ESPIPE};
inline constexpr Outcome kRecordLocked{51, EAGAIN};
inline constexpr Outcome kFileLocked{61, EBUSY};

// From the first code of a file system on, below which codes are errno values.
inline constexpr int32_t kFirstOwnCode = 1000;

// The outcome of a failed system call.
Outcome failureOf(int error);

} // namespace zor::modules

#endif

// The file statuses that the frame of files gives and asks for; a verb in the wrong state has its
// own in wrong_state.cpp, a file system in modules/core/outcome.h.
#ifndef ZOR_FILE_STATUSES_H
#define ZOR_FILE_STATUSES_H

#include "fcb.h"

namespace zor {

inline constexpr int16_t kAbsent = 5;      // an OPTIONAL file that is not there
inline constexpr int16_t kWithoutReel = 7; // the statement asks for a reel, and there is none
inline constexpr int16_t kFirstFailure = 10;
inline constexpr int16_t kAtEnd = 10;
inline constexpr int16_t kFirstInvalidKey = 20;
inline constexpr int16_t kLastInvalidKey = 24;
inline constexpr int16_t kFirstPermanentError = 30;
inline constexpr int16_t kNoList = 33;
inline constexpr int16_t kNoFile = 35;
inline constexpr int16_t kNotForConcatenation = 37;
inline constexpr int16_t kNoPermission = 91;
inline constexpr int16_t kUnreadable = 93; // or no storage for its name
inline constexpr int16_t kBadName = 95;
inline constexpr int16_t kNoModule = 96;

inline bool isFailure(const FCB &file) {
    return file.status >= kFirstFailure;
}

} // namespace zor

#endif

// Who this library is: shown under the debug switch and when the library's file is executed.
#ifndef ZOR_RUN_BUILD_IDENTIFICATION_H
#define ZOR_RUN_BUILD_IDENTIFICATION_H

namespace zor {

inline constexpr char kBuildIdentification[] = "liblvd4_32r.so 6.1.0, COBOL run-time, i386";

// One line each, behind a tab.
inline constexpr const char *kIdentificationStrings[] = {
    "run-unit control 6.1.0",
    "dynamic programs 6.1.0",
    "file services 6.1.0",
    "sort 6.1.0",
    "fixed-decimal arithmetic 6.1.0",
    "numeric services 6.1.0",
    "data movement and text 6.1.0",
    "code pages and national data 6.1.0",
};

} // namespace zor

#endif

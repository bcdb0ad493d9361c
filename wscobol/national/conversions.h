// Conversions that report like the exported ones, for those that are made of them.
#ifndef ZOR_NATIONAL_CONVERSIONS_H
#define ZOR_NATIONAL_CONVERSIONS_H

#include <cstdint>

#include "national/converter.h"

namespace zor {

// To and from the code page of the name: message 221 or 222 has been issued when the status is not
// 0. Lengths are bytes; that of the name may be kNativePage or kEbcdicPage of services.h.
Produced convertToNational(const void *source, int32_t sourceBytes, void *target,
                           int32_t targetBytes, const char *name, int32_t nameLength);
Produced convertFromNational(const void *source, int32_t sourceBytes, void *target,
                             int32_t targetBytes, const char *name, int32_t nameLength);

} // namespace zor

#endif

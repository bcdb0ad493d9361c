// The conversion of native data to EBCDIC, as far as the class tests need it.
#ifndef ZOR_TEXT_EBCDIC_CONVERSION_H
#define ZOR_TEXT_EBCDIC_CONVERSION_H

#include "zor_abi.h"

ZOR_BEGIN_C

// Weak: null in a library that is built without the conversions.
ZOR_EXPORT int32_t _zorConvToEBCDIC(const void *source, int32_t signedSourceLength, void *target,
                                    int32_t *signedTargetLength) __attribute__((weak));

ZOR_END_C

#endif

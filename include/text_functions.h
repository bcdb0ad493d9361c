/* The functions UPPER-CASE, LOWER-CASE, REVERSE and TRIM. Lengths are in bytes; one below 1 is that
 * of an empty item. */
#ifndef ZOR_TEXT_FUNCTIONS_H
#define ZOR_TEXT_FUNCTIONS_H

#include "zor_abi.h"

/* Values of the mode of the trims: what the data are. Blanks are removed when no set is given. */
enum {
    TRIM_BYTES = 1,
    TRIM_NATIONAL = 2,
    TRIM_DBCS_AS_NATIONAL = 3, /* national data; blanks are U+0020 and U+3000 */
    TRIM_BYTES_4 = 4           /* as TRIM_BYTES */
};

ZOR_BEGIN_C

/* Each byte in upper or lower case as the current C locale has it. Source and target may be the
 * same item. */
ZOR_EXPORT void _zorToUpper(int32_t length, const void *source, void *target);
ZOR_EXPORT void _zorToLower(int32_t length, const void *source, void *target);

/* The bytes, or the 2-byte units of a national item, in reverse order. Source and target may be the
 * same item. */
ZOR_EXPORT void _zorcReverse(int32_t length, const void *source, void *target);
ZOR_EXPORT void _Tvq_reverse(int32_t length, const void *source, void *target);
ZOR_EXPORT void _zorcReverseUnicode(void *target, const void *source, int32_t byteLength);

/* Remove the characters of a set from the left end, the right end or both, copy the rest to the
 * target and return its length. set 0, or a setLength below 1: blanks. Source and target may be the
 * same item. A mode that is not listed removes nothing. */
ZOR_EXPORT int32_t _zor_triml(int32_t sourceLength, const void *source, int32_t setLength,
                              const void *set, void *target, int32_t mode);
ZOR_EXPORT int32_t _zor_trimr(int32_t sourceLength, const void *source, int32_t setLength,
                              const void *set, void *target, int32_t mode);
ZOR_EXPORT int32_t _zor_trim(int32_t sourceLength, const void *source, int32_t setLength,
                             const void *set, void *target, int32_t mode);

ZOR_END_C

#endif

/* Class conditions. Every test returns 1 for true and 0 for false and reports nothing. Lengths are
 * in bytes; one below 1 is that of an empty item, which is of every class, but for
 * _zorcClasKanji and _zorcClasDBCS, whose lengths have a sign. */
#ifndef ZOR_CLASS_TESTS_H
#define ZOR_CLASS_TESTS_H

#include "zor_abi.h"

/* The low byte of the flags of the numeric tests: where the sign is. The national test knows the
 * separate ones alone. */
enum {
    CLASS_UNSIGNED = 0,
    CLASS_LEADING_SIGN = 1,      /* in the first byte */
    CLASS_TRAILING_SIGN = 2,     /* in the last byte */
    CLASS_LEADING_SEPARATE = 3,  /* a byte or unit of its own */
    CLASS_TRAILING_SEPARATE = 4, /* any value above it: the digits alone are tested */
    CLASS_FORM_MASK = 0x00FF
};

/* The second byte of these flags: any bit of it is as good as all. It makes the tests look at the
 * sign, each as told there. */
enum { CLASS_TEST_SIGN = 0xFF00 };

ZOR_BEGIN_C

/* ALPHABETIC, ALPHABETIC-UPPER, ALPHABETIC-LOWER: all bytes are blanks or the letters "A" to "Z"
 * or "a" to "z", whatever the locale. */
ZOR_EXPORT int32_t _zorcClasAlpha(const void *data, int32_t length);
ZOR_EXPORT int32_t _zorcClasAlphaUpper(const void *data, int32_t length);
ZOR_EXPORT int32_t _zorcClasAlphaLower(const void *data, int32_t length);

/* A class of the program's SPECIAL-NAMES: classTable has 256 entries, 0 for the bytes of the
 * class. */
ZOR_EXPORT int32_t _zorcClasUserDef(const void *data, int32_t length, const uint8_t *classTable);

/* NUMERIC of a packed item: digits, and a sign nibble of 0xA to 0xF; with CLASS_TEST_SIGN it must
 * be 0xC, 0xD or 0xF. The form is not looked at. */
ZOR_EXPORT int32_t _zorcClasPackedDec(uint32_t flags, const void *data, int32_t length);

/* NUMERIC of a zoned item, length with a separate sign. With CLASS_TEST_SIGN the byte that carries
 * an overpunched sign must have zone 0x3 or 0x7. The overpunch letters count as signs only while
 * COBOL_BCD_EBCDIC is set. */
ZOR_EXPORT int32_t _zorcClasZonedDec(uint32_t flags, const void *data, int32_t length);

/* KANJI and DBCS. A negative length (its magnitude counts) is that of data in EBCDIC form without
 * shift characters; other data are in the native code page, and must be double-byte characters
 * alone. What cannot be converted is of neither class. Issue message 907 and what the conversion
 * issues. */
ZOR_EXPORT int32_t _zorcClasKanji(const void *data, int32_t signedLength);
ZOR_EXPORT int32_t _zorcClasDBCS(const void *data, int32_t signedLength);

/* The tests of national items; NUMERIC is that of an unsigned one. */
ZOR_EXPORT int32_t _zoruClasNumeric(const void *data, int32_t length);
ZOR_EXPORT int32_t _zoruClasAlpha(const void *data, int32_t length);
ZOR_EXPORT int32_t _zoruClasUpper(const void *data, int32_t length);
ZOR_EXPORT int32_t _zoruClasLower(const void *data, int32_t length);

/* NUMERIC of a signed national item. With CLASS_TEST_SIGN a value of zero must have the sign
 * "+". */
ZOR_EXPORT int32_t _zoruSClasNumeric(uint32_t flags, const void *data, int32_t length);

ZOR_END_C

#endif

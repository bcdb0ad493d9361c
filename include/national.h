/* Conversion services: between national data, the native code page of the locale and the EBCDIC
 * code page, and by name to and from any other; moves, comparison and case of national data.
 *
 * National data are UTF-16 in the machine's byte order at an address of any alignment; the national
 * blank is 0x0020. Every length is in bytes, also that of national data. The native code page is
 * the code set of the locale, the EBCDIC one is chosen by the locale or EBCDIC_CODEPAGE:
 * codepage.h.
 *
 * A result that is a status is 0, or a positive status of the conversion library (ICU), after the
 * message has been issued:
 *    1  a length is negative                         7  storage is exhausted
 *    4  the code page is not known                  11  the end of the source cuts a character
 *   15  the target is too small                      2  the conversion library is not installed
 * Messages: 221 a converter cannot be opened, 222 a conversion fails, 224 a collating sequence
 * cannot be opened, 225 a change of case fails. They are warnings.
 *
 * A character that the target code page does not have, and bytes that are none in the source's,
 * become a substitution character; that is no error. A converter of the two code pages of the
 * process is opened once, one by name for each call. The services belong to one thread at a time;
 * the conversion library is loaded at their first use. Source and target do not overlap, except
 * where told. */
#ifndef ZOR_NATIONAL_H
#define ZOR_NATIONAL_H

#include "zor_abi.h"

/* Lengths of a code page's name with a meaning of their own: codepageName is not read then. */
enum { CODEPAGE_NATIVE = 0, CODEPAGE_EBCDIC = -1 };

ZOR_BEGIN_C

/* Converts to national data, or from it, in the code page of the name: codepageLength bytes, at
 * most 29, not terminated, or one of the CODEPAGE_ values. *targetLength is the target's capacity
 * before and the bytes produced after; where the call fails it stays. Nothing is written behind the
 * bytes produced. Returns a status. A character that the end of the source cuts is left out. To
 * national data message 222 then only informs, *targetLength is set, and the result is 11; from
 * national data (half a surrogate pair) it is an error like the others. */
ZOR_EXPORT int32_t _zorConvToUnicode(const void *source, int32_t sourceLength, void *target,
                                     int32_t *targetLength, const char *codepageName,
                                     int32_t codepageLength);
ZOR_EXPORT int32_t _zorConvFromUnicode(const void *source, int32_t sourceLength, void *target,
                                       int32_t *targetLength, const char *codepageName,
                                       int32_t codepageLength);

/* NATIONAL-OF and DISPLAY-OF of the native code page. They return the bytes produced, 0 where the
 * code page cannot be opened. The target holds the whole result: of NATIONAL-OF twice sourceLength
 * is always enough, of DISPLAY-OF sourceLength / 2 times _zorGetMaxCharSize. */
ZOR_EXPORT int32_t _Tvq_national_of(int32_t sourceLength, const void *source, void *target);
ZOR_EXPORT int32_t _Tvq_display_of(int32_t sourceLength, const void *source, void *target);

/* Convert the native code page to the EBCDIC one, and back. *targetLength is the target's capacity
 * before and the capacity left over after; where the call fails it stays. A character that the end
 * of the source cuts is left out and message 222 informs; that is no failure. Source and target may
 * be the same area. Return a status. */
ZOR_EXPORT int32_t _zorUniAtoE(const void *source, int32_t sourceLength, void *target,
                               int32_t *targetLength);
ZOR_EXPORT int32_t _zorUniEtoA(const void *source, int32_t sourceLength, void *target,
                               int32_t *targetLength);

/* Converts mixed native data to EBCDIC, where SO (0x0E) and SI (0x0F) enclose the double-byte
 * characters. The magnitudes of the lengths count; *signedTargetLength is the capacity before and
 * the bytes written after, 0 where the call fails. What does not fit is cut, as long as the whole
 * result has at most capacity * 5 / 3 + 1 bytes; a longer one fails with status 15.
 * A negative source length strips an SO at the beginning of the result and then an SI at its end.
 * Otherwise a negative target length appends an SI when the result has one SO more than SI.
 * A source of one byte, SO or SI, at a length of 1 is copied as it stands. Returns a status. */
ZOR_EXPORT int32_t _zorConvToEBCDIC(const void *source, int32_t signedSourceLength, void *target,
                                    int32_t *signedTargetLength);

/* Converts mixed EBCDIC data to the native code page. *signedTargetLength is the capacity before,
 * and after it the bytes produced, 0 where the call fails; the rest of the target is filled with
 * blanks behind the result or, with a negative target length, ahead of it.
 * A negative source length (its magnitude counts) announces double-byte characters: a source
 * without shift characters is taken as if SO and SI enclosed it, one that lacks some is repaired.
 * A source of one byte, SO or SI, at a length of 1 is copied as it stands, without blanks. Returns
 * a status. */
ZOR_EXPORT int32_t _zorConvToASCII(const void *source, int32_t signedSourceLength, void *target,
                                   int32_t *signedTargetLength);

/* Moves national data, cut or filled with national blanks to the target's length; a negative one
 * (its magnitude counts) means JUSTIFIED RIGHT. Returns 0. */
ZOR_EXPORT int32_t _zorMoveUnicode(void *target, int32_t signedTargetLength, const void *source,
                                   int32_t sourceLength);

/* Compares national data in the collating sequence of the locale, without the national blanks at
 * their ends: below 0, 0, above 0. A positive status where the sequence cannot be opened. */
ZOR_EXPORT int32_t _zorCompareUnicode(const void *left, int32_t leftLength, const void *right,
                                      int32_t rightLength);

/* Change the case by the rules of the locale; the result may be longer than the source.
 * *targetLength is the target's capacity before and the length of the result after, which is
 * returned as well. A zero character follows the result where the capacity has room for it. A
 * failure returns a status and leaves *targetLength. */
ZOR_EXPORT int32_t _zorUpperCaseUnicode(void *target, int32_t *targetLength, const void *source,
                                        int32_t sourceLength);
ZOR_EXPORT int32_t _zorLowerCaseUnicode(void *target, int32_t *targetLength, const void *source,
                                        int32_t sourceLength);

ZOR_END_C

#endif

/* The code pages of a process: the native one follows the locale, the EBCDIC one the locale or the
 * environment variable EBCDIC_CODEPAGE. They are chosen once; the choice stands in
 * Proccom.codepage, ebcdicname and localename, and never changes afterwards. */
#ifndef ZOR_CODEPAGE_H
#define ZOR_CODEPAGE_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* Chooses the code pages unless Proccom.codepage is 0 or above already. Sets LC_CTYPE from the
 * environment. Issues message 230: variant 3 when EBCDIC_CODEPAGE names no known code page (the
 * locale's default is taken), variant 2 when it names one of another locale (it is taken). */
ZOR_EXPORT void _zorcSetCodePages(void);

/* Chooses the code pages if needed, and copies the terminated texts Proccom.localename and
 * Proccom.ebcdicname; the buffers hold at least 25 and 15 bytes. */
ZOR_EXPORT void _zorGetLocaleCP(char *localeBuffer, char *ebcdicBuffer);

/* Chooses the code pages if needed, and gives the most bytes that a character takes in the current
 * locale. */
ZOR_EXPORT int32_t _zorGetMBCurMax(void);

/* Questions about any code page by its name: "QBX-" and a number ("QBX-1140", "QBX-01140",
 * "qbx-923_P100-1998") or the name of a code set ("UTF-8", "ISO8859-1"). Upper and lower case,
 * blanks, "-" and "_" make no difference. They set the conversion services of national.h up. */

/* Tells whether a converter can be opened for a code page: 0, or 1 when not. The name is length
 * bytes, at most 29, and need not be terminated. Issues no message. */
ZOR_EXPORT int32_t _zorValidateCPID(const char *name, int32_t length);

/* Gives the most bytes that a character takes in a code page, its shift characters included; 0, and
 * message 221, when the code page cannot be opened. The name is terminated. */
ZOR_EXPORT int32_t _zorGetMaxCharSize(const char *name);

/* Gives the CCSID of a code page, 0 when it has none; the name is terminated. Returns 0, 1 when
 * the CCSID is -1 or -2, which are of no use, and 2, after message 221 and with a CCSID of -1, when
 * the code page cannot be opened. */
ZOR_EXPORT int32_t _zorGetCCSID(const char *name, int32_t *ccsidOut);

ZOR_END_C

#endif

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

ZOR_END_C

#endif

/* File names that stand for several files: a list parted by ":", or a generation data group. OPEN
 * reads such a name's files one after the other. */
#ifndef ZOR_CONCAT_H
#define ZOR_CONCAT_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* Makes the list of the files that a terminated name stands for. code: the file system code, three
 * letters in any case, need not be terminated. create: 1 lets a relative reference to a generation
 * that does not exist yet, as "PAY(+1)", enter the group's catalogue.
 * Gives the list, which _zor_Concat_Free frees, and stores in *concatenated 1 for several files (a
 * ":" in the name, or a whole group), 0 for one generation. Gives null, with 0 in *concatenated,
 * when the name is a plain one; null, with 1 there, when it parts into more than 256 names or
 * storage is exhausted (nothing is issued). Failures of a catalogue are told on standard error and
 * make the name a plain one. */
ZOR_EXPORT void *_zor_Concat_Check(const char *name, int32_t *concatenated, int32_t create,
                                   const char *code);

/* The next file's name, terminated, at most 1023 bytes when it was formed from a reference; null at
 * the end of the list, also for a null list. A whole group gives its generations from the newest to
 * the oldest. The text may stand in a buffer of the process: it is valid until the next call of
 * this function and while the list lives. */
ZOR_EXPORT const char *_zor_Concat_Next(void *list);

/* Frees a list with its names; null is allowed. */
ZOR_EXPORT void _zor_Concat_Free(void *list);

ZOR_END_C

#endif

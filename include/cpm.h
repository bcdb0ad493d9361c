/* The program cache: loaded programs that outlive their run unit, so that the next run unit's CALL
 * finds them without a search. None of these functions takes a lock: whoever unloads a program sees
 * to it that no thread is running it. Without a Proccom they do nothing, except that enabling and
 * disabling still set the environment. The upper-case names are for programs. */
#ifndef ZOR_CPM_H
#define ZOR_CPM_H

#include "zor_abi.h"

ZOR_BEGIN_C

/* Reads COBOL_CPM_CACHE, or else COB_CPM_SIZE_MAX, into Proccom.cache, which stays as it is when
 * both are unset or empty. Returns 0. */
ZOR_EXPORT int32_t _zor_cpm_create(void);

/* Unload every cached program and close its file. While a run unit is active the programs stay
 * listed, without an entry address; otherwise they leave the cache. A file that does not close is
 * reported on stderr. The first is also the end of the cache at the end of the last run unit. */
ZOR_EXPORT void _zor_cpm_destroy(void);
ZOR_EXPORT void _zor_cpm_unload_all(void);
ZOR_EXPORT void ZOR_CPM_UNLOAD_ALL(void);

/* Unload one program likewise, by its zero-terminated name; 1, or 0 when it is not cached. */
ZOR_EXPORT int32_t _zor_cpm_unload(const char *name);
ZOR_EXPORT int32_t ZOR_CPM_UNLOAD(const char *name);

/* Switches the cache on, for this process and, by COBOL_CPM_CACHE, for its children. It comes into
 * force where the run-time starts the cache next. */
ZOR_EXPORT void _zor_cpm_enable(void);
ZOR_EXPORT void ZOR_CPM_ENABLE(void);

/* Unloads every cached program and switches the cache off likewise. */
ZOR_EXPORT void _zor_cpm_disable(void);
ZOR_EXPORT void ZOR_CPM_DISABLE(void);

/* Write to stderr whether a run unit is active, and a report on the cache, _zor_cpm_print also the
 * cached programs. */
ZOR_EXPORT void _zor_cpm_stats(void);
ZOR_EXPORT void ZOR_CPM_STATS(void);
ZOR_EXPORT void _zor_cpm_print(void);

ZOR_END_C

#endif

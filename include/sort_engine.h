/* The sort engine, libpelnx_32r.so: what compilers write for it, and what it answers. It orders the
 * records of SORT and MERGE statements; the run-time loads it and calls it.
 *
 * Equal records keep the order in which they came: that of the USING files and of the RELEASEs, and
 * in a MERGE that of the files.
 *
 * keytext says how records compare, without a blank in it, the most important key first:
 *
 *     keytext   = [ "w" [ 512 hexadecimal digits ] ";" ] key { ";" key }
 *     key       = direction type offset "+" length [ sign ]
 *     direction = "a" ascending | "d" descending
 *     type      = "t" text | "n" national | "z" zoned | "p" packed | "b" binary | "f" floating
 *     offset    = decimal number: bytes from the start of the record
 *     length    = decimal number: bytes, a separate sign included
 *     sign      = of "z": "L" leading separate, "T" trailing separate, "l" leading, "t" trailing;
 *                 of "p" and "b": "s"; without it the item is unsigned
 *
 *     at0+10;dp10+5s      text of 10 bytes ascending, then a signed packed key descending
 *
 * "w" gives text keys a collating sequence: the weights of the bytes 0 to 255, two digits each, or
 * without digits those of the sorting program (PCB.collatingWeights), if it has any. National keys
 * compare by the values of their UTF-16 units. A packed or zoned sign is positive as in sort.h's
 * keys: the nibble 0xC, the zone 0x30, a "+"; the sign of an unsigned packed key is not looked at.
 * Binary keys have 2, 4 or 8 bytes, floating ones 4 or 8, national ones an even number.
 *
 * A variable record may end within a key or ahead of it: text and national keys go on with blanks,
 * the others with bytes of zero. */
#ifndef ZOR_SORT_ENGINE_H
#define ZOR_SORT_ENGINE_H

#include "sort.h"

/* Bits of SortControl.options. */
enum {
    SORT_MEMORY = 0xFFFF,        /* megabytes to work in at most; 0: the default, which is half of
                                    the machine's but at most SORT_MEMORY_DEFAULT */
    SORT_ONE_THREAD = 0x00010000 /* work on the caller's thread alone */
};
enum { SORT_MEMORY_DEFAULT = 1024 };

/* Longest record in bytes where nothing tells: variable ones of a buffer or work file. */
enum { SORT_LONGEST = (int)SORT_BUFFER - (int)SORT_PREFIX };

/* The error word of a status that is not 0. The error value beside it is the errno of the call that
 * failed, or the file status (0 to 99) where a file is at fault. */
enum {
    SORT_ERROR_FUNCTION = 1,    /* a function that is none, or a MERGE without files */
    SORT_ERROR_ACTIVE = 2,      /* this thread is within a sort already */
    SORT_ERROR_KEY_TEXT = 3,    /* keytext is malformed; value: bytes of it that were good */
    SORT_ERROR_KEY_COUNT = 4,   /* keytext has another number of keys; value: how many */
    SORT_ERROR_KEY_OUTSIDE = 5, /* a key ends behind the longest record; value: which, from 1 */
    SORT_ERROR_LENGTH = 6,      /* fixed records of length 0 */
    SORT_ERROR_STORAGE = 7,     /* no storage */
    SORT_ERROR_INPUT_OPEN = 10, /* an input file or the input's work file cannot be opened */
    SORT_ERROR_INPUT_READ = 11, /* it cannot be read, or closed */
    SORT_ERROR_INPUT_LONG =
        12, /* a record is longer than those that are sorted; value: its bytes */
    SORT_ERROR_INPUT_DAMAGED = 13, /* buffer or work file does not end with a whole record, or a
                                      prefix is wrong */
    SORT_ERROR_INPUT_ORDER = 14,  /* an input of MERGE is not in order; value: which file, from 1 */
    SORT_ERROR_OUTPUT_OPEN = 20,  /* an output file or work file cannot be opened */
    SORT_ERROR_OUTPUT_WRITE = 21, /* it cannot be written, or closed */
    SORT_ERROR_OUTPUT_LONG = 22,  /* a record is longer than those of an output; value: its bytes */
    SORT_ERROR_OUTPUT_FULL = 23,  /* the records do not fit in the output buffer */
    SORT_ERROR_WORK_OPEN = 30,    /* no file can be made in the folder for work files */
    SORT_ERROR_WORK_WRITE = 31,   /* it cannot be written: the file system is full, mostly */
    SORT_ERROR_WORK_READ = 32,
    SORT_ERROR_ENDED = 40 /* the sort was ended while it was at work; not reported */
};

ZOR_BEGIN_C

/* As the type SortMerge of sort.h tells; gives SORT_GOOD, or SORT_BAD with an error word. Files are
 * opened and closed here: those of a SORT one after the other, all of its input ahead of its
 * output; those of a MERGE all at once. READ is told FCB_AT_END and FCB_NEXT. A record goes into
 * fixed ones that are longer with blanks behind it. After a failure the files are closed, without
 * USE procedures, and no output work file is left (a device or a link stays). */
ZOR_EXPORT int32_t sortmerge(int32_t function, RecordDesc recdesc, RecordDesc outdesc,
                             const char *inputwork, uint32_t inputbytes, uint8_t *inputbuffer,
                             int32_t inputcount, struct FCB **inputfcbs, const char *outputwork,
                             uint32_t outputsize, uint8_t *outputbuffer, int32_t outputcount,
                             struct FCB **outputfcbs, int32_t keycount, const char *keytext,
                             uint32_t options, const char *sortdir, int32_t *errorword,
                             int32_t *errorvalue, struct IPCB *ipcb);

ZOR_END_C

#endif

/* SORT and MERGE of files, RELEASE and RETURN, and SORT of a table. The run-time frames a SORT of
 * files; a sort engine, a library of its own, orders the records. */
#ifndef ZOR_SORT_H
#define ZOR_SORT_H

#include "fcb.h"
#include "pcb.h"
#include "zor_abi.h"

/* Values of function in _zorSortMerge; SORT_FILES, MERGE_FILES and SORT_END in the engine's call.
 */
enum {
    SORT_FILES = 1,
    MERGE_FILES = 2,
    SORT_INPUT_DONE = 3, /* the INPUT PROCEDURE has ended */
    SORT_FAILED = 4,     /* the program reports a failure of its own */
    SORT_END = 11        /* end of all sorting on this thread */
};

/* Values of SORT-RETURN. The engine's status may be any other number, which is a failure too. */
enum { SORT_GOOD = 0, SORT_BAD = 16 };

/* RecordDesc.format: this value is variable records, any other fixed ones. */
enum { SORT_VARIABLE = 2 };

/* A variable record in a buffer or work file stands behind its own length and that of this prefix,
 * a 32-bit number in native order. A fixed record has no prefix. */
enum { SORT_PREFIX = 4 };

/* Bytes of the buffer that RELEASE fills and RETURN empties. */
enum { SORT_BUFFER = 262144 };

/* What a SORT or MERGE statement is given beside its files. */
struct SortControl {
    int16_t *sortreturn; /* SORT-RETURN */
    int32_t checked;   /* not 0: the program looks at SORT-RETURN, and no message tells a failure */
    uint32_t options;  /* handed to the engine */
    int32_t msgarg;    /* shown in the message that tells a failure */
    struct IPCB *ipcb; /* the sorting program's */
};
ZOR_LAYOUT(SortControl, sortreturn, 0);
ZOR_LAYOUT(SortControl, checked, 4);
ZOR_LAYOUT(SortControl, options, 8);
ZOR_LAYOUT(SortControl, msgarg, 12);
ZOR_LAYOUT(SortControl, ipcb, 16);
ZOR_SIZE(SortControl, 20);

struct RecordDesc {
    int32_t format;  /* SORT_VARIABLE, or fixed */
    int32_t engine;  /* for the engine alone */
    uint32_t length; /* bytes of a fixed record */
};
ZOR_LAYOUT(RecordDesc, format, 0);
ZOR_LAYOUT(RecordDesc, engine, 4);
ZOR_LAYOUT(RecordDesc, length, 8);
ZOR_SIZE(RecordDesc, 12);

struct FileList {
    int32_t count; /* 0: an INPUT or OUTPUT PROCEDURE stands in place of files */
    struct FCB **fcbs;
};
ZOR_LAYOUT(FileList, count, 0);
ZOR_LAYOUT(FileList, fcbs, 4);
ZOR_SIZE(FileList, 8);

/* Values of SortKey.type. */
enum {
    SORT_KEY_TEXT = 1,     /* by the collating table, if there is one */
    SORT_KEY_ZONED = 2,    /* a sign as format tells */
    SORT_KEY_BINARY = 3,   /* of 2, 4 or 8 bytes in native order, signed as format tells; of any
                              other length it does not count */
    SORT_KEY_PACKED = 4,   /* a positive sign is the nibble 0xC */
    SORT_KEY_FLOAT = 5,    /* IEEE form of up to 8 bytes, native order */
    SORT_KEY_NATIONAL = 6, /* UTF-16 units; compared byte by byte as they stand */
    SORT_KEY_TYPES = 6
};

/* Values of SortKey.format. */
enum {
    SORT_SIGN_LEADING_SEPARATE = 0x01, /* "+" or "-", within length */
    SORT_SIGN_TRAILING_SEPARATE = 0x02,
    SORT_SIGN_LEADING = 0x04, /* in the zone of a digit, 0x30 when positive */
    SORT_SIGN_TRAILING = 0x08,
    SORT_BINARY_SIGNED = 0x10
};

/* SortKey.order: this bit is ascending, clear descending. */
enum { SORT_ASCENDING = 0x01 };

/* A key of a table's elements. */
struct SortKey {
    uint32_t offset; /* bytes from the start of the element */
    uint32_t length; /* bytes */
    uint32_t type;
    uint8_t format;
    uint8_t order;
    uint8_t reserved14[2];
};
ZOR_LAYOUT(SortKey, offset, 0);
ZOR_LAYOUT(SortKey, length, 4);
ZOR_LAYOUT(SortKey, type, 8);
ZOR_LAYOUT(SortKey, format, 12);
ZOR_LAYOUT(SortKey, order, 13);
ZOR_SIZE(SortKey, 16);

typedef struct SortControl SortControl;
typedef struct RecordDesc RecordDesc;
typedef struct FileList FileList;
typedef struct SortKey SortKey;

ZOR_BEGIN_C

/* The entry "sortmerge" of the sort engine, libpelnx_32r.so: sorts or merges, and gives 0 or a
 * status that becomes SORT-RETURN. Function SORT_END, with 0 for all other arguments, gives up what
 * it is at on this thread.
 *
 * Input: the files of inputfcbs, read through their vectors, when inputcount is not 0. Otherwise
 * records of recdesc: first those of the file inputwork, unless it is 0, then the inputbytes bytes
 * at inputbuffer.
 * Output: each of the files of outputfcbs when outputcount is not 0. Otherwise records of outdesc:
 * into the file outputwork, which is made anew, or, when that is 0, into the outputsize bytes at
 * outputbuffer, which may be the inputbuffer.
 * keytext is terminated; sortdir is the folder for further work files, without a final "/" unless
 * it was given one. *errorword, 0 at the call, takes the engine's error word. *errorvalue, 0 as
 * well, takes an errno that caused the failure; it stands in for an error word that is 0. */
typedef int32_t (*SortMerge)(int32_t function, RecordDesc recdesc, RecordDesc outdesc,
                             const char *inputwork, uint32_t inputbytes, uint8_t *inputbuffer,
                             int32_t inputcount, struct FCB **inputfcbs, const char *outputwork,
                             uint32_t outputsize, uint8_t *outputbuffer, int32_t outputcount,
                             struct FCB **outputfcbs, int32_t keycount, const char *keytext,
                             uint32_t options, const char *sortdir, int32_t *errorword,
                             int32_t *errorvalue, struct IPCB *ipcb);

/* A step of a SORT or MERGE statement; SORT-RETURN is set at its end.
 *   SORT_FILES, MERGE_FILES: begins one; with USING files it sorts at once. With an INPUT PROCEDURE
 *   the program goes on with _zorRelease and, at its end, SORT_INPUT_DONE; with an OUTPUT PROCEDURE
 *   it takes the records by _zorReturn after that.
 *   SORT_INPUT_DONE: sorts what was released; of the arguments only control counts.
 *   SORT_FAILED: SORT-RETURN becomes 16, and the statement is given up.
 *   SORT_END: ends what the thread is at, gives the work files back and lets go of the engine,
 *   which the next sort loads again; without any other argument.
 * keytext, for the engine, ends at its first blank; it is not changed. The blocks are copied; the
 * FCBs, their arrays and the halfword of SORT-RETURN must stay until the statement is through.
 * When the engine cannot be loaded SORT-RETURN is left alone, and stderr tells why. Any other
 * SORT-RETURN than 0 issues message 26 unless control->checked is set; a sort within the engine's
 * own call issues 13, and storage that cannot be had 907. */
ZOR_EXPORT void _zorSortMerge(int32_t function, SortControl *control, const RecordDesc *recdesc,
                              int32_t keycount, const char *keytext, const FileList *inputs,
                              const FileList *outputs, const RecordDesc *outdesc);

/* RELEASE: takes a record of length bytes; a fixed one that is short is padded with blanks. *rc
 * becomes 16 when the record is longer than a fixed record or the buffer, no INPUT PROCEDURE is in
 * force, or the work file cannot be written, and is left alone otherwise. */
ZOR_EXPORT void _zorRelease(uint32_t length, const void *record, int16_t *rc);

/* RETURN: stores the next record at record and its length in *length. *eof becomes 1 when there is
 * none, and is left alone otherwise. So it does when the work file cannot be read; SORT-RETURN
 * becomes 16 then, which issues message 26 unless control->checked was set. */
ZOR_EXPORT void _zorReturn(uint32_t *length, void *record, int16_t *eof);

/* The error word of the engine that the calling thread's last sort left, 0 when there is none. */
ZOR_EXPORT void ZORGETSORTERRNO(int32_t *value);
ZOR_EXPORT void zorGetSortErrno(int32_t *value);

/* SORT of a table: orders its count elements of elementsize bytes in place, by keycount keys, whose
 * addresses (const SortKey *) are the further arguments, the most important first. collation has
 * the 256 weights of the program's collating sequence for keys of text, or is 0. Elements whose
 * keys are equal stand in the order of their old places, numbered from 1 in 32 bits and compared
 * from the low byte on: as they stood, as long as the table has below 256 elements. A type of key
 * that is not known leaves the table as it is, silently. Issues message 907 when there is no
 * storage for the keys. */
ZOR_EXPORT void _zorcTSort(int32_t unused, void *table, uint32_t elementsize, int32_t count,
                           const uint8_t *collation, int32_t keycount, ...);

ZOR_END_C

#endif

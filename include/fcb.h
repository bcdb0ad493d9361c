/* File control block and compiled file description. An ordinary file's FCB is storage of generated
 * code; the library allocates those of EXTERNAL files.
 *
 * What a verb means beyond its vector stands in fields of the FCB that generated code writes before
 * the call: `verbopts`, `keyref`, `relation`, `keylength`, `relative`, `reclen`, `advance`. A
 * module leaves its answers in `status`, `status2`, `relative` and `reclen`, END-OF-PAGE in
 * `flags`, and the record at `data`. */
#ifndef ZOR_FCB_H
#define ZOR_FCB_H

#include "pcb.h"

/* Bits of FCB.openmode and FCB.curmode. */
enum {
    FCB_INPUT = 0x8000,
    FCB_OUTPUT = 0x4000,
    FCB_IO = 0x2000,
    FCB_EXTEND = 0x1000,
    FCB_OPEN_NO_REWIND = 0x0400
};

/* Bits of FCB.closemode. */
enum {
    FCB_CLOSE_NO_USE = 0x0001,    /* no USE procedure runs for this close */
    FCB_CLOSE_NEXT_FILE = 0x0400, /* internal step to the next concatenated file */
    FCB_CLOSE_REEL = 0x0800,      /* with 0x2000 and 0x4000: REEL, UNIT and NO REWIND forms */
    FCB_CLOSE_LOCK = 0x1000,
    FCB_CLOSE_FORMS = 0x6800 /* any of those forms */
};

/* Bits of FCB.flags. */
#define FCB_NAME_ALLOCATED 0x00400000u
#define FCB_CONCATENATED 0x00800000u
#define FCB_SHARED_EXTERNAL                                                                        \
    0x01000000u                     /* description found by descindex in the calling program       \
                                     */
#define FCB_END_OF_PAGE 0x00200000u /* WRITE to a LINAGE file: set or cleared by each */
#define FCB_POSITIONED 0x02000000u  /* set by a good OPEN or START, cleared by a failed START */
#define FCB_READ_GOOD 0x08000000u   /* set by a good READ, cleared by OPEN and a failed READ */
#define FCB_ABSENT_OPTIONAL 0x80000000u

/* Values of FCB.verb and FCB.lastverb. */
enum {
    FCB_VERB_CLOSE = 1,
    FCB_VERB_OPEN = 2,
    FCB_VERB_UNLOCK = 4,
    FCB_VERB_DELETE = 8,
    FCB_VERB_START = 16,
    FCB_VERB_REWRITE = 32,
    FCB_VERB_WRITE = 64,
    FCB_VERB_READ = 128
};

/* Bits of FCB.verbopts. A READ without NEXT and PREVIOUS is sequential when the file's access is,
 * else by key or relative number. */
#define FCB_INVALID_KEY 0x80000000u
#define FCB_AT_END 0x20000000u
#define FCB_NEXT 0x02000000u
#define FCB_PREVIOUS 0x01000000u
#define FCB_WITH_LOCK 0x00800000u /* READ: keep the record locked */
#define FCB_NO_LOCK 0x00400000u   /* READ: lock nothing, respect no lock */

/* Values of FCB.relation: where START puts the file position. FIRST and LAST look at no key. */
enum {
    FCB_EQUAL = 0,
    FCB_GREATER = 1,
    FCB_NOT_LESS = 2,
    FCB_LESS = 3,
    FCB_NOT_GREATER = 4,
    FCB_FIRST = 5,
    FCB_LAST = 6
};

/* Values of FCB.advancekind: WRITE with ADVANCING; the line count is in FCB.advance. */
enum {
    FCB_ADVANCE_NONE = 0,
    FCB_BEFORE_LINES = 1,
    FCB_AFTER_LINES = 2,
    FCB_BEFORE_PAGE = 3,
    FCB_AFTER_PAGE = 4
};

/* Bits of FileDescription.assign. */
enum {
    FILE_OPTIONAL = 0x80,
    FILE_ENVIRONMENT = 0x20, /* the assignment is an environment variable's name */
    FILE_WORD = 0x08,        /* the assignment is a word, or */
    FILE_LITERAL = 0x04,     /* a literal: both may have a prefix */
    FILE_EXTERNAL = 0x02
};

/* Values of FileDescription.organization; 0 is record sequential. */
enum { FILE_LINE_SEQUENTIAL = 0x40, FILE_INDEXED = 0x20, FILE_RELATIVE = 0x10 };

/* FileDescription.access: this bit alone is sequential access, 0 random, FILE_DYNAMIC dynamic. */
enum { FILE_SEQUENTIAL = 0x80, FILE_DYNAMIC = 0x40 };

/* FileDescription.recfmt: 0 fixed records of `maxrec` bytes, else variable, `minrec` to `maxrec`.
 */
enum { FILE_FIXED = 0, FILE_VARIABLE = 1 };

/* Low three bits of FileDescription.lockmode and, for sharing, of statusflags. */
enum { FILE_LOCK_NONE = 0, FILE_LOCK_MANUAL = 1, FILE_LOCK_AUTOMATIC = 2, FILE_LOCK_EXCLUSIVE = 3 };
enum { FILE_SHARE_DEFAULT = 0, FILE_SHARE_NONE = 1, FILE_SHARE_READ = 2, FILE_SHARE_ALL = 3 };
enum { FILE_MODE_MASK = 0x07 };

/* Bits of FileDescription.statusflags above the share mode. */
enum {
    FILE_LOCK_COUNT = 0x08,
    FILE_STATUS_NATIONAL = 0x10, /* status digits are 16-bit */
    FILE_STATUS2_EBCDIC = 0x40,
    FILE_STATUS_EBCDIC = 0x80
};

/* Bits of FileDescription.linageflags. */
enum { FILE_LINAGE = 0x80, FILE_FOOTING = 0x40, FILE_TOP = 0x20, FILE_BOTTOM = 0x10 };

/* A name record: the RELATIVE KEY has one; LINAGE four, for itself, FOOTING, TOP and BOTTOM. It is
 * only compared as a whole, between the programs of an EXTERNAL file: write the name and the value
 * in any form, in the same way each time, and zeros into the rest. */
enum { FILE_NAME_RECORD_BYTES = 36 };

/* Bits of FileKey.attribute. */
enum { FILE_KEY_DUPLICATES = 0x01 };

struct FCB;

/* A USE procedure. It is called with 0, 0 and the word; a GO TO may leave it. */
struct UseProcedure {
    void (*routine)(int32_t zero, int32_t zeroToo, void *word);
    void *word;
};
ZOR_LAYOUT(UseProcedure, word, 4);
ZOR_SIZE(UseProcedure, 8);

/* Elements of FCB.usetable: the modes that a procedure is for, and the file alone. */
enum { USE_INPUT, USE_OUTPUT, USE_IO, USE_EXTEND, USE_FILE, USE_ELEMENTS };

/* An operation of a file: generated code calls it through the FCB. */
typedef void (*FileOperation)(struct FCB *fcb, struct IPCB *ipcb);
typedef void (*FileUse)(struct FCB *fcb, int32_t usecode, struct IPCB *ipcb);

/* 212 bytes. Bytes not named belong to generated code and the file-system modules. */
struct FCB {
    char eyecatcher[3]; /* "FCB" */
    uint8_t level;      /* not 0: the block has the unlock vector */
    int32_t descindex;  /* one-based index of this file in PCB.fcbsrc */
    uint8_t fsid;       /* file system number of the open */
    char fscode[3];     /* its code, three letters */
    uint8_t deffsid;    /* default file system number and code */
    char deffscode[3];
    uint32_t relative;  /* relative record number, from 1: to a verb by number, from a READ or WRITE
                           in sequence */
    void **vfs;         /* function table of the module, or 0 */
    uint16_t openmode;  /* mode of the OPEN being done */
    uint16_t curmode;   /* mode in force, 0 when the file is closed */
    uint16_t closemode; /* mode of the CLOSE */
    uint16_t lastclose; /* closemode of the last CLOSE */
    uint32_t flags;
    struct FileDescription *desc;
    int16_t status;    /* file status, 0 to 99 */
    uint8_t lastverb;  /* verb last finished */
    uint8_t verb;      /* verb running */
    uint32_t verbopts; /* set by generated code: 0x80000000 INVALID KEY, 0x20000000 AT END */
    int32_t reclen;    /* bytes of the record: to WRITE and REWRITE of a variable one, from READ */
    int16_t advance;   /* WRITE ADVANCING: lines */
    uint8_t advancekind; /* FCB_ADVANCE_NONE ... */
    uint8_t reserved55;
    char *name;         /* file name in use */
    uint16_t keylength; /* START: leading bytes of the key that count; 0: all */
    uint8_t keyref;     /* READ by key, START: index in the key table, 0 the prime key */
    uint8_t relation;   /* START: FCB_EQUAL ... */
    void *record;       /* record area; its first word points back to the FCB */
    uint8_t *data;      /* the record's data: record + 32 */
    void *modhandle1;   /* module data, freed at CLOSE */
    void *modhandle2;
    int32_t maxrec; /* maximum record length in bytes */
    uint8_t reserved84[4];
    int32_t position;
    uint8_t reserved92[4];
    uint8_t openstate;
    uint8_t reserved97[3];
    int32_t linageset[4]; /* LINAGE values of the file: lines, footing, top, bottom */
    int32_t linage[4];    /* current LINAGE values */
    int32_t linecount;
    int32_t line;
    uint8_t reserved140;
    uint8_t openkind;
    uint8_t reserved142[2];
    FileOperation read;
    FileOperation write;
    FileOperation rewrite;
    FileOperation start;
    FileOperation delete_;
    FileOperation close;
    FileOperation open;
    FileUse use;
    struct UseProcedure **usetable; /* USE_ELEMENTS addresses, each may be 0; 0: no procedure */
    uint8_t reserved180[4];
    void *concat;    /* list of concatenated files, or 0 */
    int32_t status2; /* extended status value */
    uint8_t reserved192[8];
    FileOperation unlock;
    uint8_t reserved204[8];
};
ZOR_LAYOUT(FCB, level, 3);
ZOR_LAYOUT(FCB, descindex, 4);
ZOR_LAYOUT(FCB, fsid, 8);
ZOR_LAYOUT(FCB, fscode, 9);
ZOR_LAYOUT(FCB, deffsid, 12);
ZOR_LAYOUT(FCB, deffscode, 13);
ZOR_LAYOUT(FCB, relative, 16);
ZOR_LAYOUT(FCB, vfs, 20);
ZOR_LAYOUT(FCB, openmode, 24);
ZOR_LAYOUT(FCB, curmode, 26);
ZOR_LAYOUT(FCB, closemode, 28);
ZOR_LAYOUT(FCB, lastclose, 30);
ZOR_LAYOUT(FCB, flags, 32);
ZOR_LAYOUT(FCB, desc, 36);
ZOR_LAYOUT(FCB, status, 40);
ZOR_LAYOUT(FCB, lastverb, 42);
ZOR_LAYOUT(FCB, verb, 43);
ZOR_LAYOUT(FCB, verbopts, 44);
ZOR_LAYOUT(FCB, reclen, 48);
ZOR_LAYOUT(FCB, advance, 52);
ZOR_LAYOUT(FCB, advancekind, 54);
ZOR_LAYOUT(FCB, name, 56);
ZOR_LAYOUT(FCB, keylength, 60);
ZOR_LAYOUT(FCB, keyref, 62);
ZOR_LAYOUT(FCB, relation, 63);
ZOR_LAYOUT(FCB, record, 64);
ZOR_LAYOUT(FCB, data, 68);
ZOR_LAYOUT(FCB, modhandle1, 72);
ZOR_LAYOUT(FCB, modhandle2, 76);
ZOR_LAYOUT(FCB, maxrec, 80);
ZOR_LAYOUT(FCB, position, 88);
ZOR_LAYOUT(FCB, openstate, 96);
ZOR_LAYOUT(FCB, linageset, 100);
ZOR_LAYOUT(FCB, linage, 116);
ZOR_LAYOUT(FCB, linecount, 132);
ZOR_LAYOUT(FCB, line, 136);
ZOR_LAYOUT(FCB, openkind, 141);
ZOR_LAYOUT(FCB, read, 144);
ZOR_LAYOUT(FCB, write, 148);
ZOR_LAYOUT(FCB, rewrite, 152);
ZOR_LAYOUT(FCB, start, 156);
ZOR_LAYOUT(FCB, delete_, 160);
ZOR_LAYOUT(FCB, close, 164);
ZOR_LAYOUT(FCB, open, 168);
ZOR_LAYOUT(FCB, use, 172);
ZOR_LAYOUT(FCB, usetable, 176);
ZOR_LAYOUT(FCB, concat, 184);
ZOR_LAYOUT(FCB, status2, 188);
ZOR_LAYOUT(FCB, unlock, 200);
ZOR_SIZE(FCB, 212);

/* One key of an indexed file; the prime key is the first of the table. */
struct FileKey {
    uint8_t reserved0[4];
    int32_t position;  /* offset in the record, bytes from 0 */
    uint8_t attribute; /* FILE_KEY_DUPLICATES */
    uint8_t reserved9;
    uint16_t length; /* bytes */
};
ZOR_LAYOUT(FileKey, position, 4);
ZOR_LAYOUT(FileKey, attribute, 8);
ZOR_LAYOUT(FileKey, length, 10);
ZOR_SIZE(FileKey, 12);

/* Compiled file description, laid out by the compiler; PCB.fcbsrc is an array of their addresses.
 */
struct FileDescription {
    uint8_t reserved0[3];
    uint8_t lockinfo; /* not 0: the share and lock fields are in force */
    int32_t index;    /* copied to FCB.descindex */
    uint8_t fsid;     /* compiled file system number and code */
    char fscode[3];
    uint8_t organization; /* 0x40 line sequential, 0x20 indexed, 0x10 relative */
    uint8_t access;       /* top bit set: sequential access */
    uint8_t recfmt;       /* record format */
    uint8_t assign;       /* FILE_OPTIONAL, FILE_EXTERNAL and the kind of assignment */
    int32_t maxrec;       /* record lengths in bytes */
    int32_t minrec;
    uint8_t reserved24[4];
    int32_t nkeys;
    char filename[31]; /* COBOL file name, terminated */
    uint8_t reserved63[13];
    int16_t assignlen;  /* length of the assignment name */
    int16_t status2len; /* length of the extended status area */
    uint8_t lockmode;
    uint8_t linageflags; /* 0x80 LINAGE; 0x40 FOOTING, 0x20 TOP, 0x10 BOTTOM */
    uint8_t statusflags;
    uint8_t reserved83[5];
    int32_t statusoffset; /* offset of FILE STATUS from the pointer at statusbase */
    int32_t status2offset;
    int32_t keyoffset;    /* offset in this description of the key table, 12 bytes a key */
    int32_t reloffset;    /* offset of the RELATIVE KEY name record, 0 if none */
    int32_t lockoffset;   /* offset of 8 bytes of lock data, 0 if none */
    int32_t linageoffset; /* offset of the LINAGE record */
    uint8_t reserved112[8];
    void **recordptr; /* address of a pointer to the record area */
    const char *assignname;
    uint8_t **statusbase;
    uint8_t **status2base;
};
ZOR_LAYOUT(FileDescription, lockinfo, 3);
ZOR_LAYOUT(FileDescription, index, 4);
ZOR_LAYOUT(FileDescription, fsid, 8);
ZOR_LAYOUT(FileDescription, organization, 12);
ZOR_LAYOUT(FileDescription, access, 13);
ZOR_LAYOUT(FileDescription, recfmt, 14);
ZOR_LAYOUT(FileDescription, assign, 15);
ZOR_LAYOUT(FileDescription, maxrec, 16);
ZOR_LAYOUT(FileDescription, minrec, 20);
ZOR_LAYOUT(FileDescription, nkeys, 28);
ZOR_LAYOUT(FileDescription, filename, 32);
ZOR_LAYOUT(FileDescription, assignlen, 76);
ZOR_LAYOUT(FileDescription, status2len, 78);
ZOR_LAYOUT(FileDescription, lockmode, 80);
ZOR_LAYOUT(FileDescription, linageflags, 81);
ZOR_LAYOUT(FileDescription, statusflags, 82);
ZOR_LAYOUT(FileDescription, statusoffset, 88);
ZOR_LAYOUT(FileDescription, status2offset, 92);
ZOR_LAYOUT(FileDescription, keyoffset, 96);
ZOR_LAYOUT(FileDescription, reloffset, 100);
ZOR_LAYOUT(FileDescription, lockoffset, 104);
ZOR_LAYOUT(FileDescription, linageoffset, 108);
ZOR_LAYOUT(FileDescription, recordptr, 120);
ZOR_LAYOUT(FileDescription, assignname, 124);
ZOR_LAYOUT(FileDescription, statusbase, 128);
ZOR_LAYOUT(FileDescription, status2base, 132);

typedef struct FCB FCB;
typedef struct FileDescription FileDescription;
typedef struct FileKey FileKey;
typedef struct UseProcedure UseProcedure;

#endif

/* File control block and compiled file description. An ordinary file's FCB is storage of generated
 * code; the library allocates those of EXTERNAL files. */
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
    FCB_CLOSE_LOCK = 0x1000
};

/* Bits of FileDescription.assign. */
enum { FILE_OPTIONAL = 0x80, FILE_EXTERNAL = 0x02 };

struct FCB;

/* An operation of a file: generated code calls it through the FCB. */
typedef void (*FileOperation)(struct FCB *fcb, struct IPCB *ipcb);

/* 212 bytes. Bytes not named belong to generated code and the file-system modules. */
struct FCB {
    char eyecatcher[3]; /* "FCB" */
    uint8_t level;      /* not 0: the block has the unlock vector */
    int32_t descindex;  /* one-based index of this file in PCB.fcbsrc */
    uint8_t fsid;       /* file system number of the open */
    char fscode[3];     /* its code, three letters */
    uint8_t deffsid;    /* default file system number and code */
    char deffscode[3];
    uint8_t reserved16[4];
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
    uint8_t reserved48[8];
    char *name; /* file name in use */
    uint8_t reserved60[4];
    void *record;     /* record area; its first word points back to the FCB */
    uint8_t *data;    /* the record's data: record + 32 */
    void *modhandle1; /* module data, freed at CLOSE */
    void *modhandle2;
    int32_t maxrec; /* maximum record length in bytes */
    uint8_t reserved84[4];
    int32_t position;
    uint8_t reserved92[4];
    uint8_t openstate;
    uint8_t reserved97[3];
    int32_t linageset[4]; /* LINAGE values of the file */
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
    FileOperation use;
    void *usetable; /* USE procedures of this file */
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
ZOR_LAYOUT(FCB, name, 56);
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

#endif

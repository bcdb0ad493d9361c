/* The frame of file input and output, for generated code and for the modules that serve the files.
 *
 * A verb is a call through a vector of the FCB: file->read(file, ipcb). _zorPgmInit fills the
 * vectors of a closed file: its OPEN is _zorGenericOpen, which finds the module that serves the
 * file, and whose verbs are from then on the module's; every other verb is one of the _zor...Error
 * functions. A verb leaves its file status in FCB.status, in the program's FILE STATUS item (two
 * digits) and in its area of the extended status (six digits of FCB.status2; behind them, for the
 * statuses 33, 35 and 96, the file's name); a status above 9 runs the USE procedure. */
#ifndef ZOR_FILE_H
#define ZOR_FILE_H

#include "fcb.h"

/* Use codes. The low byte is a code of the file system: message 201 has a text for each. */
enum {
    FILE_USE_NO_TEXT = 0,
    FILE_USE_REFUSED = 51 /* the library itself refused the verb */
};

/* What a module exports. VfsInit is _IO_Init, which it must have; VfsTable is vfs. */
typedef void (*VfsInit)(struct FCB *file, struct IPCB *ipcb);
typedef void **(*VfsTable)(void);

/* Entry of the table: gives a text for the extended status status2, or 0. modhandle1 is the FCB's,
 * and 0 when the file is closed. */
enum { VFS_ERROR_TEXT = 27 };
typedef const char *(*VfsErrorText)(void *modhandle1, int32_t status2, int32_t zero, int32_t one);

ZOR_BEGIN_C

/* Opens a closed file in FCB.openmode. On success the mode has moved to FCB.curmode and the
 * vectors are the module's; on failure the file is closed as before, with a status above 9. A list
 * of concatenated files in FCB.concat is gone on with: FCB.name is its next member then. */
ZOR_EXPORT void _zorGenericOpen(FCB *fcb, struct IPCB *ipcb);

/* Makes an open block a closed one, by FCB.closemode: the last step of every CLOSE. Gives the
 * vectors their functions of a closed file back, frees FCB.modhandle1 and modhandle2 (from malloc
 * or _Tvq_mem_alloc) and stores the status. A status above 9 runs the USE procedure with the use
 * code. */
ZOR_EXPORT void _zorGenericClose(FCB *fcb, struct IPCB *ipcb, int32_t usecode);

/* Answers a verb on a file whose state does not allow it. Status by the verb:
 *   OPEN     41 the file is open, 38 it was closed WITH LOCK
 *   CLOSE    42 it is not open; 0 an absent OPTIONAL file, which is closed
 *   READ     47 it is not open INPUT; 10, 23, 46 an absent OPTIONAL file
 *   WRITE    48 it is not open OUTPUT; 92 a sequential one is open I-O
 *   REWRITE, DELETE  49 it is not open I-O
 *   START    47 it is open neither INPUT nor I-O; 23 an absent OPTIONAL file
 *   UNLOCK   42 it is not open
 * and 30 where none of these applies. */
ZOR_EXPORT void _zorOpenError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorCloseError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorReadError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorWriteError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorRewriteError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorStartError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorDeleteError(FCB *fcb, struct IPCB *ipcb);
ZOR_EXPORT void _zorUnlockError(FCB *fcb, struct IPCB *ipcb);

/* Tells the program of a verb that failed. Leaves it to INVALID KEY or AT END of the statement, or
 * calls the USE procedure for the file's mode. Without one it comes back when the program has FILE
 * STATUS or an extended status, or the status is below 30; otherwise message 200 ends the run.
 * usecode: a FILE_USE_ value or a code of the file system, which choose the message's text. */
ZOR_EXPORT void _zorCallUseProc(FCB *fcb, int32_t usecode, struct IPCB *ipcb);

ZOR_END_C

#endif

/* A file system that does what the name of a file says: "=35" in it is the status of its OPEN, then
 * the extended status is 2; "absent" makes it an OPTIONAL file that is not there; "odd" lets its
 * CLOSE fail. Each file has one record. Other file systems are made of it by two macros. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "concat.h"
#include "file.h"

#ifdef NO_INIT
#define _IO_Init someFunction
#endif
#ifndef REFUSAL
#define REFUSAL (-1)
#endif

static void trace(const char *event, const FCB *file) {
    if (getenv("TRACE") != NULL)
        printf("%s(%s) ", event, file->name);
}

static void openFile(FCB *file, struct IPCB *ipcb) {
    const char *wanted = strchr(file->name, '=');
    trace("open", file);
    file->status = (int16_t)(wanted != NULL && ipcb != NULL ? atoi(wanted + 1) : 0);
    if (strstr(file->name, "absent") != NULL) {
        file->status = 5;
        file->flags |= FCB_ABSENT_OPTIONAL;
    }
    file->status2 = file->status != 0 ? 2 : 0;
    file->modhandle1 = malloc(8);
}

static void closeFile(FCB *file, struct IPCB *ipcb) {
    trace("close", file);
    file->status = strstr(file->name, "odd") != NULL ? 30 : 0;
    file->status2 = 0;
    _zorGenericClose(file, ipcb, 4);
}

static void readFile(FCB *file, struct IPCB *ipcb) {
    const uint16_t mode = file->curmode;
    const char *next = _zor_Concat_Next(file->concat);
    trace("read", file);
    file->status = next == NULL ? 10 : 0;
    if (next != NULL) {
        file->closemode = FCB_CLOSE_NEXT_FILE;
        file->close(file, ipcb);
        file->name = (char *)next;
        file->openmode = mode;
        file->open(file, ipcb);
    }
}

static const char *errorText(void *handle, int32_t status2, int32_t zero, int32_t one) {
    static char text[80];
    snprintf(text, sizeof text, "%d %d %d %d", handle != NULL, status2, zero, one);
    return text;
}

ZOR_EXPORT void **vfs(void) {
    static void *table[VFS_ERROR_TEXT + 1];
    table[VFS_ERROR_TEXT] = (void *)errorText;
    return table;
}

/* A refusal of 0 installs nothing all the same. */
ZOR_EXPORT void _IO_Init(FCB *file, struct IPCB *ipcb) {
    (void)ipcb;
    if (REFUSAL < 0) {
        file->open = openFile;
        file->close = closeFile;
        file->read = readFile;
        file->unlock = file->level != 0 ? readFile : NULL;
    }
    file->status = REFUSAL < 0 ? 0 : REFUSAL;
}

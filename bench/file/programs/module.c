/* A file system of which OPEN and CLOSE are one call of the system each. */
#include <fcntl.h>
#include <unistd.h>

#include "file.h"

ZOR_EXPORT void _IO_Init(FCB *file, struct IPCB *ipcb);

static void openFile(FCB *file, struct IPCB *ipcb) {
    (void)ipcb;
    file->position = open(file->name, O_RDONLY);
    file->status = file->position < 0 ? 35 : 0;
}

static void closeFile(FCB *file, struct IPCB *ipcb) {
    close(file->position);
    file->status = 0;
    _zorGenericClose(file, ipcb, FILE_USE_NO_TEXT);
}

void _IO_Init(FCB *file, struct IPCB *ipcb) {
    (void)ipcb;
    file->open = openFile;
    file->close = closeFile;
}

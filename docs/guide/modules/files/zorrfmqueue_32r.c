/* A file system as small as they come: a queue of records in memory. A file open for output puts
 * records into the one queue that there is, one open for input takes them. */
#include "file.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

ZOR_EXPORT void _IO_Init(FCB *file, IPCB *ipcb);
ZOR_EXPORT void **vfs(void);

typedef struct Message {
    struct Message *next;
    int32_t length;
    char data[];
} Message;

static Message *first, **end = &first;

/* What the program sees of a verb. An area of the extended status has blanks behind its digits. */
static void leave(FCB *file, int16_t status, int32_t status2) {
    const FileDescription *described = file->desc; /* EXTERNAL files: see the chapter */
    char digits[8];
    file->status = status;
    file->status2 = status2;
    snprintf(digits, sizeof digits, "%02d", status % 100);
    if (described->statusbase)
        memcpy(*described->statusbase + described->statusoffset, digits, 2);
    snprintf(digits, sizeof digits, "%06d", status2 % 1000000);
    if (described->status2base && described->status2len >= 6) {
        char *area = (char *)*described->status2base + described->status2offset;
        memset(area, ' ', (size_t)described->status2len);
        memcpy(area, digits, 6);
    }
}

/* Every verb but OPEN and CLOSE ends here. */
static void finish(FCB *file, IPCB *ipcb, uint8_t verb, int16_t status, int32_t status2) {
    leave(file, status, status2);
    file->verb = verb;
    if (status > 9)
        file->use(file, status2 - 1, ipcb); /* the text of error status2 */
    file->lastverb = verb;
}

static void openQueue(FCB *file, IPCB *ipcb) {
    (void)ipcb;
    if (file->openmode & FCB_IO) {
        leave(file, 37, 22);
        return;
    }
    file->status = 0;
    file->status2 = 0;
    file->modhandle1 = calloc(1, 16); /* data of this open, freed at CLOSE */
}

static void closeQueue(FCB *file, IPCB *ipcb) {
    file->status = 0;
    file->status2 = 0;
    _zorGenericClose(file, ipcb, FILE_USE_NO_TEXT);
}

static void writeRecord(FCB *file, IPCB *ipcb) {
    int32_t length = file->desc->maxrec;
    Message *message = malloc(sizeof *message + (size_t)length);
    if (!message) {
        finish(file, ipcb, FCB_VERB_WRITE, 30, 12);
        return;
    }
    message->next = NULL;
    message->length = length;
    memcpy(message->data, file->data, (size_t)length);
    *end = message;
    end = &message->next;
    finish(file, ipcb, FCB_VERB_WRITE, 0, 0);
}

static void readRecord(FCB *file, IPCB *ipcb) {
    Message *message = first;
    int positioned = file->lastverb != FCB_VERB_READ || file->flags & FCB_READ_GOOD;
    if (!message) {
        file->flags &= ~FCB_READ_GOOD;
        finish(file, ipcb, FCB_VERB_READ, positioned ? 10 : 46, 29);
        return;
    }
    first = message->next;
    if (!first)
        end = &first;
    memcpy(file->data, message->data, (size_t)message->length);
    free(message);
    file->flags |= FCB_READ_GOOD;
    finish(file, ipcb, FCB_VERB_READ, 0, 0);
}

void _IO_Init(FCB *file, IPCB *ipcb) {
    (void)ipcb;
    file->open = openQueue;
    file->close = closeQueue;
    if (file->openmode & FCB_INPUT)
        file->read = readRecord;
    else
        file->write = writeRecord; /* the other verbs stay as they are, and answer for themselves */
}

static const char *errorText(void *modhandle1, int32_t status2, int32_t zero, int32_t one) {
    (void)modhandle1, (void)zero, (void)one;
    return status2 == 22 ? "A queue is for input or for output." : NULL;
}

void **vfs(void) {
    static void *table[VFS_ERROR_TEXT + 1];
    table[VFS_ERROR_TEXT] = (void *)errorText;
    return table;
}

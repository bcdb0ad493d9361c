/* What the compiler emits alike in the two programs: FD JOURNAL-FILE IS EXTERNAL. */
#ifndef JOURNAL_H
#define JOURNAL_H

#include "display.h"
#include "file.h"
#include "pcb.h"

#include <string.h>

enum { kLine = 24 };

/* The block and the record area are the library's: the first word of the head is not read here. */
struct JournalRecord {
    FCB *file;
    char reserved[28];
    char line[kLine];
};

static void *journalArea;
static char journalStatus[2];
static char *journalStatusItem = journalStatus;
static FileDescription journalFile = {.index = 1,
                                      .fscode = "???",
                                      .organization = FILE_LINE_SEQUENTIAL,
                                      .access = FILE_SEQUENTIAL,
                                      .assign = FILE_ENVIRONMENT | FILE_EXTERNAL,
                                      .maxrec = kLine,
                                      .filename = "JOURNAL-FILE",
                                      .assignlen = 7,
                                      .recordptr = &journalArea,
                                      .assignname = "JOURNAL",
                                      .statusbase = (uint8_t **)&journalStatusItem};
static FCB noFile; /* what stands in the slot of an EXTERNAL file until the first entry */

static inline void display(const char *text, const char *item, uint32_t length) {
    static const DisplayControl control = {.count = 2, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem items[] = {{.address = text, .size = (uint32_t)strlen(text), .type = DISPLAY_TEXT},
                           {.address = item, .size = length, .type = DISPLAY_TEXT}};
    _zorcDisplay(&control, items);
}

static inline void fill(char *item, size_t length, const char *text) {
    memset(item, ' ', length);
    memcpy(item, text, strlen(text));
}

/* MOVE text TO JOURNAL-LINE. WRITE JOURNAL-LINE. */
static inline void writeJournal(FCB *file, IPCB *ipcb, const char *text) {
    fill(((struct JournalRecord *)journalArea)->line, kLine, text);
    file->verbopts = 0;
    file->write(file, ipcb);
    display("JOURNAL ", journalStatus, sizeof journalStatus);
}

#endif

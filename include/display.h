/* Console verbs: DISPLAY, ACCEPT and STOP with a literal. The standard files are opened on first
 * use. */
#ifndef ZOR_DISPLAY_H
#define ZOR_DISPLAY_H

#include "zor_abi.h"

/* Values of DisplayControl.device. */
enum { DISPLAY_ON_SYSOUT = 1, DISPLAY_ON_CONSOLE = 2, DISPLAY_ON_SYSPUNCH = 3 };

/* Bits of DisplayControl.flags. */
enum { DISPLAY_NO_ADVANCING = 0x01 };

/* Values of DisplayItem.type. */
enum {
    DISPLAY_FLOATING = 1, /* size 4, 8 or 16 */
    DISPLAY_TEXT = 2,
    DISPLAY_SIGNED_BINARY = 3, /* size 1 is 8 bits, 2 is 16, 3 and 4 are 32, 5 to 8 are 64 */
    DISPLAY_TEXT_4 = 4,        /* as DISPLAY_TEXT */
    DISPLAY_TEXT_5 = 5,        /* as DISPLAY_TEXT */
    DISPLAY_UNSIGNED_BINARY = 7
};

/* The greatest DisplayItem.width that is honoured for numbers; a greater one counts as this. */
enum { DISPLAY_MAX_DIGITS = 256 };

/* One DISPLAY statement. */
struct DisplayControl {
    int32_t count;  /* items; 0 or less: only the line end is written */
    uint8_t device; /* DISPLAY_ON_ values */
    uint8_t flags;  /* DISPLAY_NO_ADVANCING */
    uint8_t point;  /* decimal point of floating items */
    uint8_t reserved7;
};
ZOR_LAYOUT(DisplayControl, count, 0);
ZOR_LAYOUT(DisplayControl, device, 4);
ZOR_LAYOUT(DisplayControl, flags, 5);
ZOR_LAYOUT(DisplayControl, point, 6);
ZOR_SIZE(DisplayControl, 8);

/* One item of a DISPLAY. width goes both ways: generated code that keeps an item sets it again
 * ahead of every DISPLAY of a number; for text the value that goes in is not read. */
struct DisplayItem {
    const void *address; /* the data; 0 shows "(NULL)" whatever the type */
    uint32_t size;       /* storage size in bytes */
    int32_t width;       /* in: digits of a number to show. Out: characters produced */
    uint32_t type;       /* DISPLAY_ types; any other ends the DISPLAY with message 170 */
};
ZOR_LAYOUT(DisplayItem, address, 0);
ZOR_LAYOUT(DisplayItem, size, 4);
ZOR_LAYOUT(DisplayItem, width, 8);
ZOR_LAYOUT(DisplayItem, type, 12);
ZOR_SIZE(DisplayItem, 16);

typedef struct DisplayControl DisplayControl;
typedef struct DisplayItem DisplayItem;

/* Bits of the flags of ACCEPT. */
enum {
    ACCEPT_DAY_OF_WEEK = 0x01, /* 1 is Monday, 7 is Sunday */
    ACCEPT_FROM_SYSIN = 0x02,
    ACCEPT_TIME = 0x04,            /* hhmmsscc, with hundredths of a second */
    ACCEPT_DAY = 0x08,             /* yyddd */
    ACCEPT_DATE = 0x10,            /* yymmdd */
    ACCEPT_FROM_CONSOLE = 0x20,    /* has priority over ACCEPT_FROM_SYSIN */
    ACCEPT_FOUR_DIGIT_YEAR = 0x40, /* with DATE and DAY */
    ACCEPT_DBCS = 0x80             /* the receiving item holds double-byte characters */
};

ZOR_BEGIN_C

/* Shows control->count items, and a newline unless DISPLAY_NO_ADVANCING is set, under the stream's
 * lock. Binary items show their low-order width digits, with "-" ahead when negative. Floating
 * items show sign or blank, point, width digits, "E", "-" or blank, at least two digits of the
 * exponent; or "Infinity" or "NaN". A write error drops the item. While _zorDebugBuf is set, the
 * first item's text goes there instead (its owner sees to the room; _zorDebugBufLen tells the
 * length), the further items are left out, and the newline still goes to the stream. Messages: 168
 * SYSPUNCH cannot be opened, stdout is used; 169 unknown device, SYSOUT is used; 170 invalid type
 * or size, the items ahead of it and the newline are shown. COBOL_DISPLAY_FLUSH, read at the first
 * DISPLAY of the process, flushes the stream at the end of each when it begins with "1". Text past
 * a file size limit (ulimit -f) is lost: at each DISPLAY that flushes, otherwise where the stream's
 * buffer is written out; SIGXFSZ is shown each time, and the run goes on. */
ZOR_EXPORT void _zorcDisplay(const DisplayControl *control, DisplayItem *items);

/* Reads up to length bytes from a stream, or formats a date register, into target; the rest of it
 * is filled with blanks. length below 1 does nothing; a target for which nothing was read stays as
 * it was. From a terminal or under ACCEPT=NEW one line is read, and what is too long is dropped;
 * otherwise reading goes on over line ends until the target is full. Nothing is read at the end of
 * file and, of a line, where it is empty: feof of Proccom.sysin or consolein tells the two apart
 * behind the call. An end of file met earlier does not count: the stream is read anew. With
 * ACCEPT_DBCS an even rest is filled with the double-byte blank of the code page. Without a bit of
 * a stream or a register nothing happens. Message 200 (variant 2) tells of a read error; end of
 * file is none. */
ZOR_EXPORT void _zorcAccept(uint32_t flags, int32_t length, void *target);

/* ACCEPT of national data from a stream: *length counts 16-bit characters, read low byte first; the
 * newline is U+000A. Of a line that is too long, bytes are dropped up to and including the first
 * 0x0A, whatever half of a character it is. The rest of the target is not filled. */
ZOR_EXPORT void _zorAcceptUnicode(uint32_t flags, const int32_t *length, void *target);

/* Shows a literal of length bytes on SYSOUT and waits for a line from SYSIN, which is dropped. What
 * _zorcDisplay says of a file size limit holds here. Message 200 (variant 2) tells of a read error.
 */
ZOR_EXPORT void _zorcStopLiteral(int32_t length, const void *text);

ZOR_END_C

#endif

/* INSPECT, STRING, UNSTRING, SEARCH ALL, class conditions and text functions as a compiler emits
 * them: control blocks in static storage, filled at compile time as far as possible, one call for a
 * statement, and moves out of the blocks behind it. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

int main(void);

static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "TEXTVERB",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

static void display(const void *text, uint32_t length) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = length, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

static void displayCount(const char *name, uint32_t value) {
    char line[64];
    display(line, (uint32_t)snprintf(line, sizeof line, "%s %u", name, (unsigned)value));
}

/* ---- INSPECT */

static char remark[] = "late, but paid, thanks. Filed, closed.";
enum { kRemark = sizeof remark - 1 };

/* INSPECT REMARK TALLYING COMMAS FOR ALL "," BEFORE INITIAL "."
 *                REPLACING ALL "," BY ";" AFTER INITIAL "but" */
static void inspectCounting(void) {
    static uint32_t commas;
    static const struct {
        InspectBlock head;
        InspectClause clauses[2];
    } block = {{2, 0, kRemark, remark},
               {{.clauseFlags = (uint32_t)INSPECT_TALLYING | INSPECT_BEFORE,
                 .counter = &commas,
                 .compareLength = 1,
                 .compareAddress = ",",
                 .beforeLength = 1,
                 .beforeAddress = "."},
                {.clauseFlags = INSPECT_REPLACING | INSPECT_AFTER,
                 .targetLength = 1,
                 .targetAddress = ";",
                 .compareLength = 1,
                 .compareAddress = ",",
                 .afterLength = 3,
                 .afterAddress = "but"}}};
    commas = 0; /* TALLYING adds to the item's value: a compiler moves it here, and back behind */
    _zorcInspect(&block.head);
    displayCount("commas", commas);
    display(remark, kRemark);
}

/* INSPECT REMARK CONVERTING "abc...z" TO "ABC...Z" */
static void inspectConverting(void) {
    static const struct {
        InspectBlock head;
        InspectClause clause;
    } block = {{1, 0, kRemark, remark},
               {.clauseFlags = INSPECT_CONVERTING,
                .targetLength = 26,
                .targetAddress = "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
                .compareLength = 26,
                .compareAddress = "abcdefghijklmnopqrstuvwxyz"}};
    _zorcInspect(&block.head);
    display(remark, kRemark);
}

/* INSPECT BALANCE REPLACING LEADING ZEROS BY "9", BALANCE PIC S9(5): the sign stays. */
static void inspectNumber(void) {
    static char balance[] = "0012s"; /* -123 */
    static const struct {
        InspectBlock head;
        InspectClause clause;
    } block = {{1, INSPECT_SIGNED_DISPLAY, 5, balance},
               {.clauseFlags = INSPECT_REPLACING | INSPECT_LEADING,
                .targetLength = 1,
                .targetAddress = "9",
                .compareLength = 1,
                .compareAddress = "0"}};
    _zorcInspect(&block.head);
    display(balance, 5);
}

/* ---- UNSTRING */

static char order[] = "4711,,Amsterdam;;;2500,rest";

/* UNSTRING ORDER DELIMITED BY "," OR ALL ";"
 *     INTO CUSTOMER, NOTE COUNT IN NOTE-LENGTH, CITY DELIMITER IN MARK COUNT IN CITY-LENGTH, AMOUNT
 *     WITH POINTER AT-CHAR TALLYING IN FIELDS ON OVERFLOW DISPLAY "more" */
static void unstring(void) {
    static char customer[6]; /* PIC 9(6) */
    static char note[4];     /* PIC X(4) */
    static char city[12];    /* PIC X(12) JUSTIFIED RIGHT */
    static char mark[2];     /* PIC X(2) */
    static char amount[9];   /* PIC S9(6)V99 SIGN LEADING SEPARATE */
    static struct {
        UnstringBlock head;
        UnstringDelimiter delimiters[2];
    } block = {{.unstringFlags = UNSTRING_WITH_POINTER | UNSTRING_TALLYING,
                .senderAddress = order,
                .senderLength = sizeof order - 1,
                .delimiterCount = 2,
                .receiverCount = 4},
               {{",", 1, 0}, {";", 1, (uint32_t)UNSTRING_DELIMITER_ALL}}};
    static UnstringReceiver receivers[4] = {
        {.receiverAddress = customer,
         .receiverLength = sizeof customer,
         .integerPositions = 6,
         .receiverFlags = UNSTRING_NUMERIC},
        {.receiverAddress = note, .receiverLength = sizeof note},
        {.receiverAddress = city,
         .receiverLength = sizeof city,
         .receiverFlags = UNSTRING_JUSTIFIED,
         .delimiterInAddress = mark,
         .delimiterInLength = sizeof mark},
        {.receiverAddress = amount,
         .receiverLength = sizeof amount,
         .integerPositions = 6,
         .receiverFlags = UNSTRING_NUMERIC | UNSTRING_SIGN_SEPARATE | UNSTRING_SIGN_LEADING}};
    uint32_t overflow = 1; /* not 0: the statement has ON OVERFLOW */

    block.head.pointerValue = 1;
    block.head.tallyValue = 0;
    _zorcUnString(&block.head, receivers, &pcb, &overflow);
    display(customer, sizeof customer);
    display(note, sizeof note);
    display(city, sizeof city);
    display(mark, sizeof mark);
    display(amount, sizeof amount);
    displayCount("note length", receivers[1].fieldCount);
    displayCount("city length", receivers[2].fieldCount);
    displayCount("pointer", block.head.pointerValue);
    displayCount("fields", block.head.tallyValue);
    if (overflow != 1)
        display("more", 4);
}

/* ---- STRING */

/* STRING LAST-NAME DELIMITED BY SPACE, ", " FIRST-NAME DELIMITED BY SIZE
 *     INTO LINE WITH POINTER AT-CHAR ON OVERFLOW DISPLAY "cut" */
static void string(void) {
    static char line[16] = "................";
    static struct {
        StringBlock head;
        StringGroup bySpace;
        StringSender last;
        StringGroup bySize;
        StringSender others[2];
    } block = {{.stringFlags = STRING_WITH_POINTER,
                .targetAddress = line,
                .targetLength = sizeof line,
                .groupCount = 2},
               {" ", 1, 1},
               {"Liskov        ", 14},
               {0, 0, 2},
               {{", ", 2}, {"Barbara", 7}}};
    uint32_t overflow = 1;

    block.head.pointerValue = 3;
    _zorcString(&block.head, &pcb, &overflow);
    display(line, sizeof line);
    displayCount("pointer", block.head.pointerValue);
    if (overflow != 1)
        display("cut", 3);
}

/* ---- SEARCH ALL */

/* 01 RATES. 02 YEAR OCCURS 2. 03 RATE OCCURS 4 ASCENDING KEY CODE, DESCENDING KEY SINCE.
 *     04 CODE PIC X(3). 04 SINCE PIC S9(5) PACKED-DECIMAL. 04 PERCENT PIC 99V99. */
enum { kRates = 4, kRateLength = 10 };
static const char rates[2][kRates][kRateLength] = {{"CHF\x00\x20\x1C"
                                                    "0150",
                                                    "EUR\x00\x20\x3C"
                                                    "0375",
                                                    "EUR\x00\x20\x1C"
                                                    "0400",
                                                    "USD\x00\x20\x2C"
                                                    "0525"},
                                                   {"CHF\x00\x21\x1C"
                                                    "0100",
                                                    "EUR\x00\x21\x3C"
                                                    "0200",
                                                    "EUR\x00\x21\x1C"
                                                    "0215",
                                                    "USD\x00\x21\x2C"
                                                    "0433"}};

/* SEARCH ALL RATE AT END DISPLAY "none" WHEN CODE (Y R) = WANTED AND SINCE (Y R) = 211 */
static void searchAll(const char *wanted, uint32_t wantedLength) {
    static struct {
        SearchBlock head;
        SearchKey keys[2];
        int32_t lengths[2];
        uint8_t signFlags[2];
    } block = {{.indexCount = 1, .keyCount = 2, .argumentCount = 2},
               {{SEARCH_TEXT | SEARCH_ASCENDING, 3, 0}, {SEARCH_PACKED, 3, 3}},
               {0, 3},
               {0, 0}};
    static const int32_t year2 = kRates * kRateLength; /* of the subscript Y, here 2 */
    static const int32_t *const indexes[] = {&year2};
    static const uint8_t since[] = {0x00, 0x21, 0x1C};
    char code[3];
    SearchArgument arguments[2] = {{code, wanted}, {since, since}};

    memset(code, ' ', sizeof code); /* WANTED as CODE: a MOVE */
    memcpy(code, wanted, wantedLength < sizeof code ? wantedLength : sizeof code);
    block.lengths[0] = (int32_t)wantedLength;
    int32_t found = _zorcSrchAll(&block.head, rates, kRates, kRateLength, arguments, indexes, &pcb);
    if (found < 0)
        display("none", 4);
    else
        display((const char *)rates + year2 + found + 6, 4);
}

/* ---- class conditions and functions */

static void say(const char *condition, int32_t holds) {
    char line[64];
    display(line,
            (uint32_t)snprintf(line, sizeof line, "%-36s %s", condition, holds ? "true" : "false"));
}

static void classes(void) {
    static const uint8_t packed[] = {0x12, 0x3C};
    say("\"Main St\" IS ALPHABETIC", _zorcClasAlpha("Main St", 7));
    say("\"Main St\" IS ALPHABETIC-LOWER", _zorcClasAlphaLower("Main St", 7));
    say("9(3) \"12 \" IS NUMERIC", _zorcClasZonedDec(CLASS_UNSIGNED, "12 ", 3));
    say("S9(3) \"12s\" IS NUMERIC",
        _zorcClasZonedDec(CLASS_TRAILING_SIGN | CLASS_TEST_SIGN, "12s", 3));
    say("S9(2) SEPARATE \"12-\" IS NUMERIC", _zorcClasZonedDec(CLASS_TRAILING_SEPARATE, "12-", 3));
    say("packed 123 IS NUMERIC", _zorcClasPackedDec(CLASS_TEST_SIGN, packed, 2));
}

static void functions(void) {
    char result[16];
    int32_t length;
    _zorToUpper(6, "Zurich", result);
    display(result, 6);
    _zorcReverse(6, "Zurich", result);
    display(result, 6);
    length = _zor_trim(10, "  Zurich  ", 0, 0, result, TRIM_BYTES);
    display(result, (uint32_t)length);
    length = _zor_triml(8, "0000Z.00", 1, "0", result, TRIM_BYTES);
    display(result, (uint32_t)length);
}

int main(void) {
    _zorPgmInit(&pcb);
    inspectCounting();
    inspectConverting();
    inspectNumber();
    unstring();
    string();
    searchAll("EUR", 3);
    searchAll("EUR   ", 6); /* blanks beyond the key are padding */
    searchAll("EURO", 4);   /* anything else equals no key */
    classes();
    functions();
    _zorPgmTerm(&pcb);
    return 0;
}

/* DISPLAY of an item of each usage, and STOP with a literal. The library knows text, binary and
 * floating items; everything else becomes text first. */
#include "lvd4.h"

#include <string.h>

enum { kMostItems = 4 };

static void display(int32_t count, DisplayItem *items, uint8_t flags) {
    DisplayControl control = {
        .count = count, .device = DISPLAY_ON_SYSOUT, .flags = flags, .point = '.'};
    _zorcDisplay(&control, items);
}

static DisplayItem text(const void *address, uint32_t size) {
    return (DisplayItem){.address = address, .size = size, .type = DISPLAY_TEXT};
}

static DisplayItem literal(const char *address) {
    return text(address, (uint32_t)strlen(address));
}

static DisplayItem number(const void *address, uint32_t size, int32_t width, uint32_t type) {
    return (DisplayItem){.address = address, .size = size, .width = width, .type = type};
}

/* DISPLAY "label" item */
static void show(const char *label, DisplayItem item) {
    DisplayItem items[] = {literal(label), item};
    display(2, items, 0);
}

static void decimals(void) {
    static const uint8_t packed[] = {0x01, 0x23, 0x4D}; /* S9(3)V9, -123.4 */
    static const NumericEditDescriptor edit = {6, '.', '$', EDIT_SIGN_IF_MINUS, "-999.9"};
    uint8_t characters[8];
    char edited[6];

    show("9(3)               ", text("042", 3)); /* as it stands */
    show("S9(3), -042        ", text("04r", 3)); /* as it stands: the last byte carries the sign */
    show("S9(3) SEPARATE     ", text("042-", 4));
    _zorcBCD_CONV_Pckd_To_ZndUS(packed, characters, 4, 4);
    show("packed, magnitude  ", text(characters, 4));
    _zorcBCD_CONV_Pckd_To_ZndLS(packed, characters, 4, 4);
    show("packed, sign ahead ", text(characters, 5));
    _zorcMoveNumToNumEdit(&edit, characters, edited);
    show("packed, with point ", text(edited, 6));
}

static void numbers(void) {
    static const int16_t half = -42;
    static const int32_t word = 123456;
    static const int64_t twice = 1234567890123456789;
    static const uint32_t unsignedWord = 4000000000U;
    static const float single = 0.5F;
    static const double real = -0.05;

    /* The width is the digits of the PICTURE, not the bytes; the call writes to it. */
    show("S9(4) BINARY       ", number(&half, 2, 4, DISPLAY_SIGNED_BINARY));
    show("S9(9) BINARY       ", number(&word, 4, 9, DISPLAY_SIGNED_BINARY));
    show("S9(3) BINARY, cut  ", number(&word, 4, 3, DISPLAY_SIGNED_BINARY));
    show("S9(18) BINARY      ", number(&twice, 8, 18, DISPLAY_SIGNED_BINARY));
    show("9(10) COMP-5       ", number(&unsignedWord, 4, 10, DISPLAY_UNSIGNED_BINARY));
    show("COMP-1             ", number(&single, 4, 8, DISPLAY_FLOATING));
    show("COMP-2             ", number(&real, 8, 16, DISPLAY_FLOATING));
    show("no address         ", number(0, 4, 9, DISPLAY_SIGNED_BINARY));
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "DISPLAYS",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    _zorPgmInit(&pcb);
    decimals();
    numbers();
    DisplayItem parts[kMostItems] = {literal("one "), literal("DISPLAY "), literal("of "),
                                     literal("four")};
    display(kMostItems, parts, 0);
    display(1, parts, DISPLAY_NO_ADVANCING);
    display(0, parts, 0);                 /* the line end alone */
    _zorcStopLiteral(12, "MOUNT TAPE 7"); /* STOP "MOUNT TAPE 7": goes on behind a line of SYSIN */
    _zorPgmTerm(&pcb);
    return 0;
}

/* National, native and EBCDIC data: what MOVE, IF and the functions of this COBOL become. It runs
 * in a UTF-8 locale, so that the native code page is UTF-8 and the EBCDIC one QBX-1140.
 *
 *     01  NAME-IN      PIC X(12).                       *> native
 *     01  NAME-N       PIC N(8).                        *> national, 16 bytes
 *     01  NAME-R       PIC N(8) JUSTIFIED RIGHT.
 *     01  HOST-NAME    PIC X(10).                       *> kept in EBCDIC
 *     01  KEY-N        PIC N(4).
 *     01  HOST-TEXT    PIC X(8).                        *> mixed EBCDIC, QBX-1399 */
#include "national.h"
#include "codepage.h"
#include "collating.h"
#include "pcb.h"

#include <stdio.h>
#include <string.h>

#define BYTES(characters) (2 * (characters))

static IPCB ipcb[1];
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = ipcb,
                  .name = "NATIONAL",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

static char nameIn[12] = "M\xc3\xbcller     ";
static char nameN[BYTES(8)];
static char nameR[BYTES(8)];
static char hostName[10];

/* Constants of national literals lie in the program as UTF-16, two bytes a character. */
static const char keyN[BYTES(4)] = {'Z', 0, 'o', 0, 'e', 0, ' ', 0};
static const char literalApfel[BYTES(5)] = {(char)0xC4, 0, 'p', 0, 'f', 0, 'e', 0, 'l', 0};

static void show(const char *what, const void *data, int32_t bytes) {
    printf("%-28s", what);
    for (int32_t i = 0; i < bytes; i++)
        printf("%02X", ((const uint8_t *)data)[i]);
    printf("\n");
}

/* MOVE FUNCTION NATIONAL-OF(NAME-IN) TO NAME-N NAME-R. An intermediate result takes twice the bytes
 * of the argument at most; the moves pad it with the national blank. */
static void toNational(void) {
    char work[2 * sizeof nameIn];
    int32_t length = _Tvq_national_of(sizeof nameIn, nameIn, work);
    _zorMoveUnicode(nameN, sizeof nameN, work, length);
    _zorMoveUnicode(nameR, -(int32_t)sizeof nameR, nameN, BYTES(6));
    show("NAME-N", nameN, sizeof nameN);
    show("NAME-R", nameR, sizeof nameR);
}

/* DISPLAY FUNCTION DISPLAY-OF(FUNCTION UPPER-CASE(NAME-N)). The result of a change of case may be
 * longer than its argument, that of DISPLAY-OF needs _zorGetMaxCharSize bytes a character: 3. */
static void toNative(void) {
    char upper[2 * sizeof nameN];
    int32_t length = sizeof upper;
    length = _zorUpperCaseUnicode(upper, &length, nameN, sizeof nameN);
    char text[3 * sizeof upper / 2];
    length = _Tvq_display_of(length, upper, text);
    printf("%-28s%.*s.\n", "UPPER-CASE(NAME-N)", (int)length, text);
}

/* IF KEY-N > N"Äpfel": by the locale's order, blanks at the end do not count. */
static void compareNational(void) {
    int32_t order = _zorCompareUnicode(keyN, sizeof keyN, literalApfel, sizeof literalApfel);
    printf("%-28s%s\n", "KEY-N > N\"\xc3\x84pfel\"", order > 0 ? "true" : "false");
    printf("%-28s%d\n", "KEY-N = N\"Zoe\"",
           _zorCompareUnicode(keyN, sizeof keyN, keyN, BYTES(3)) == 0);
}

/* A field of a record that goes to a mainframe, and what comes back. *length is the capacity ahead
 * of a call, and what was written after it. */
static void toEbcdicAndBack(void) {
    int32_t length = sizeof hostName;
    memset(hostName, 0x40, sizeof hostName); /* the call does not pad */
    int32_t status = _zorConvToEBCDIC("Zoe & Co", 8, hostName, &length);
    printf("%-28sstatus %d, %d bytes\n", "to EBCDIC", (int)status, (int)length);
    show("HOST-NAME", hostName, sizeof hostName);

    char back[12];
    length = -(int32_t)sizeof back; /* negative: JUSTIFIED RIGHT */
    status = _zorConvToASCII(hostName, sizeof hostName, back, &length);
    printf("%-28sstatus %d, %d bytes, \"%.12s\"\n", "from EBCDIC, right", (int)status, (int)length,
           back);
}

/* Double-byte characters of a named code page: between SO and SI they come and go with them. */
static void mixed(void) {
    static const char sanYen[BYTES(3)] = {0x09, 0x4E, 'A', 0, 0x06, 0x52}; /* U+4E09 A U+5206 */
    char hostText[8];
    int32_t length = sizeof hostText;
    int32_t status = _zorConvFromUnicode(sanYen, sizeof sanYen, hostText, &length, "QBX-1399", 8);
    printf("%-28sstatus %d\n", "QBX-1399, 8 bytes", (int)status);

    char wide[12];
    length = sizeof wide;
    status = _zorConvFromUnicode(sanYen, sizeof sanYen, wide, &length, "QBX-1399", 8);
    printf("%-28sstatus %d, %d bytes\n", "QBX-1399, 12 bytes", (int)status, (int)length);
    show("mixed", wide, length);

    char again[BYTES(3)];
    int32_t nationalLength = sizeof again;
    _zorConvToUnicode(wide, length, again, &nationalLength, "QBX-1399", 8);
    printf("%-28s%d\n", "the same again", memcmp(again, sanYen, sizeof again) == 0);
}

/* A field that was cut inside a character: what is whole is converted, the status is 11. */
static void cut(void) {
    char target[BYTES(4)];
    int32_t length = sizeof target;
    int32_t status = _zorConvToUnicode("M\xc3", 2, target, &length, 0, CODEPAGE_NATIVE);
    printf("%-28sstatus %d, %d bytes\n", "a character that is cut", (int)status, (int)length);
}

/* PROGRAM COLLATING SEQUENCE, in which lower case weighs what upper case does, and IF of items of
 * unlike length, of an item and ALL "xy", of an item and SPACES. */
static void compareBytes(void) {
    uint8_t weights[256];
    for (int i = 0; i < 256; i++)
        weights[i] = (uint8_t)(i >= 'a' && i <= 'z' ? i - 'a' + 'A' : i);
    printf("%-28s%d\n", "\"Zoe  \" = \"ZOE\"",
           (int)_zorcCmpACS("Zoe  ", 5, "ZOE", 3, weights) == 0);
    printf("%-28s%d\n", "\"XyXyX\" = ALL \"xy\"",
           (int)_zorcCmpACS("XyXyX", 5, "xy", -2, weights) == 0);
    printf("%-28s%d\n", "\"xyxyx\" = ALL \"xy\"",
           (int)_zorcCmpMultiByteFig("xyxyx", 5, "xy", 2) == 0);
    printf("%-28s%d\n", "\"   \" = SPACES", (int)_zorcCmpToPad("   ", ' ', 3) == 0);
}

int main(void) {
    ipcb[0].entry = (void *)main;
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0) {
        char locale[25], ebcdic[15];
        _zorGetLocaleCP(locale, ebcdic);
        printf("%-28s%s, %s\n", "code pages", locale + 6, ebcdic);
        toNational();
        toNative();
        compareNational();
        toEbcdicAndBack();
        mixed();
        cut();
        compareBytes();
    }
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}

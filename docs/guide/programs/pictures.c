/* From a PICTURE to a numeric edit descriptor, and what it prints: each row shows the source form,
 * the descriptor, the value as a digit stream, and the edited item. */
#include "lvd4.h"

#include <stdio.h>
#include <string.h>

enum { kMostValues = 4, kLongest = 32 };

typedef struct {
    const char *picture;  /* the source form */
    const char *expanded; /* pictureText */
    uint8_t code;         /* signFloatCode */
    int suppressedAlone;  /* negative pictureLength */
    const char *clauses;  /* of the program that change characters */
    const char *currency; /* CURRENCY SIGN IS, several characters; 0 for none */
    const char *values[kMostValues];
} Row;

#define BLANK_WHEN_ZERO(code) EDIT_BLANK_WHEN_ZERO(code)

static const Row rows[] = {
    {"ZZ,ZZ9.99", "ZZ,ZZ9.99", EDIT_SIGN_NONE, 0, "", 0, {"+0012345", "+1234567", "+0000000"}},
    {"9(3)V9(2)", "999V99", EDIT_SIGN_NONE, 0, "", 0, {"+01234"}},
    {"-ZZ9.9", "-ZZ9.9", EDIT_SIGN_IF_MINUS, 0, "", 0, {"+0123", "-0123"}},
    {"ZZ9.9+", "ZZ9.9+", EDIT_SIGN_SHOWN, 0, "", 0, {"+0123", "-0123"}},
    {"++,++9.99", "++,++9.99", EDIT_FLOAT_SIGN_SHOWN, 0, "", 0, {"+001234", "-000005"}},
    {"----9", "----9", EDIT_FLOAT_SIGN_IF_MINUS, 0, "", 0, {"+0042", "-0042", "-1042"}},
    {"$$$,$$9.99", "$$$,$$9.99", EDIT_FLOAT_CURRENCY, 0, "", 0, {"+0001234", "+1234567"}},
    {"$$$,$$9.99CR",
     "$$$,$$9.99CR",
     EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS,
     0,
     "",
     0,
     {"+0001234", "-0001234"}},
    {"$ZZ9.99DB", "$ZZ9.99DB", EDIT_SIGN_IF_MINUS, 0, "", 0, {"+01234", "-01234"}},
    {"$**,**9.99", "$**,**9.99", EDIT_SIGN_NONE, 0, "", 0, {"+0001234"}},
    {"**.** (all *)", "**.**", EDIT_SIGN_NONE, 1, "", 0, {"+0000", "+0005"}},
    {"ZZZ.ZZ (all Z)", "ZZZ.ZZ", EDIT_SIGN_NONE, 1, "", 0, {"+00000", "+00005"}},
    {"+++.++ (all +)", "+++.++", EDIT_FLOAT_SIGN_SHOWN, 1, "", 0, {"+0000", "-0005"}},
    {"ZZ9.99 BLANK WHEN ZERO",
     "ZZ9.99",
     BLANK_WHEN_ZERO(EDIT_SIGN_NONE),
     0,
     "",
     0,
     {"+00000", "+00001"}},
    {"-ZZ9 BLANK WHEN ZERO",
     "-ZZ9",
     BLANK_WHEN_ZERO(EDIT_SIGN_IF_MINUS),
     0,
     "",
     0,
     {"-000", "-007"}},
    {"99/99/9999", "99/99/9999", EDIT_SIGN_NONE, 0, "", 0, {"+25112026"}},
    {"9(3)B9(3)B0", "999 999 0", EDIT_SIGN_NONE, 0, "", 0, {"+123456"}},
    {"ZZ9PP", "ZZ9PP", EDIT_SIGN_NONE, 0, "", 0, {"+042"}},
    {"Z.ZZ9,99", "Z,ZZ9.99", EDIT_SIGN_NONE, 0, "DECIMAL-POINT IS COMMA", 0, {"+123456"}},
    {"EEE9.99", "$$$9.99", EDIT_FLOAT_CURRENCY, 0, "CURRENCY SIGN IS E", 0, {"+00123"}},
    {"UUU,UU9.99",
     "$$$,$$9.99",
     EDIT_FLOAT_CURRENCY,
     0,
     "CURRENCY SIGN \"EUR \" SYMBOL U",
     "EUR ",
     {"+0001234"}},
};

static void edit(const Row *row, const char *value) {
    union {
        NumericEditDescriptor descriptor;
        char bytes[sizeof(NumericEditDescriptor) + kLongest];
    } d;
    int16_t length = (int16_t)strlen(row->expanded);
    d.descriptor.pictureLength = row->suppressedAlone ? (int16_t)-length : length;
    d.descriptor.decimalPointChar = strstr(row->clauses, "COMMA") ? ',' : '.';
    d.descriptor.currencyChar = strstr(row->clauses, "IS E") ? 'E' : '$';
    d.descriptor.signFloatCode = row->code;
    memcpy(d.bytes + sizeof(NumericEditDescriptor), row->expanded, (size_t)length);

    char receiver[kLongest + 1] = "";
    if (row->currency) {
        union {
            CurrencyString string;
            char bytes[sizeof(CurrencyString) + kLongest];
        } c;
        c.string.length = (int16_t)strlen(row->currency);
        memcpy(c.bytes + sizeof(CurrencyString), row->currency, strlen(row->currency));
        _zorcMoveNumToNumEdit2(&d.descriptor, value, receiver, &c.string);
    } else {
        _zorcMoveNumToNumEdit(&d.descriptor, value, receiver);
    }
    printf("  %-10s [%s]\n", value, receiver);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "PICTURES",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

int main(void) {
    _zorPgmInit(&pcb);
    for (unsigned i = 0; i < sizeof rows / sizeof *rows; i++) {
        const Row *row = &rows[i];
        printf("%s: length %s%d, code %d, \"%s\"%s%s\n", row->picture,
               row->suppressedAlone ? "-" : "", (int)strlen(row->expanded), row->code,
               row->expanded, *row->clauses ? ", " : "", row->clauses);
        for (int value = 0; value < kMostValues && row->values[value]; value++)
            edit(row, row->values[value]);
    }
    static const AlphanumericEditDescriptor date = {10, 0, "XXXX/XX/XX"};
    char receiver[11] = "";
    _zorcMoveAlphaNumEdit(&date, "20261125", 8, receiver);
    printf("XXXX/XX/XX: positions 10, \"XXXX/XX/XX\"\n  20261125   [%s]\n", receiver);
    _zorPgmTerm(&pcb);
    return 0;
}

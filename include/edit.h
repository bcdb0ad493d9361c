/* Editing moves: the descriptors that a compiler builds from a PICTURE, and the routines that move
 * data through them. A descriptor is constant data of the compiled program at any address; its
 * fields are little-endian. Every routine is reentrant and touches only its arguments.
 *
 * A numeric pictureText is the expanded picture, one byte per position without repetition counts,
 * in canonical symbols whatever the program's DECIMAL-POINT and CURRENCY clauses say:
 *     9 Z * + - $ , . / 0   a blank for the B insertion   P V
 * and any other byte opens a two-byte sign pair (CR or DB in the wanted case). P and V occupy a
 * byte of pictureText and no byte of the edited item. */
#ifndef ZOR_EDIT_H
#define ZOR_EDIT_H

#include "zor_abi.h"

/* Values of NumericEditDescriptor.signFloatCode. They tell what "+" and "-" in the picture print:
 * with SHOWN the sender's sign byte as it stands, with IF_MINUS a blank for "+" and "-" for all
 * else, with neither a blank. A sign pair prints only when that is "-", so CR and DB need SHOWN or
 * IF_MINUS; with the codes 0, 1 and 12 they never print. FLOAT codes make the signs or the currency
 * signs of the picture a floating string. Names that end in a number mean the same as the name
 * without it. */
enum {
    EDIT_SIGN_NONE = 0,
    EDIT_SIGN_NONE_1 = 1,
    EDIT_SIGN_SHOWN = 2,
    EDIT_SIGN_IF_MINUS = 3,
    EDIT_SIGN_SHOWN_4 = 4,
    EDIT_SIGN_SHOWN_5 = 5,
    EDIT_FLOAT_SIGN_SHOWN = 6,
    EDIT_FLOAT_SIGN_IF_MINUS = 7,
    EDIT_FLOAT_SIGN_SHOWN_8 = 8,
    EDIT_FLOAT_SIGN_IF_MINUS_9 = 9,
    EDIT_FLOAT_CURRENCY_SIGN_SHOWN = 10,
    EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS = 11,
    EDIT_FLOAT_CURRENCY = 12,
    EDIT_LAST_CODE = EDIT_FLOAT_CURRENCY
};

/* The value of signFloatCode that adds BLANK WHEN ZERO to a code. It is 256 less the code, a byte
 * above EDIT_LAST_CODE; for code 0, where that does not fit a byte, code 1 serves. */
#define EDIT_BLANK_WHEN_ZERO(code)                                                                 \
    ((uint8_t)(256 - ((code) == EDIT_SIGN_NONE ? EDIT_SIGN_NONE_1 : (code))))

/* Numeric editing. Length 5 + |pictureLength|. */
struct NumericEditDescriptor {
    int16_t pictureLength;    /* bytes of pictureText; negative (magnitude counts), as for a picture
                                 of suppressed or floating positions alone: a value of zero becomes
                                 asterisks or blanks; 0: nothing is written */
    uint8_t decimalPointChar; /* "."; any other value swaps "." and "," in the edited item */
    uint8_t currencyChar;     /* currency sign, or the placeholder of the currency string */
    uint8_t signFloatCode;    /* EDIT_ codes, or EDIT_BLANK_WHEN_ZERO of one */
    ZOR_FLEXIBLE char pictureText[];
} __attribute__((packed));
ZOR_LAYOUT(NumericEditDescriptor, pictureLength, 0);
ZOR_LAYOUT(NumericEditDescriptor, decimalPointChar, 2);
ZOR_LAYOUT(NumericEditDescriptor, currencyChar, 3);
ZOR_LAYOUT(NumericEditDescriptor, signFloatCode, 4);
ZOR_LAYOUT(NumericEditDescriptor, pictureText, 5);
ZOR_SIZE(NumericEditDescriptor, 5);

/* De-editing. Length 2 + pictureLength. */
struct DeEditDescriptor {
    int16_t pictureLength; /* bytes of pictureText; 0 or less: no picture */
    ZOR_FLEXIBLE char pictureText[];
} __attribute__((packed));
ZOR_LAYOUT(DeEditDescriptor, pictureLength, 0);
ZOR_LAYOUT(DeEditDescriptor, pictureText, 2);
ZOR_SIZE(DeEditDescriptor, 2);

/* A currency sign of several characters. Length 2 + length. */
struct CurrencyString {
    int16_t length; /* bytes of text; 0 or less: none */
    ZOR_FLEXIBLE char text[];
} __attribute__((packed));
ZOR_LAYOUT(CurrencyString, length, 0);
ZOR_LAYOUT(CurrencyString, text, 2);
ZOR_SIZE(CurrencyString, 2);

/* Alphanumeric editing. pictureText has one byte per position, but 0x81 0x40 (the ideographic
 * blank) is one position of two bytes. */
struct AlphanumericEditDescriptor {
    int16_t positionCount; /* positions of the picture; below 1 nothing is done */
    uint8_t repeatSource;  /* not 0: a sender used up starts again; 0: blanks follow */
    ZOR_FLEXIBLE char pictureText[];
} __attribute__((packed));
ZOR_LAYOUT(AlphanumericEditDescriptor, positionCount, 0);
ZOR_LAYOUT(AlphanumericEditDescriptor, repeatSource, 2);
ZOR_LAYOUT(AlphanumericEditDescriptor, pictureText, 3);
ZOR_SIZE(AlphanumericEditDescriptor, 3);

/* One run of equal positions of a national picture, 4 bytes. */
struct NationalEditRun {
    uint16_t editChar; /* "0", "/" or blank is inserted; any other takes characters of the sender */
    int16_t runLength; /* positions; below 1 none */
} __attribute__((packed));
ZOR_LAYOUT(NationalEditRun, editChar, 0);
ZOR_LAYOUT(NationalEditRun, runLength, 2);
ZOR_SIZE(NationalEditRun, 4);

/* National editing. Length 4 + runBytes. */
struct NationalEditDescriptor {
    int16_t runBytes;     /* bytes of runs, a multiple of 4; below 1 nothing is done */
    uint8_t repeatSource; /* as in AlphanumericEditDescriptor */
    uint8_t reserved;
    ZOR_FLEXIBLE struct NationalEditRun runs[];
} __attribute__((packed));
ZOR_LAYOUT(NationalEditDescriptor, runBytes, 0);
ZOR_LAYOUT(NationalEditDescriptor, repeatSource, 2);
ZOR_LAYOUT(NationalEditDescriptor, runs, 4);
ZOR_SIZE(NationalEditDescriptor, 4);

typedef struct NumericEditDescriptor NumericEditDescriptor;
typedef struct DeEditDescriptor DeEditDescriptor;
typedef struct CurrencyString CurrencyString;
typedef struct AlphanumericEditDescriptor AlphanumericEditDescriptor;
typedef struct NationalEditRun NationalEditRun;
typedef struct NationalEditDescriptor NationalEditDescriptor;

ZOR_BEGIN_C

/* Edits a number by its picture. digitStream is a sign byte "+" or "-" and then the decimal digit
 * characters, one for each "9", "Z" and "*" of the picture and each sign or currency sign of a
 * floating string but its first, aligned to the picture's decimal point: a zoned item with a
 * leading separate sign, as the _To_ZndLS conversions of decimal_moves.h give it. Writes one byte
 * for each byte of pictureText but P and V. */
ZOR_EXPORT void _zorcMoveNumToNumEdit(const NumericEditDescriptor *descriptor,
                                      const void *digitStream, void *receiver);

/* Edits a number whose currency sign is a string. As _zorcMoveNumToNumEdit, and then the first
 * currencyChar in the edited form gives way to currencyString: the receiver is longer by the
 * string's length less 1. */
ZOR_EXPORT void _zorcMoveNumToNumEdit2(const NumericEditDescriptor *descriptor,
                                       const void *digitStream, void *receiver,
                                       const CurrencyString *currencyString);

/* De-edits an edited item by its picture. result receives the digit characters in their order and
 * one trailing sign byte, "+" or
 * "-": a zoned item with a trailing separate sign. It is at least 1 and at most pictureLength + 1
 * bytes long. Returns 0, or 1 when the sender does not fit the picture; then result holds nothing
 * of use. */
ZOR_EXPORT int32_t _zorcMoveNumEditToNum(const DeEditDescriptor *descriptor, const void *sender,
                                         void *result);

/* De-edits a sender whose currency sign is currencyString; a sender without that string is read as
 * _zorcMoveNumEditToNum reads it. */
ZOR_EXPORT int32_t _zorcMoveNumEditToNum2(const DeEditDescriptor *descriptor, const void *sender,
                                          void *result, const CurrencyString *currencyString);

/* Edits senderLength bytes through an alphanumeric picture. */
ZOR_EXPORT void _zorcMoveAlphaNumEdit(const AlphanumericEditDescriptor *descriptor,
                                      const void *sender, int32_t senderLength, void *receiver);

/* Edits national data; senderBytes is even. The receiver gets one character (2 bytes) per
 * position. */
ZOR_EXPORT void _zorcMoveUnicodeEdit(const NationalEditDescriptor *descriptor, const void *sender,
                                     int32_t senderBytes, void *receiver);

/* Fills the receiver with copies of a literal. A negative receiver length (magnitude counts) means
 * JUSTIFIED RIGHT: the receiver then ends with a whole literal. A literal of length below 1 leaves
 * the receiver as it is. */
ZOR_EXPORT void _zorcMoveFigConst(void *receiver, int32_t signedReceiverLength, const void *literal,
                                  int32_t literalLength);

/* Moves bytes between items that may overlap, cutting or padding to the receiver's length. The
 * magnitudes are the lengths. A negative receiver length means JUSTIFIED RIGHT, a negative sender
 * length pads with 0x40 instead of 0x20. */
ZOR_EXPORT void _zorcMoveVarLenOverlap(void *receiver, int32_t signedReceiverLength,
                                       const void *sender, int32_t signedSenderLength);

ZOR_END_C

#endif

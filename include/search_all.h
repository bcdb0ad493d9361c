/* SEARCH ALL: a binary search by keys of any type. */
#ifndef ZOR_SEARCH_ALL_H
#define ZOR_SEARCH_ALL_H

#include "pcb.h"
#include "zor_abi.h"

/* Values of SearchKey.keyType, with SEARCH_ASCENDING or, for a DESCENDING key, without. */
enum {
    SEARCH_ASCENDING = 0x80,
    SEARCH_NATIONAL_NUMERIC = 2, /* digits in UTF-16 units, a sign as signFlags tell */
    SEARCH_NATIONAL = 4,
    SEARCH_NATIONAL_6 = 6,    /* the same; a sign as signFlags tell takes no part */
    SEARCH_TEXT = 8,          /* by the weights of PCB.collatingWeights, if there are any */
    SEARCH_EBCDIC_TEXT = 9,   /* as it stands */
    SEARCH_ZONED = 16,        /* a sign as signFlags tell */
    SEARCH_EBCDIC_ZONED = 17, /* the same in EBCDIC */
    SEARCH_PACKED = 32,
    SEARCH_BINARY = 64,         /* signed, of any length, in the machine's byte order */
    SEARCH_BINARY_BIG = 65,     /* the same, the high-order byte first */
    SEARCH_TEXT_96 = 96,        /* as SEARCH_TEXT; a sign as signFlags tell takes no part */
    SEARCH_EBCDIC_TEXT_97 = 97, /* as SEARCH_EBCDIC_TEXT, the same */
    SEARCH_TYPE_MASK = 0x7F
};

/* Bits of the signFlags. A key whose type heeds a sign has one when SEARCH_SIGNED is set and
 * SEARCH_NO_DISPLAY_SIGN is not. */
enum {
    SEARCH_NO_DISPLAY_SIGN = 0x80,
    SEARCH_SIGNED = 0x40,
    SEARCH_SIGN_LEADING = 0x20,  /* otherwise trailing */
    SEARCH_SIGN_SEPARATE = 0x10, /* a byte, or a unit of a national key, within keyLength */
};

/* The head of the block. Behind it, each directly behind the other: keyCount SearchKeys,
 * argumentCount signed 32-bit lengths in bytes, those of the arguments as they stand in the
 * program, and argumentCount bytes of signFlags. Key and argument of one number belong together;
 * those without a partner take no part. */
struct SearchBlock {
    uint16_t indexCount; /* addresses in indexOffsets */
    int16_t keyCount;
    int16_t argumentCount;
    uint16_t reserved6;
};
ZOR_LAYOUT(SearchBlock, indexCount, 0);
ZOR_LAYOUT(SearchBlock, keyCount, 2);
ZOR_LAYOUT(SearchBlock, argumentCount, 4);
ZOR_SIZE(SearchBlock, 8);

struct SearchKey {
    uint8_t keyType;
    uint8_t keyLength; /* in bytes, a separate sign included */
    int16_t keyOffset; /* from the start of a table entry */
};
ZOR_LAYOUT(SearchKey, keyType, 0);
ZOR_LAYOUT(SearchKey, keyLength, 1);
ZOR_LAYOUT(SearchKey, keyOffset, 2);
ZOR_SIZE(SearchKey, 4);

struct SearchArgument {
    const void *laidOut;    /* as a key: of its type and length */
    const void *asItStands; /* in the program; read as far as it is longer than the key */
};
ZOR_LAYOUT(SearchArgument, laidOut, 0);
ZOR_LAYOUT(SearchArgument, asItStands, 4);
ZOR_SIZE(SearchArgument, 8);

typedef struct SearchBlock SearchBlock;
typedef struct SearchKey SearchKey;
typedef struct SearchArgument SearchArgument;

ZOR_BEGIN_C

/* Searches the table at tableAddress and all the offsets, whose entryCount entries of entrySize
 * bytes are in the order of the keys, first key first. Gives the offset of an entry all of whose
 * keys equal their arguments from that address; -1 when there is none, as when an argument is
 * longer than its key and the rest of it is no padding: no blanks behind a text, no zeros ahead of
 * a number, or in keys that are not national no bytes that weigh as much. Of several equal entries
 * the first that the search comes upon is given. Issues message 907 when there is no storage for a
 * statement of many or long keys; the result is -1 then. */
ZOR_EXPORT int32_t _zorcSrchAll(const SearchBlock *block, const void *tableAddress,
                                int32_t entryCount, int32_t entrySize,
                                const SearchArgument *arguments, const int32_t *const *indexOffsets,
                                const PCB *pcb);

ZOR_END_C

#endif

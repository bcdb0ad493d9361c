/* STRING and UNSTRING: one block describes a whole statement. Results come back in the block, from
 * where generated code moves them into the program's items. */
#ifndef ZOR_STRING_UNSTRING_H
#define ZOR_STRING_UNSTRING_H

#include "pcb.h"
#include "zor_abi.h"

/* Bits of StringBlock.stringFlags. */
enum {
    STRING_WITH_POINTER = 0x80,
    STRING_DBCS = 0x40, /* two-byte characters */
    STRING_COLLATING =
        0x10,              /* single-byte delimiters match by the weights of PCB.collatingWeights */
    STRING_NATIONAL = 0x08 /* two-byte characters */
};

/* The head of a STRING statement; groupCount groups follow it, one directly behind the other: a
 * StringGroup and its senderCount StringSenders. All lengths are in bytes. */
struct StringBlock {
    uint8_t reserved0[3];
    uint8_t stringFlags;
    void *targetAddress; /* the INTO item */
    uint32_t targetLength;
    uint32_t pointerValue; /* in: with STRING_WITH_POINTER, the position of the first character to
                              be written, from 1. Out: always, the position behind the last one */
    uint32_t groupCount;
};
ZOR_LAYOUT(StringBlock, stringFlags, 3);
ZOR_LAYOUT(StringBlock, targetAddress, 4);
ZOR_LAYOUT(StringBlock, targetLength, 8);
ZOR_LAYOUT(StringBlock, pointerValue, 12);
ZOR_LAYOUT(StringBlock, groupCount, 16);
ZOR_SIZE(StringBlock, 20);

/* The senders of one DELIMITED BY phrase. */
struct StringGroup {
    const void *delimiterAddress; /* 0: DELIMITED BY SIZE */
    uint32_t delimiterLength;     /* 0: DELIMITED BY SIZE */
    uint32_t senderCount;
};
ZOR_LAYOUT(StringGroup, delimiterAddress, 0);
ZOR_LAYOUT(StringGroup, delimiterLength, 4);
ZOR_LAYOUT(StringGroup, senderCount, 8);
ZOR_SIZE(StringGroup, 12);

struct StringSender {
    const void *senderAddress;
    uint32_t senderLength;
};
ZOR_LAYOUT(StringSender, senderAddress, 0);
ZOR_LAYOUT(StringSender, senderLength, 4);
ZOR_SIZE(StringSender, 8);

/* Bits of UnstringBlock.unstringFlags. */
enum {
    UNSTRING_WITH_POINTER = 0x80,
    UNSTRING_DBCS = 0x40,
    UNSTRING_COLLATING = 0x10, /* as STRING_COLLATING */
    UNSTRING_TALLYING = 0x08,
    UNSTRING_NATIONAL = 0x02
};

/* The head of an UNSTRING statement; delimiterCount UnstringDelimiters follow it. */
struct UnstringBlock {
    uint8_t reserved0[3];
    uint8_t unstringFlags;
    const void *senderAddress;
    uint32_t senderLength;   /* in bytes */
    uint32_t pointerValue;   /* with UNSTRING_WITH_POINTER, in and out: in characters, from 1 */
    uint32_t tallyValue;     /* with UNSTRING_TALLYING, in and out */
    uint32_t delimiterCount; /* 0: each field is as long as its receiver */
    uint32_t receiverCount;
};
ZOR_LAYOUT(UnstringBlock, unstringFlags, 3);
ZOR_LAYOUT(UnstringBlock, senderAddress, 4);
ZOR_LAYOUT(UnstringBlock, senderLength, 8);
ZOR_LAYOUT(UnstringBlock, pointerValue, 12);
ZOR_LAYOUT(UnstringBlock, tallyValue, 16);
ZOR_LAYOUT(UnstringBlock, delimiterCount, 20);
ZOR_LAYOUT(UnstringBlock, receiverCount, 24);
ZOR_SIZE(UnstringBlock, 28);

/* The bit of UnstringDelimiter.delimiterFlags that is read. */
enum { UNSTRING_DELIMITER_ALL = (int)0x80000000 };

struct UnstringDelimiter {
    const void *delimiterAddress;
    uint32_t delimiterLength; /* in bytes; an empty delimiter is found nowhere */
    uint32_t delimiterFlags;
};
ZOR_LAYOUT(UnstringDelimiter, delimiterAddress, 0);
ZOR_LAYOUT(UnstringDelimiter, delimiterLength, 4);
ZOR_LAYOUT(UnstringDelimiter, delimiterFlags, 8);
ZOR_SIZE(UnstringDelimiter, 12);

/* Bits of UnstringReceiver.receiverFlags; in delimiterInFlags, UNSTRING_JUSTIFIED alone. */
enum {
    UNSTRING_NUMERIC = 0x80, /* numeric DISPLAY */
    UNSTRING_SIGN_SEPARATE = 0x40,
    UNSTRING_SIGN_LEADING = 0x20, /* otherwise trailing */
    UNSTRING_JUSTIFIED = 0x10,    /* JUSTIFIED RIGHT */
    UNSTRING_NATIONAL_NUMERIC = 0x08
};

/* One receiver of an UNSTRING statement; they form an array of their own. */
struct UnstringReceiver {
    void *receiverAddress; /* the INTO item */
    uint32_t receiverLength;
    uint32_t integerPositions; /* of a numeric receiver: the bytes that hold its integer digits,
                                  which are its first ones but for a separate leading sign */
    uint8_t reserved12[3];
    uint8_t receiverFlags;
    void *delimiterInAddress; /* the DELIMITER IN item; 0: none */
    uint32_t delimiterInLength;
    uint8_t reserved24[3];
    uint8_t delimiterInFlags;
    uint32_t fieldCount; /* out, for COUNT IN: the length of the field in characters; of a receiver
                            that gets no field it stays as it was */
};
ZOR_LAYOUT(UnstringReceiver, receiverAddress, 0);
ZOR_LAYOUT(UnstringReceiver, receiverLength, 4);
ZOR_LAYOUT(UnstringReceiver, integerPositions, 8);
ZOR_LAYOUT(UnstringReceiver, receiverFlags, 15);
ZOR_LAYOUT(UnstringReceiver, delimiterInAddress, 16);
ZOR_LAYOUT(UnstringReceiver, delimiterInLength, 20);
ZOR_LAYOUT(UnstringReceiver, delimiterInFlags, 27);
ZOR_LAYOUT(UnstringReceiver, fieldCount, 28);
ZOR_SIZE(UnstringReceiver, 32);

typedef struct StringBlock StringBlock;
typedef struct StringGroup StringGroup;
typedef struct StringSender StringSender;
typedef struct UnstringBlock UnstringBlock;
typedef struct UnstringDelimiter UnstringDelimiter;
typedef struct UnstringReceiver UnstringReceiver;

ZOR_BEGIN_C

/* Carries out a STRING statement. Of the PCB only collatingWeights is read. overflowCell: 0 when
 * the statement has no ON OVERFLOW phrase; any other value grows by 1 when the target is too short.
 * A pointer value outside 1 to the target's length and 1 more leaves no room in the target. */
ZOR_EXPORT void _zorcString(StringBlock *block, const PCB *pcb, uint32_t *overflowCell);

/* Carries out an UNSTRING statement; pcb and overflowCell are as for STRING. The cell grows when
 * characters are left for which there is no receiver. A pointer value outside 1 to the sender's
 * length and 1 more leaves nothing to be taken apart. */
ZOR_EXPORT void _zorcUnString(UnstringBlock *block, UnstringReceiver *receiverTable, const PCB *pcb,
                              uint32_t *overflowCell);

ZOR_END_C

#endif

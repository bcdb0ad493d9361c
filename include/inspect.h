/* INSPECT: one block describes a whole statement, TALLYING, REPLACING, both, or CONVERTING, over
 * single-byte, DBCS or national items. The routine reads the block and does not write it. */
#ifndef ZOR_INSPECT_H
#define ZOR_INSPECT_H

#include "zor_abi.h"

/* Bits of InspectClause.clauseFlags. A clause with neither LEADING nor FIRST is an ALL clause. */
enum {
    INSPECT_TALLYING = (int)0x80000000,
    INSPECT_REPLACING = 0x40000000,
    INSPECT_CONVERTING = 0x20000000,
    INSPECT_CHARACTERS = 0x10000000, /* the compared item is any one character; not read */
    INSPECT_LEADING = 0x04000000,
    INSPECT_FIRST = 0x02000000,
    INSPECT_BEFORE = 0x01000000,    /* a BEFORE phrase is present */
    INSPECT_AFTER = 0x00800000,     /* an AFTER phrase is present */
    INSPECT_FIGURATIVE = 0x00020000 /* the target's first character stands for as many characters as
                                       the compared item has */
};

/* Bits that tell what an operand is: in itemFlags, compareFlags, beforeFlags and afterFlags, and in
 * clauseFlags for the target. The sign takes no part in the statement. INSPECT_SIGNED_DISPLAY and
 * INSPECT_SIGNED_NATIONAL are two bits each, to be set together. */
enum {
    INSPECT_SIGNED_DISPLAY = 0x00300000,  /* at most INSPECT_MAX_SIGNED bytes, unless separate */
    INSPECT_SIGNED_NATIONAL = 0x00108000, /* an embedded sign is left out as a separate one is */
    INSPECT_SIGN_SEPARATE = 0x00040000,
    INSPECT_SIGN_LEADING = 0x00080000, /* otherwise trailing */
    INSPECT_NATIONAL = 0x00400000,     /* itemFlags: all operands hold national characters */
    INSPECT_DBCS = 0x00010000          /* itemFlags: all operands hold two-byte characters */
};

/* The longest numeric DISPLAY operand with an embedded sign; of a longer one the sign counts as
 * part of the text. */
enum { INSPECT_MAX_SIGNED = 126 };

/* The head of the block; clauseCount clauses follow it directly, those of TALLYING first. All
 * lengths are in bytes. */
struct InspectBlock {
    uint32_t clauseCount;
    uint32_t itemFlags;
    uint32_t itemLength;
    void *itemAddress; /* the inspected item */
};
ZOR_LAYOUT(InspectBlock, clauseCount, 0);
ZOR_LAYOUT(InspectBlock, itemFlags, 4);
ZOR_LAYOUT(InspectBlock, itemLength, 8);
ZOR_LAYOUT(InspectBlock, itemAddress, 12);
ZOR_SIZE(InspectBlock, 16);

struct InspectClause {
    uint32_t clauseFlags;
    uint32_t targetLength; /* REPLACING: of the BY operand, CONVERTING: of the TO operand */
    union {
        const void *targetAddress; /* its address */
        uint32_t *counter;         /* TALLYING: the counter, which the routine increments */
    };
    uint32_t compareFlags;
    uint32_t compareLength; /* of the compared item or CONVERTING's FROM operand */
    const void *compareAddress;
    uint32_t beforeFlags; /* the delimiter of BEFORE */
    uint32_t beforeLength;
    const void *beforeAddress;
    uint32_t afterFlags; /* the delimiter of AFTER */
    uint32_t afterLength;
    const void *afterAddress;
};
ZOR_LAYOUT(InspectClause, clauseFlags, 0);
ZOR_LAYOUT(InspectClause, targetLength, 4);
ZOR_LAYOUT(InspectClause, targetAddress, 8);
ZOR_LAYOUT(InspectClause, counter, 8);
ZOR_LAYOUT(InspectClause, compareFlags, 12);
ZOR_LAYOUT(InspectClause, compareLength, 16);
ZOR_LAYOUT(InspectClause, compareAddress, 20);
ZOR_LAYOUT(InspectClause, beforeFlags, 24);
ZOR_LAYOUT(InspectClause, beforeLength, 28);
ZOR_LAYOUT(InspectClause, beforeAddress, 32);
ZOR_LAYOUT(InspectClause, afterFlags, 36);
ZOR_LAYOUT(InspectClause, afterLength, 40);
ZOR_LAYOUT(InspectClause, afterAddress, 44);
ZOR_SIZE(InspectClause, 48);

typedef struct InspectBlock InspectBlock;
typedef struct InspectClause InspectClause;

ZOR_BEGIN_C

/* Carries out an INSPECT statement. TALLYING clauses that REPLACING clauses follow make a pass of
 * their own, ahead of theirs. An empty compared item never matches, an empty delimiter is never
 * found. Issues message 76 or 77 when the two operands of a REPLACING or CONVERTING clause differ
 * in length and the target is not figurative, and goes on with the shorter length; message 907 when
 * there is no storage for a statement of many clauses, which then does nothing. */
ZOR_EXPORT void _zorcInspect(const InspectBlock *block);

ZOR_END_C

#endif

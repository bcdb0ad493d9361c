/* Collating: the tables of the locale's and of the EBCDIC order, comparisons through a collating
 * table and against figurative constants, and double-byte data. Lengths are in bytes. */
#ifndef ZOR_COLLATING_H
#define ZOR_COLLATING_H

#include "pcb.h"

ZOR_BEGIN_C

/* Sets pcb->collatingWeights (entry b: the rank of byte b in the locale's order) and
 * pcb->collatingOrder (entry r: the byte of rank r). In a multi-byte locale the order is that of
 * the locale "en_US" if there is one. The tables are built once for the process. */
ZOR_EXPORT void _zorcCollSeq(PCB *pcb);

/* Sets pcb->ebcdicTable and pcb->ebcdicTable2, of the same content: entry e is the native byte for
 * EBCDIC byte e. Where that is not one byte the entry is 0x1A; the first call then issues message
 * 221 or 222 of national.h and message 230, variant 5. */
ZOR_EXPORT void _zorcEBCDIC(PCB *pcb);

/* Compares through a table of 256 weights: -1, 0, 1. The shorter item counts as filled up with
 * blanks. A negative length makes its side a figurative constant of that magnitude, which counts as
 * repeated, or cut, to the length of the other side. */
ZOR_EXPORT int32_t _zorcCmpACS(const void *left, int32_t leftLength, const void *right,
                               int32_t rightLength, const uint8_t *table);

/* Compares every byte with one pad byte: -1, 0, 1 by the first that differs. */
ZOR_EXPORT int32_t _zorcCmpToPad(const void *data, uint8_t pad, int32_t length);

/* Compares data with copies of a literal, the last one cut: below 0, 0, above 0. Lengths below 1
 * give 0. */
ZOR_EXPORT int32_t _zorcCmpMultiByteFig(const void *data, int32_t dataLength, const void *literal,
                                        int32_t literalLength);

/* Compare double-byte data in the locale's order: below 0, 0, above 0. The shorter operand counts
 * as filled up with 0x81 0x40; a literal is repeated, the last copy cut. A zero byte ends an
 * operand. */
ZOR_EXPORT int32_t _zorcDBCSCmp(const void *left, int32_t leftLength, const void *right,
                                int32_t rightLength);
ZOR_EXPORT int32_t _zorcDBCSCmpMultiByteFig(const void *data, int32_t dataLength,
                                            const void *literal, int32_t literalLength);

/* Moves double-byte data between items that may overlap; the magnitudes of the lengths count. The
 * start of the source goes to the start of the target or, with a negative target length (JUSTIFIED
 * RIGHT), to its end, and the rest is filled with pairs: the double-byte blank of the locale or,
 * with a negative source length, 0x40 0x40. */
ZOR_EXPORT void _zorcDBCSMoveVarLenOverlap(void *target, int32_t signedTargetLength,
                                           const void *source, int32_t signedSourceLength);

ZOR_END_C

#endif

/* EXTERNAL data items: one storage for each name, shared by all programs of a run unit. */
#ifndef ZOR_EXTERNAL_DATA_H
#define ZOR_EXTERNAL_DATA_H

#include "zor_abi.h"

/* One EXTERNAL item of a program; written by the compiler. */
struct ExternalDataItem {
    uint32_t length; /* in bytes */
    char name[32];   /* terminated */
};
ZOR_LAYOUT(ExternalDataItem, length, 0);
ZOR_LAYOUT(ExternalDataItem, name, 4);
ZOR_SIZE(ExternalDataItem, 36);

/* All EXTERNAL items of a program. */
struct ExternalDataTable {
    int32_t count;
    uint32_t reserved4[8];
    ZOR_FLEXIBLE struct ExternalDataItem items[];
};
ZOR_LAYOUT(ExternalDataTable, count, 0);
ZOR_LAYOUT(ExternalDataTable, items, 36);
ZOR_SIZE(ExternalDataTable, 36);

typedef struct ExternalDataItem ExternalDataItem;
typedef struct ExternalDataTable ExternalDataTable;

ZOR_BEGIN_C

/* Fills addresses, an array of count pointers, with the storage of the items, 8-byte aligned. The
 * first program of the run unit that names an item makes its storage, filled with zero bytes; it
 * lives until the run unit ends. A program calls this at its entry, behind _zorPgmInit. An item
 * that has another length there gets the storage as it is, and message 66, which ends the run. So
 * does message 907 for want of storage. Without a run unit nothing happens. */
ZOR_EXPORT void _zorExtVarInit(const ExternalDataTable *table, void **addresses);

ZOR_END_C

#endif

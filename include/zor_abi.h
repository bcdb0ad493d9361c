/* What every interface header needs: export and linkage macros, and the layout checks. */
#ifndef ZOR_ABI_H
#define ZOR_ABI_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define ZOR_BEGIN_C extern "C" {
#define ZOR_END_C }
#else
#define ZOR_BEGIN_C
#define ZOR_END_C
#endif

/* Marks a function or a data word that compiled programs and hosts may use. */
#define ZOR_EXPORT __attribute__((visibility("default")))

/* A record that generated code lays out or reads: its layout is fixed to the byte. */
#define ZOR_LAYOUT(type, field, offset)                                                            \
    static_assert(offsetof(struct type, field) == (offset), #type "." #field " has moved")
#define ZOR_SIZE(type, size) static_assert(sizeof(struct type) == (size), #type " has changed size")

#endif

/* What every interface header needs: export and linkage macros, and the layout checks. */
#ifndef ZOR_ABI_H
#define ZOR_ABI_H

#ifndef __i386__
#error "The interface of the COBOL run-time is for 32-bit x86: compile with -m32."
#endif

/* Strict C hides what the records here hold of POSIX, unless it is asked for ahead of the first
 * system header. */
#if defined(__STRICT_ANSI__) && !defined(_POSIX_C_SOURCE)
#define _POSIX_C_SOURCE 200809L
#endif

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

/* Ahead of the array of unstated length that ends a record: C++ has it as an extension only. */
#define ZOR_FLEXIBLE __extension__

/* A record that generated code lays out or reads: its layout is fixed to the byte. */
#ifdef __i386__
#define ZOR_LAYOUT(type, field, offset)                                                            \
    static_assert(offsetof(struct type, field) == (offset), #type "." #field " has moved")
#define ZOR_SIZE(type, size) static_assert(sizeof(struct type) == (size), #type " has changed size")
#else /* the line above says it all */
#define ZOR_LAYOUT(type, field, offset) struct type
#define ZOR_SIZE(type, size) struct type
#endif

#endif

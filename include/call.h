/* CALL and CANCEL of programs by name. A name is looked for among the nested programs that the
 * caller knows, among the programs known to the run unit, among the cached ones, and then along
 * COBPATH as a shared object whose dynamic symbol of that name is the entry. */
#ifndef ZOR_CALL_H
#define ZOR_CALL_H

#include "pcb.h"

/* What a CALL goes to. */
struct FunctionDescriptor {
    void *entry; /* entry address */
    uint32_t reserved4;
};
ZOR_LAYOUT(FunctionDescriptor, entry, 0);
ZOR_SIZE(FunctionDescriptor, 8);

/* A nested program that may be called by name; written by the compiler. */
struct NestedProgram {
    int32_t index;       /* its position, from 1, among the IPCBs of PCB.ipcb */
    uint32_t namelen;    /* length of the name in bytes */
    uint32_t nameoffset; /* where the name begins, in bytes behind the last record */
};
ZOR_LAYOUT(NestedProgram, namelen, 4);
ZOR_LAYOUT(NestedProgram, nameoffset, 8);
ZOR_SIZE(NestedProgram, 12);

/* Nested program table: the records, and right behind them the names, not terminated. Beside it
 * the compiler lays out an array of FunctionDescriptors, one per record. */
struct NestedProgramTable {
    uint32_t count;
    ZOR_FLEXIBLE struct NestedProgram programs[];
};
ZOR_LAYOUT(NestedProgramTable, programs, 4);
ZOR_SIZE(NestedProgramTable, 4);

typedef struct FunctionDescriptor FunctionDescriptor;
typedef struct NestedProgram NestedProgram;
typedef struct NestedProgramTable NestedProgramTable;

ZOR_BEGIN_C

/* CALL: finds a program, loads its file when it is not known yet, and gives a descriptor of its
 * entry, which generated code then calls. nested may be 0, entries then too. Of name, length bytes
 * and not terminated, at most 160 bytes count, without blanks and zero bytes at the end; flag
 * PCB_UPPER_CASE_NAMES of the caller's pcb folds it to upper case. The result is an element of
 * entries for a nested program; otherwise it lies in storage of the thread that its next CALL
 * uses again.
 *
 * exception is the address of a word that is not 0 when the CALL has ON EXCEPTION. When the program
 * cannot be had the result is 0, and 1 has been added to such a word; without ON EXCEPTION message
 * 96 was issued, which ends the run. Its variants: 3 no storage, 6 the name is empty, 7 not found,
 * not loadable, no entry symbol, or unloaded from the cache by this run unit. */
ZOR_EXPORT FunctionDescriptor *_zorDynLd(const NestedProgramTable *nested, int32_t length,
                                         const char *name, const PCB *pcb,
                                         FunctionDescriptor *entries, int32_t *exception);

/* CANCEL: puts a program and its nested ones into their initial state and closes their files,
 * EXTERNAL ones excepted; its next entry links it afresh. The file stays loaded. The name is taken
 * as by _zorDynLd. Returns 1 when the program is active, and nothing was done; otherwise 0, also
 * when it is not known. */
ZOR_EXPORT int32_t _zorCancel(const NestedProgramTable *nested, int32_t length, const char *name,
                              const PCB *pcb);

/* The main routine of a program that was linked as a subroutine and must not be executed by itself:
 * says so on stderr and ends the process with status 1. In an executed file whose name begins with
 * "lib", "zor" or "xcoff_reader_" it tells what the library is, and ends with status 0. */
ZOR_EXPORT void _zorSubroutineMain(int32_t argc, char **argv, char **envp);

ZOR_END_C

#endif

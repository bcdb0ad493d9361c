/* A sort engine that hands each call to the function whose address the program gave as options. */
#include <unistd.h>

#include "sort.h"

typedef struct {
    uint32_t word[23]; /* of the call, behind its function */
} Arguments;
enum { OPTIONS = 18 };

ZOR_EXPORT int32_t ENTRY(int32_t function, Arguments arguments);
int32_t ENTRY(int32_t function, Arguments arguments) {
    if (function == SORT_END) {
        return (int32_t)write(STDERR_FILENO, "engine ended\n", 13);
    }
    return ((int32_t(*)(int32_t, Arguments))arguments.word[OPTIONS])(function, arguments);
}

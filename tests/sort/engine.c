/* A sort engine that hands each call to the function whose address the program gave as options. */
#include <unistd.h>

#include "sort.h"

ZOR_EXPORT int32_t ENTRY(int32_t function, RecordDesc recdesc, RecordDesc outdesc,
                         const char *inputwork, uint32_t inputbytes, uint8_t *inputbuffer,
                         int32_t inputcount, FCB **inputfcbs, const char *outputwork,
                         uint32_t outputsize, uint8_t *outputbuffer, int32_t outputcount,
                         FCB **outputfcbs, int32_t keycount, const char *keytext, uint32_t options,
                         const char *sortdir, int32_t *errorword, int32_t *errorvalue, IPCB *ipcb);

int32_t ENTRY(int32_t function, RecordDesc recdesc, RecordDesc outdesc, const char *inputwork,
              uint32_t inputbytes, uint8_t *inputbuffer, int32_t inputcount, FCB **inputfcbs,
              const char *outputwork, uint32_t outputsize, uint8_t *outputbuffer,
              int32_t outputcount, FCB **outputfcbs, int32_t keycount, const char *keytext,
              uint32_t options, const char *sortdir, int32_t *errorword, int32_t *errorvalue,
              IPCB *ipcb) {
    static const char ended[] = "engine ended\n";
    if (function == SORT_END) {
        return (int32_t)write(STDERR_FILENO, ended, sizeof ended - 1);
    }
    return ((SortMerge)options)(function, recdesc, outdesc, inputwork, inputbytes, inputbuffer,
                                inputcount, inputfcbs, outputwork, outputsize, outputbuffer,
                                outputcount, outputfcbs, keycount, keytext, options, sortdir,
                                errorword, errorvalue, ipcb);
}

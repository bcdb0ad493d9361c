/* The message service. */
#ifndef ZOR_MESSAGES_H
#define ZOR_MESSAGES_H

#include <stdarg.h>

#include "zor_abi.h"

/* Bits of the flags argument. The low eight bits select the message within the number's catalogue
 * set, counted from 0. */
enum {
    MESSAGE_OPEN_CATALOG = 256,  /* the whole word: open the catalogue */
    MESSAGE_CLOSE_CATALOG = 257, /* the whole word: close it and free the buffer */
    MESSAGE_VARIANT_MASK = 0x00FF,
    MESSAGE_NO_TRACEBACK = 0x0400,  /* no traceback ahead of a closing line */
    MESSAGE_SEVERE = 0x0800,        /* severity 2 whatever the catalogue says */
    MESSAGE_INFORMATIONAL = 0x1000, /* severity 0 whatever the catalogue says */
    MESSAGE_RETURN_TEXT = 0x2000    /* the first two variable arguments are a buffer and its size:
                                       the text goes there and nowhere else */
};

ZOR_BEGIN_C

/* Issues message msgno with the arguments that its catalogue text wants. Counts warnings, ends the
 * run after a severe or critical message (then it does not return, unless the run-time has ended:
 * without one there is no catalogue either, every message is severe, and none ends anything).
 * Returns 0, or -1 for message 995. A file that COBMSGS names is flushed behind each message; text
 * past its size limit (ulimit -f) is lost, SIGXFSZ is shown each time, and the run goes on. */
ZOR_EXPORT int32_t _zorWriteERRmsg(int32_t msgno, uint32_t flags, ...);

/* A user's forced abnormal end: message 901. */
ZOR_EXPORT void ZORABEND(void);
ZOR_EXPORT void ZORABORT(void);

/* Makes a core file and goes on: 1 when one was made, 0 when not; inside the transaction monitor it
 * makes none and returns the monitor's depth. */
ZOR_EXPORT int32_t ZORDUMP(void);

ZOR_END_C

#endif

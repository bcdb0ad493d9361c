/* The whole interface of the library: this header includes all others of its folder. It comes ahead
 * of every system header, because strict C hides what the records hold of POSIX unless it is asked
 * for first. */
#ifndef ZOR_LVD4_H
#define ZOR_LVD4_H

#include "zor_abi.h"

#include "call.h"
#include "class_tests.h"
#include "codepage.h"
#include "collating.h"
#include "concat.h"
#include "cpm.h"
#include "date_functions.h"
#include "decimal.h"
#include "decimal_convert.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "external_data.h"
#include "fcb.h"
#include "file.h"
#include "floating_formats.h"
#include "inspect.h"
#include "mathematics.h"
#include "messages.h"
#include "national.h"
#include "numval.h"
#include "pcb.h"
#include "power.h"
#include "proccom.h"
#include "runcom.h"
#include "search_all.h"
#include "segments.h"
#include "signal_row.h"
#include "sort.h"
#include "sort_engine.h"
#include "statistics.h"
#include "string_unstring.h"
#include "text_functions.h"

/* The version of these headers, a byte each for major, minor and patch, and as text. */
#define LVD4_VERSION 0x060100
#define LVD4_VERSION_TEXT "6.1.0"

#endif

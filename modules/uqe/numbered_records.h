// Sequential and relative records in a database: a table of numbers and records.
#ifndef ZOR_MODULES_UQE_NUMBERED_RECORDS_H
#define ZOR_MODULES_UQE_NUMBERED_RECORDS_H

#include "uqe/database.h"

namespace zor::modules {

Outcome openNumbered(UqeFile &file);

} // namespace zor::modules

#endif

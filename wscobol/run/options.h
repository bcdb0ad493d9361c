// Run-time options: the environment variable COBRTOPT.
#ifndef ZOR_RUN_OPTIONS_H
#define ZOR_RUN_OPTIONS_H

#include "proccom.h"

namespace zor {

// Sets the option fields of Proccom to their defaults and applies COBRTOPT. Bad tokens issue
// messages 171 to 174, 181, 182 and leave the default.
void readRunTimeOptions(Proccom &process);

} // namespace zor

#endif

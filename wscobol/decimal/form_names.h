// The storage forms under the names that they have in exported functions, for the macros that build
// those names.
#ifndef ZOR_DECIMAL_FORM_NAMES_H
#define ZOR_DECIMAL_FORM_NAMES_H

#include "decimal/forms.h"

namespace zor::decimal::form {

using Pckd = Packed;
using Znd = ZonedTrailing;
using ZndTO = ZonedTrailing;
using ZndLO = ZonedLeading;
using ZndTS = ZonedTrailingSeparate;
using ZndLS = ZonedLeadingSeparate;
using ZndUS = ZonedUnsigned;

} // namespace zor::decimal::form

#endif

// The rule for the names of output files.
#ifndef ZOR_BASE_OUTPUT_NAME_H
#define ZOR_BASE_OUTPUT_NAME_H

namespace zor {

// Expands an output file name: a value that ends in "%" becomes a generated name. fresh asks for a
// new clock reading for this call alone. The result lives until the next call.
const char *expandOutputName(const char *value, bool fresh, const char *base);

// The next use of the name rule by the current run unit takes a new clock reading; called at its
// start.
void forgetNameStamp();

} // namespace zor

#endif

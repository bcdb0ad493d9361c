// What operations on groups have to say: lines on standard error.
#ifndef ZOR_FILE_GROUPS_REPORT_H
#define ZOR_FILE_GROUPS_REPORT_H

namespace zor::groups {

// A line by a format of printf; errno is kept.
__attribute__((format(printf, 1, 2))) void tell(const char *format, ...);

// "Error: WHERE(NAME) - ERRNO TEXT", without "(NAME)" for a null; errno is kept.
void tellFailure(const char *where, const char *name = nullptr);

// "Info: WHERE - ERRNO TEXT": a call was interrupted and is made again.
void tellRepeat(const char *where);

} // namespace zor::groups

#endif

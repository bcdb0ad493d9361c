// A program's files as the input and output of a sort: opened, read, written and closed through
// their vectors, as the program itself would do it.
#ifndef ZOR_ENGINE_FILES_H
#define ZOR_ENGINE_FILES_H

#include "engine/failure.h"
#include "engine/records.h"

namespace zor::engine {

struct File {
    FCB *fcb = nullptr;
    IPCB *ipcb = nullptr;
    RecordForm form{};
    bool open = false;
};

// A file that is not open, with the records that its description tells.
File fileOf(FCB *fcb, IPCB *ipcb);

// Each runs a vector, which may run a USE procedure of the program, which may end the sort: after
// SORT_ERROR_ENDED nothing of the sort is there any more.
Failure openInput(File &file);
Failure openOutput(File &file);
// record.data is null at the end; the record stays until the file's next one is read.
Failure readRecord(File &file, Record &record);
Failure writeRecord(const File &file, Record record);
Failure closeFile(File &file, int32_t failureWord);

// Closes a file, if it is open, after a failure.
void abandon(File &file);

} // namespace zor::engine

#endif

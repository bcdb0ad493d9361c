// An ordinary file's block is the program's own, as is its record area.
#include "file/block_setup.h"

#include "base/bits.h"
#include "file/closed_block.h"
#include "file/external_files.h"

namespace zor {
namespace {

void setUpOwnFile(FCB &file, FileDescription &description) {
    if (description.recordptr != nullptr && *description.recordptr != nullptr) {
        giveRecordArea(file, *description.recordptr);
    }
    makeClosed(file, description);
}

} // namespace

void setUpFiles(int32_t count, FCB **blocks, FileDescription **descriptions, PCB *pcb) {
    for (int32_t i = 0; blocks != nullptr && descriptions != nullptr && i < count; ++i) {
        if (blocks[i] == nullptr || descriptions[i] == nullptr) {
            continue;
        }
        if (!has(descriptions[i]->assign, FILE_EXTERNAL)) {
            setUpOwnFile(*blocks[i], *descriptions[i]);
        } else if (FCB *shared = provideExternalFile(*descriptions[i], *pcb); shared != nullptr) {
            blocks[i] = shared;
        }
    }
}

} // namespace zor

// A status of the engine is a word, SORT-RETURN a halfword: no failure may pass for success.
#include "sort/sort_return.h"

#include <algorithm>
#include <cstring>

#include "base/message_list.h"

namespace zor {
namespace {

constexpr uint32_t kMostNameBytes = 160;

// The program's name, terminated.
class SortingProgram {
public:
    explicit SortingProgram(const IPCB *ipcb) {
        const PCB *pcb = ipcb == nullptr ? nullptr : ipcb->pcb;
        const uint32_t length =
            pcb == nullptr || pcb->name == nullptr ? 0 : std::min(pcb->namelen, kMostNameBytes);
        if (length != 0) {
            memcpy(text_, pcb->name, length);
        }
        text_[length] = '\0';
    }
    const char *name() const { return text_; }

private:
    char text_[kMostNameBytes + 1];
};

} // namespace

void setSortReturn(const SortControl &control, int32_t status, int32_t errorWord) {
    const auto shown = static_cast<int16_t>(status);
    *control.sortreturn = shown == SORT_GOOD && status != SORT_GOOD ? int16_t{SORT_BAD} : shown;
    if (status != SORT_GOOD && control.checked == 0) {
        message::sortFailed(SortingProgram(control.ipcb).name(), control.msgarg, errorWord);
    }
}

} // namespace zor

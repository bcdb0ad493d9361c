// SORT and MERGE of files. The library frames what the engine does: records of an INPUT PROCEDURE
// gather in the thread's buffer, and beyond it in a work file; those for an OUTPUT PROCEDURE come
// back the same way.
#include <cstdio>
#include <cstring>

#include "base/anchors.h"
#include "base/message_list.h"
#include "base/storage.h"
#include "sort.h"
#include "sort/engine.h"
#include "sort/sort_events.h"
#include "sort/sort_return.h"
#include "sort/sort_state.h"

namespace zor {
namespace {

constexpr char kOutputKind[] = "sortwko.";
constexpr int16_t kHighestGoodStatus = 9; // of a file

// Replaces a text by a terminated copy of another one, up to its first blank. False when storage is
// exhausted (message 907 was issued).
bool copyKeyText(char *&copy, const char *text) {
    release(copy);
    text = text == nullptr ? "" : text;
    const std::size_t length = strcspn(text, " ");
    copy = static_cast<char *>(allocateOrReport(length + 1));
    if (copy == nullptr) {
        return false;
    }
    memcpy(copy, text, length);
    copy[length] = '\0';
    return true;
}

bool haveBuffer(SortState &state) {
    if (state.buffer == nullptr) {
        state.buffer = static_cast<uint8_t *>(allocateOrReport(SORT_BUFFER));
    }
    return state.buffer != nullptr;
}

// The buffer has so many bytes for RETURN, from its start on.
void offerBuffer(SortState &state, uint32_t bytes) {
    state.cursor = state.buffer;
    state.used = 0;
    state.filled = bytes;
    state.fileOffset = 0;
}

void chooseFolder(SortState &state) {
    const Proccom *process = proccom();
    const char *folder =
        process == nullptr ? nullptr : __atomic_load_n(&process->sortdir, __ATOMIC_ACQUIRE);
    snprintf(state.folder, sizeof state.folder, "%s", folder == nullptr ? "." : folder);
}

void refuseSecondCall(SortState &state) {
    forgetLostCall(state);
    if (state.active != nullptr) {
        message::sortAlreadyActive();
    }
}

// Lets the engine write a file for RETURN, which it may leave out when there are no records.
int32_t sortIntoFile(SortState &state, int32_t function, const WorkRecords &input) {
    nameWorkFile(state.output, state.folder, kOutputKind, state.threadId);
    const int32_t status =
        runEngine(state, function, state.statement, input, {state.output.name, nullptr, 0});
    if (!exists(state.output)) {
        removeWorkFile(state.output);
    }
    offerBuffer(state, 0);
    return status;
}

int32_t sortInBuffer(SortState &state) {
    const uint32_t bytes = state.used;
    const WorkRecords records{nullptr, state.buffer, bytes};
    const int32_t status = runEngine(state, SORT_FILES, state.statement, records, records);
    offerBuffer(state, bytes);
    return status;
}

// An OUTPUT PROCEDURE is next, unless the sort has failed.
int32_t goOn(SortState &state, int32_t status) {
    if (status != SORT_GOOD) {
        giveUpStatement(state);
    } else if (state.statement.outputs.count == 0) {
        state.stage = SortStage::returning;
    }
    return status;
}

int32_t begin(SortState &state, int32_t function, const SortControl &control,
              const SortStatement &given, const char *keytext) {
    refuseSecondCall(state);
    chooseFolder(state);
    SortStatement statement = given;
    if (given.inputs.count != 0 && given.outputs.count != 0) {
        if (!copyKeyText(state.filesKeytext, keytext)) {
            return SORT_BAD;
        }
        statement.keytext = state.filesKeytext;
        return runEngine(state, function, statement, {}, {});
    }
    giveUpStatement(state);
    if (!haveBuffer(state) || !copyKeyText(state.keytext, keytext)) {
        return SORT_BAD;
    }
    statement.keytext = state.keytext;
    state.statement = statement;
    state.control = control;
    state.unit = currentRunUnit();
    offerBuffer(state, 0);
    if (given.inputs.count == 0) {
        state.stage = SortStage::releasing;
        return SORT_GOOD;
    }
    return goOn(state, sortIntoFile(state, function, {}));
}

// A file of GIVING that gets no records exists and is empty all the same.
void makeEmptyFile(FCB &fcb, IPCB *ipcb) {
    fcb.openmode = FCB_OUTPUT;
    fcb.open(&fcb, ipcb);
    if (fcb.status <= kHighestGoodStatus) {
        fcb.close(&fcb, ipcb);
    }
}

int32_t sortNothing(SortState &state) {
    const SortStatement &statement = state.statement;
    removeWorkFile(state.spill);
    offerBuffer(state, 0);
    if (statement.outputs.count != 0) {
        makeEmptyFile(*statement.outputs.fcbs[0], statement.ipcb);
    }
    return goOn(state, SORT_GOOD);
}

int32_t sortReleased(SortState &state, const SortControl &control) {
    if (state.stage != SortStage::releasing) {
        return SORT_BAD;
    }
    state.stage = SortStage::none;
    state.control = control;
    state.statement.ipcb = control.ipcb;
    const bool spilled = state.spill.size != 0;
    if (state.used == 0 && !spilled) {
        return sortNothing(state);
    }
    refuseSecondCall(state);
    const WorkRecords input{spilled ? state.spill.name : nullptr, state.buffer, state.used};
    int32_t status = SORT_GOOD;
    if (state.statement.outputs.count != 0) {
        status = runEngine(state, SORT_FILES, state.statement, input, {});
    } else if (spilled) {
        status = sortIntoFile(state, SORT_FILES, input);
    } else {
        status = sortInBuffer(state);
    }
    removeWorkFile(state.spill);
    return goOn(state, status);
}

int32_t giveUp(SortState &state) {
    giveUpStatement(state);
    return SORT_BAD;
}

template <class Record> Record valueOf(const Record *record) {
    return record == nullptr ? Record{} : *record;
}

} // namespace
} // namespace zor

using namespace zor;

void _zorSortMerge(int32_t function, SortControl *control, const RecordDesc *recdesc,
                   int32_t keycount, const char *keytext, const FileList *inputs,
                   const FileList *outputs, const RecordDesc *outdesc) {
    if (function == SORT_END) {
        endSorting();
        return;
    }
    SortState *state = loadEngine() ? sortState() : nullptr;
    if (state == nullptr) {
        return;
    }
    int32_t status = SORT_GOOD;
    switch (function) {
    case SORT_FILES:
    case MERGE_FILES:
        status = begin(*state, function, *control,
                       {.recdesc = valueOf(recdesc),
                        .outdesc = valueOf(outdesc),
                        .inputs = valueOf(inputs),
                        .outputs = valueOf(outputs),
                        .keycount = keycount,
                        .keytext = nullptr,
                        .options = control->options,
                        .ipcb = control->ipcb},
                       keytext);
        break;
    case SORT_INPUT_DONE:
        status = sortReleased(*state, *control);
        break;
    case SORT_FAILED:
        status = giveUp(*state);
        break;
    default:
        break;
    }
    setSortReturn(*control, status, state->errorWord);
}

void ZORGETSORTERRNO(int32_t *value) {
    const SortState *state = existingSortState();
    *value = state == nullptr ? 0 : state->errorWord;
}

void zorGetSortErrno(int32_t *value) __attribute__((alias("ZORGETSORTERRNO")));

// The entry of the engine.
#include "sort_engine.h"

#include "engine/active.h"
#include "engine/signals.h"
#include "engine/sort_work.h"

namespace zor::engine {

constinit thread_local Sort *activeSort = nullptr;

namespace {

struct Report {
    int32_t *word;
    int32_t *value;

    int32_t operator()(const Failure &failure) const {
        if (word != nullptr) {
            *word = failure.word;
        }
        if (value != nullptr) {
            *value = failure.value;
        }
        return failure ? SORT_BAD : SORT_GOOD;
    }
};

void endSort() {
    const SignalsHeld held;
    Sort *sort = activeSort;
    activeSort = nullptr;
    releaseSort(sort);
}

Sort *beginSort(const Request &request) {
    const SignalsHeld held;
    activeSort = makeSort(request);
    return activeSort;
}

std::size_t countOf(int32_t count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace
} // namespace zor::engine

using namespace zor::engine;

int32_t sortmerge(int32_t function, RecordDesc recdesc, RecordDesc outdesc, const char *inputwork,
                  uint32_t inputbytes, uint8_t *inputbuffer, int32_t inputcount,
                  struct FCB **inputfcbs, const char *outputwork, uint32_t outputsize,
                  uint8_t *outputbuffer, int32_t outputcount, struct FCB **outputfcbs,
                  int32_t keycount, const char *keytext, uint32_t options, const char *sortdir,
                  int32_t *errorword, int32_t *errorvalue, struct IPCB *ipcb) {
    const Report report{errorword, errorvalue};
    if (function == SORT_END) {
        endSort();
        return SORT_GOOD;
    }
    const bool merges = function == MERGE_FILES;
    if ((function != SORT_FILES && !merges) || (merges && inputcount <= 0)) {
        return report({SORT_ERROR_FUNCTION, 0});
    }
    if (activeSort != nullptr) {
        return report({SORT_ERROR_ACTIVE, 0});
    }
    Sort *sort = beginSort({.merges = merges,
                            .record = recdesc,
                            .outRecord = outdesc,
                            .inputs = {inputfcbs, countOf(inputcount)},
                            .inputWork = inputwork,
                            .inputBuffer = {inputbuffer, inputbytes},
                            .outputs = {outputfcbs, countOf(outputcount)},
                            .outputWork = outputwork,
                            .outputBuffer = {outputbuffer, outputsize},
                            .keyCount = static_cast<uint32_t>(countOf(keycount)),
                            .keytext = keytext == nullptr ? "" : keytext,
                            .options = options,
                            .folder = sortdir,
                            .ipcb = ipcb});
    if (sort == nullptr) {
        return report(systemFailure(SORT_ERROR_STORAGE));
    }
    const Failure failure = runSort(*sort);
    if (failure.word == SORT_ERROR_ENDED) {
        return SORT_BAD; // whoever ended it took all there is
    }
    endSort();
    return report(failure);
}

// Blocks whose records lie as they must in the output go there as they are.
#include "engine/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zor::engine {

Failure Output::open(const Request &request, const RecordForm &form, File *files,
                     Memory conversion) {
    form_ = form;
    if (!request.outputs.empty()) {
        for (FCB *fcb : request.outputs) {
            File &file = files[files_.size()];
            file = fileOf(fcb, request.ipcb);
            files_ = {files, files_.size() + 1};
            if (const Failure failure = openOutput(file)) {
                return failure;
            }
        }
        return {};
    }
    outForm_ = outputForm(request, form);
    if (request.outputWork == nullptr) {
        area_ = request.outputBuffer;
        return {};
    }
    area_ = conversion;
    path_ = request.outputWork; // whoever breaks the opening off finds what there is to remove
    if (!openWorkFile(descriptor_, request.outputWork, O_WRONLY | O_CREAT | O_TRUNC)) {
        path_ = nullptr;
        return systemFailure(SORT_ERROR_OUTPUT_OPEN);
    }
    return {};
}

Failure Output::flush() {
    if (descriptor_ == kNoFile) {
        return {SORT_ERROR_OUTPUT_FULL, 0};
    }
    const std::size_t count = std::exchange(used_, 0);
    return writeAll(descriptor_, area_.start, count, SORT_ERROR_OUTPUT_WRITE);
}

Failure Output::takeInOtherForm(const Block &block) {
    for (std::size_t at = 0; at < block.used; at += form_.storedSizeAt(block.start + at)) {
        const Record record = form_.recordAt(block.start + at);
        if (record.length > outForm_.length) {
            return longFailure(SORT_ERROR_OUTPUT_LONG, record.length);
        }
        const std::size_t size = outForm_.storedSize(record.length);
        if (size > area_.size - used_) {
            const Failure failure = flush();
            if (failure) {
                return failure;
            }
        }
        storeRecord(outForm_, record, area_.start + used_);
        used_ += size;
    }
    return {};
}

Failure Output::take(const Block &block) {
    if (files_.empty() && outForm_ != form_) {
        return takeInOtherForm(block);
    }
    if (files_.empty()) {
        return descriptor_ == kNoFile
                   ? Failure{SORT_ERROR_OUTPUT_FULL, 0}
                   : writeAll(descriptor_, block.start, block.used, SORT_ERROR_OUTPUT_WRITE);
    }
    for (std::size_t at = 0; at < block.used; at += form_.storedSizeAt(block.start + at)) {
        const Record record = form_.recordAt(block.start + at);
        for (const File &file : files_) {
            if (const Failure failure = writeRecord(file, record)) {
                return failure;
            }
        }
    }
    return {};
}

Memory Output::place() const {
    const bool buffer = files_.empty() && descriptor_ == kNoFile;
    return buffer && outForm_ == form_ ? area_ : Memory{};
}

Failure Output::close() {
    for (File &file : files_) {
        if (const Failure failure = closeFile(file, SORT_ERROR_OUTPUT_WRITE)) {
            return failure;
        }
    }
    if (descriptor_ == kNoFile) {
        return {};
    }
    if (const Failure failure = flush()) {
        return failure;
    }
    if (closeWorkFile(descriptor_) != 0) {
        return systemFailure(SORT_ERROR_OUTPUT_WRITE);
    }
    path_ = nullptr;
    return {};
}

void Output::abandon() {
    for (File &file : files_) {
        zor::engine::abandon(file);
    }
    removeWorkFile();
}

void Output::removeWorkFile() {
    if (descriptor_ != kNoFile) {
        closeWorkFile(descriptor_);
    }
    struct stat facts {};
    const char *path = std::exchange(path_, nullptr);
    if (path != nullptr && lstat(path, &facts) == 0 && S_ISREG(facts.st_mode)) { // and no device
        unlink(path);
    }
}

} // namespace zor::engine

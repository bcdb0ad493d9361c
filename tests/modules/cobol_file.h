// A file as a compiler lays it out, with verbs that give the file status.
#ifndef ZOR_TESTS_MODULES_COBOL_FILE_H
#define ZOR_TESTS_MODULES_COBOL_FILE_H

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "file.h"
#include "support/kit.h"

namespace modules_test {

struct Shape {
    std::string system = "uqe";
    uint8_t organization = 0;
    uint8_t access = FILE_SEQUENTIAL;
    int32_t maxrec = 20;
    int32_t minrec = -1; // below 0: fixed records
    std::vector<FileKey> keys{};
    bool optional = false;
    int lock = -1; // below 0: neither lock nor share fields
    int share = FILE_SHARE_DEFAULT;
    bool severalLocks = false;
};

inline FileKey key(int32_t position, uint16_t length, bool duplicates = false) {
    FileKey made{};
    made.position = position;
    made.length = length;
    made.attribute = duplicates ? FILE_KEY_DUPLICATES : 0;
    return made;
}

// Records, or texts in FILE STATUS and its extension, are compared as strings.
class CobolFile {
public:
    CobolFile(const Shape &shape, const std::string &path) : shape_(shape) {
        storage_.resize(sizeof(FileDescription) + shape.keys.size() * sizeof(FileKey));
        area_.assign(32 + static_cast<std::size_t>(shape.maxrec) + 1, '\0');
        name_ = shape.system + "-" + path;
        auto &description = *new (storage_.data()) FileDescription{};
        memcpy(description.fscode, "???", 3);
        description.organization = shape.organization;
        description.access = shape.access;
        description.recfmt = shape.minrec < 0 ? FILE_FIXED : FILE_VARIABLE;
        description.assign = static_cast<uint8_t>(FILE_WORD | (shape.optional ? FILE_OPTIONAL : 0));
        description.maxrec = shape.maxrec;
        description.minrec = std::max(shape.minrec, 0);
        description.nkeys = static_cast<int32_t>(shape.keys.size());
        description.keyoffset = sizeof(FileDescription);
        std::ranges::copy(shape.keys, reinterpret_cast<FileKey *>(&description + 1));
        strcpy(description.filename, "TESTED");
        description.assignname = name_.c_str();
        description.assignlen = static_cast<int16_t>(name_.size());
        description.statusbase = &statusBase_;
        if (shape.lock >= 0) {
            description.lockinfo = 1;
            description.lockmode = static_cast<uint8_t>(shape.lock);
            description.statusflags =
                static_cast<uint8_t>(shape.share | (shape.severalLocks ? FILE_LOCK_COUNT : 0));
        }
        fcb.level = 1;
        fcb.desc = &description;
        fcb.data = reinterpret_cast<uint8_t *>(area_.data()) + 32;
        fcb.open = _zorGenericOpen;
        fcb.close = _zorCloseError;
        fcb.read = _zorReadError;
        fcb.write = _zorWriteError;
        fcb.rewrite = _zorRewriteError;
        fcb.start = _zorStartError;
        fcb.delete_ = _zorDeleteError;
        fcb.unlock = _zorUnlockError;
        fcb.use = _zorCallUseProc;
    }
    ~CobolFile() {
        if (fcb.curmode != 0) {
            close();
        }
    }
    CobolFile(const CobolFile &) = delete;
    CobolFile &operator=(const CobolFile &) = delete;

    FileDescription &description() { return *fcb.desc; }

    int open(uint16_t mode) {
        fcb.openmode = mode;
        return call(fcb.open);
    }
    int close() {
        fcb.closemode = 0;
        return call(fcb.close);
    }
    int read(uint32_t options = 0) {
        fcb.verbopts = options;
        return call(fcb.read);
    }
    int readKey(const std::string &keyValue, uint8_t keyref = 0, uint32_t options = 0) {
        putKey(keyValue, keyref);
        return read(options);
    }
    int write(const std::string &record) { return call(fcb.write, &record); }
    int rewrite(const std::string &record) { return call(fcb.rewrite, &record); }
    int erase() { return call(fcb.delete_); }
    int unlock() { return call(fcb.unlock); }
    int start(uint8_t relation, const std::string &keyValue = "", uint8_t keyref = 0,
              std::size_t length = 0) {
        fcb.relation = relation;
        fcb.keylength = static_cast<uint16_t>(length);
        putKey(keyValue, keyref);
        return call(fcb.start);
    }
    void putKey(const std::string &value, uint8_t keyref) {
        fcb.keyref = keyref;
        if (keyref < shape_.keys.size()) {
            memcpy(fcb.data + shape_.keys[keyref].position, value.data(), value.size());
        }
    }

    // The record as the last READ left it.
    std::string record() const {
        return {reinterpret_cast<char *>(fcb.data), static_cast<std::size_t>(fcb.reclen)};
    }
    // All records from here on, and the status behind them.
    std::pair<std::vector<std::string>, int> rest(uint32_t options = FCB_NEXT) {
        std::vector<std::string> records;
        int status = read(options);
        for (; status < 10; status = read(options)) {
            records.push_back(record());
        }
        return {records, status};
    }

    FCB fcb{};

private:
    int call(FileOperation operation, const std::string *record = nullptr) {
        if (record != nullptr) {
            memset(fcb.data, ' ', static_cast<std::size_t>(shape_.maxrec));
            memcpy(fcb.data, record->data(), std::min(record->size(), area_.size() - 32));
            fcb.reclen = static_cast<int32_t>(record->size());
        }
        operation(&fcb, nullptr);
        const int shown = (status_[0] - '0') * 10 + status_[1] - '0';
        EXPECT_EQ(shown, fcb.status);
        return shown;
    }

    Shape shape_;
    std::string storage_;
    std::string area_;
    std::string name_;
    uint8_t status_[2] = {'0', '0'};
    uint8_t *statusBase_ = status_;
};

} // namespace modules_test

#endif

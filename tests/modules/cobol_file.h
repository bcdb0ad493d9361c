// Files over the file systems of the product, with verbs that give the file status.
#ifndef ZOR_TESTS_MODULES_COBOL_FILE_H
#define ZOR_TESTS_MODULES_COBOL_FILE_H

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "file/file_kit.h"

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

class CobolFile : public files::File {
public:
    CobolFile(const Shape &shape, const std::string &path)
        : File(shape.system + "-" + path, "TESTED"), shape_(shape),
          area_(32 + static_cast<std::size_t>(shape.maxrec) + 1) {
        memcpy(described.fscode, "???", 3);
        described.organization = shape.organization;
        described.access = shape.access;
        described.recfmt = shape.minrec < 0 ? FILE_FIXED : FILE_VARIABLE;
        described.assign |= shape.optional ? FILE_OPTIONAL : 0;
        described.maxrec = shape.maxrec;
        described.minrec = std::max(shape.minrec, 0);
        described.nkeys = static_cast<int32_t>(shape.keys.size());
        std::ranges::copy(shape.keys, keys_);
        described.keyoffset = static_cast<int32_t>(reinterpret_cast<char *>(keys_) -
                                                   reinterpret_cast<char *>(&described));
        if (shape.lock >= 0) {
            described.lockinfo = 1;
            described.lockmode = static_cast<uint8_t>(shape.lock);
            described.statusflags =
                static_cast<uint8_t>(shape.share | (shape.severalLocks ? FILE_LOCK_COUNT : 0));
        }
        recordAt = area_.data();
        enter();
    }
    ~CobolFile() {
        if (fcb.curmode != 0) {
            close();
        }
    }

    int open(int mode) { return shown(File::open(mode)); }
    int close() { return shown(File::close()); }
    int read(uint32_t options = 0) {
        fcb.verbopts = options;
        return shown(File::read());
    }
    int readKey(const std::string &keyValue, uint8_t keyref = 0, uint32_t options = 0) {
        putKey(keyValue, keyref);
        return read(options);
    }
    int write(const std::string &record) { return put(record), shown(run(fcb.write)); }
    int rewrite(const std::string &record) { return put(record), shown(run(fcb.rewrite)); }
    int erase() { return shown(run(fcb.delete_)); }
    int unlock() { return shown(run(fcb.unlock)); }
    int start(uint8_t relation, const std::string &keyValue = "", uint8_t keyref = 0,
              std::size_t length = 0) {
        fcb.relation = relation;
        fcb.keylength = static_cast<uint16_t>(length);
        putKey(keyValue, keyref);
        return shown(run(fcb.start));
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
        int end = read(options);
        for (; end < 10; end = read(options)) {
            records.push_back(record());
        }
        return {records, end};
    }

private:
    // As FILE STATUS shows it.
    int shown(int wanted) const {
        EXPECT_EQ((status[0] - '0') * 10 + status[1] - '0', wanted);
        return wanted;
    }
    void put(const std::string &record) {
        memset(fcb.data, ' ', static_cast<std::size_t>(shape_.maxrec));
        memcpy(fcb.data, record.data(), std::min(record.size(), area_.size() - 32));
        fcb.reclen = static_cast<int32_t>(record.size());
    }

    Shape shape_;
    FileKey keys_[3]{}; // behind the description
    std::vector<char> area_;
};

} // namespace modules_test

#endif

// A file in storage, by the rules of the language: what each verb answers, and what the file then
// holds. Numbered records are keyed by their number, so that all organizations are one.
#ifndef ZOR_TESTS_MODULES_FILE_MODEL_H
#define ZOR_TESTS_MODULES_FILE_MODEL_H

#include <algorithm>
#include <map>

#include "modules/cobol_file.h"

namespace modules_test {

class FileModel {
public:
    explicit FileModel(Shape shape) : shape_(std::move(shape)) {}

    // What a READ gave, and the number after a verb in sequence.
    std::string record;
    uint32_t number = 0;

    int open(uint16_t mode) {
        hasCurrent_ = false;
        if (mode_ != 0) {
            return 41;
        }
        if (!exists_ && (mode == FCB_INPUT || mode == FCB_IO || mode == FCB_EXTEND)) {
            return 35;
        }
        if (mode == FCB_OUTPUT) {
            rows_.clear();
            exists_ = true;
        }
        mode_ = mode;
        canReadNext_ = true;
        at_ = {"", -1, ""};
        along_ = 0;
        ahead_ = false;
        written_ = rows_.empty() ? "" : rows_.rbegin()->first;
        return 0;
    }
    int close() { return std::exchange(mode_, uint16_t{0}) != 0 ? 0 : 42; }

    int read(uint32_t options, const std::string &key, int keyref) {
        if (mode_ != FCB_INPUT && mode_ != FCB_IO) {
            return 47;
        }
        const bool back = (options & FCB_PREVIOUS) != 0;
        const bool byKey = named() && (options & (FCB_NEXT | FCB_PREVIOUS)) == 0;
        if (!byKey && !canReadNext_) {
            hasCurrent_ = false;
            return 46;
        }
        hasCurrent_ = canReadNext_ = false;
        if (back && plain() && (shape_.minrec >= 0 || shape_.system == "lsq")) {
            return 30; // nothing tells where the record ahead begins
        }
        along_ = byKey ? keyref : along_;
        at_ = byKey ? Entry{key, -1, ""} : at_;
        const auto entries = entriesOf(along_);
        auto found = std::ranges::partition_point(entries, [&](const Entry &entry) {
            const auto order = entry.place() <=> at_.place();
            return order < 0 || (order == 0 && ahead_ == back);
        });
        if (found == (back ? entries.begin() : entries.end()) || (byKey && found->key != key)) {
            return byKey ? 23 : 10;
        }
        found -= back ? 1 : 0;
        at_ = *found;
        ahead_ = false;
        hasCurrent_ = canReadNext_ = true;
        current_ = found->prime;
        record = rows_[current_].record;
        noteNumber(current_);
        const bool isLast = found == (back ? entries.begin() : entries.end() - 1);
        return !isLast && found[back ? -1 : 1].key == found->key ? 2 : 0;
    }

    int write(const std::string &data, uint32_t relative) {
        hasCurrent_ = false;
        const bool writes =
            mode_ == FCB_OUTPUT || mode_ == FCB_EXTEND || (mode_ == FCB_IO && named());
        if (!writes) {
            return mode_ == FCB_IO && shape_.access == FILE_SEQUENTIAL ? 92 : 48;
        }
        if (!fits(data)) {
            return 44;
        }
        const uint32_t last = indexed() || rows_.empty() ? 0 : numberOf(rows_.rbegin()->first);
        const std::string prime = primeOf(data, named() ? relative : last + 1);
        if (!indexed() && named() && relative == 0) {
            return 24;
        }
        if (indexed() && !named() && !written_.empty() && prime <= written_) {
            return 21;
        }
        if (rows_.contains(prime)) {
            return 22;
        }
        const int status = place(prime, data);
        if (status < 10) {
            written_ = prime;
            noteNumber(prime);
        }
        return status;
    }

    int rewrite(std::string data, uint32_t relative) {
        if (mode_ != FCB_IO) {
            return 49;
        }
        const bool current = std::exchange(hasCurrent_, false);
        if (!named() && !current) {
            return 43;
        }
        const std::size_t old = sequential() ? rows_[current_].record.size() : data.size();
        const bool lines = shape_.system == "lsq"; // whose text may be shorter by blanks
        if (!fits(data) || data.size() > old || (data.size() < old && !lines)) {
            return 44;
        }
        data.resize(old, ' ');
        const std::string prime = named() || indexed() ? primeOf(data, relative) : current_;
        if (!named() && prime != current_) {
            return 21;
        }
        return rows_.contains(prime) ? place(prime, data) : 23;
    }

    int erase(const std::string &prime, uint32_t relative) {
        const bool current = std::exchange(hasCurrent_, false);
        if (mode_ != FCB_IO) {
            return 49;
        }
        if (sequential()) {
            return 30;
        }
        if (!named() && !current) {
            return 43;
        }
        return rows_.erase(named() ? primeOf(prime, relative) : current_) != 0 ? 0 : 23;
    }

    int start(int relation, std::string key, int keyref, std::size_t length, uint32_t relative) {
        hasCurrent_ = false;
        if (mode_ != FCB_INPUT && mode_ != FCB_IO) {
            return 47;
        }
        if (plain()) {
            return 30; // has no START
        }
        canReadNext_ = false;
        key = indexed() ? key.substr(0, length != 0 ? length : std::string::npos) : keyOf(relative);
        auto entries = entriesOf(keyref);
        std::erase_if(entries, [&](const Entry &entry) {
            const int order = entry.key.compare(0, key.size(), key);
            const bool holds[] = {order == 0, order > 0, order >= 0, order < 0,
                                  order <= 0, true,      true};
            return !holds[relation];
        });
        if (entries.empty()) {
            return 23;
        }
        const bool last =
            relation == FCB_LESS || relation == FCB_NOT_GREATER || relation == FCB_LAST;
        along_ = keyref;
        at_ = last ? entries.back() : entries.front();
        ahead_ = canReadNext_ = true;
        return 0;
    }

    bool indexed() const { return shape_.organization == FILE_INDEXED; }
    static std::string keyOf(uint32_t number) {
        char text[16];
        snprintf(text, sizeof text, "%010u", number);
        return text;
    }

private:
    struct Stored {
        std::string record;
        std::vector<int64_t> sequences;
    };
    struct Entry {
        std::string key;
        int64_t sequence; // among equal keys
        std::string prime;
        std::pair<std::string, int64_t> place() const { return {key, sequence}; }
    };

    bool sequential() const { return !indexed() && shape_.organization != FILE_RELATIVE; }
    bool plain() const { return shape_.system == "rsd" || shape_.system == "lsq"; }
    bool named() const { return !sequential() && shape_.access != FILE_SEQUENTIAL; }
    bool fits(const std::string &data) const {
        const auto size = static_cast<int32_t>(data.size());
        return shape_.minrec < 0 || (size >= shape_.minrec && size <= shape_.maxrec);
    }
    static uint32_t numberOf(const std::string &key) {
        return static_cast<uint32_t>(strtoul(key.c_str(), nullptr, 10));
    }
    std::string primeOf(const std::string &data, uint32_t relative) const {
        return indexed() ? data.substr(0, shape_.keys[0].length) : keyOf(relative);
    }
    void noteNumber(const std::string &prime) {
        number = shape_.organization == FILE_RELATIVE ? numberOf(prime) : number;
    }
    std::string keyIn(const std::string &data, std::size_t keyref) const {
        const FileKey &key = shape_.keys[keyref];
        return data.substr(static_cast<std::size_t>(key.position), key.length);
    }

    std::vector<Entry> entriesOf(int keyref) const {
        std::vector<Entry> entries;
        for (const auto &[prime, stored] : rows_) {
            const auto index = static_cast<std::size_t>(keyref);
            entries.push_back(
                {index == 0 ? prime : keyIn(stored.record, index), stored.sequences[index], prime});
        }
        std::ranges::sort(entries, {}, &Entry::place);
        return entries;
    }

    // Stores a record if its alternate keys allow that: 0, 02 or 22.
    int place(const std::string &prime, const std::string &data) {
        Stored made{data, std::vector<int64_t>(std::max<std::size_t>(shape_.keys.size(), 1))};
        const auto old = rows_.find(prime);
        int status = 0;
        for (std::size_t i = 1; i < shape_.keys.size(); i++) {
            const std::string value = keyIn(data, i);
            if (old != rows_.end() && keyIn(old->second.record, i) == value) {
                made.sequences[i] = old->second.sequences[i];
                continue;
            }
            const bool allowed = (shape_.keys[i].attribute & FILE_KEY_DUPLICATES) != 0;
            made.sequences[i] = allowed ? ++sequence_ : 0;
            for (const auto &[other, stored] : rows_) {
                if (other != prime && keyIn(stored.record, i) == value) {
                    if (!allowed) {
                        return 22;
                    }
                    status = 2;
                }
            }
        }
        rows_[prime] = made;
        return status;
    }

    Shape shape_;
    std::map<std::string, Stored> rows_;
    int64_t sequence_ = 0;
    uint16_t mode_ = 0;
    bool exists_ = false;
    bool canReadNext_ = false;
    bool hasCurrent_ = false;
    int along_ = 0; // the key that READ NEXT follows
    Entry at_;
    bool ahead_ = false; // whether at_ itself is next
    std::string current_;
    std::string written_;
};

} // namespace modules_test

#endif

// Random verbs with random fields, in any order, against the model. ZOR_LONG_TESTS asks for more.

#include <random>

#include "modules/file_model.h"

namespace {

using namespace modules_test;

const std::vector<FileKey> kKeys = {key(0, 2), key(2, 2, true), key(4, 2)};

std::vector<Shape> subjects() {
    std::vector<Shape> all;
    for (const int32_t minrec : {-1, 6}) {
        const auto add = [&](const char *system, int organization, int access, int lock = -1) {
            all.push_back({.system = system,
                           .organization = static_cast<uint8_t>(organization),
                           .access = static_cast<uint8_t>(access),
                           .maxrec = 10,
                           .minrec = minrec,
                           .keys = organization == FILE_INDEXED ? kKeys : std::vector<FileKey>{},
                           .lock = lock});
        };
        for (const char *system : {"rsd", "psx", "uqe"}) {
            add(system, 0, FILE_SEQUENTIAL);
        }
        add("lsq", FILE_LINE_SEQUENTIAL, FILE_SEQUENTIAL);
        for (const int access : {int{FILE_SEQUENTIAL}, 0, int{FILE_DYNAMIC}}) {
            for (const char *system : {"psx", "uqe"}) {
                add(system, FILE_RELATIVE, access);
                add(system, FILE_RELATIVE, access, FILE_LOCK_AUTOMATIC);
            }
            add("uqe", FILE_INDEXED, access);
            add("uqe", FILE_INDEXED, access, FILE_LOCK_MANUAL);
        }
    }
    return all;
}

class Fuzz {
public:
    Fuzz(const Shape &shape, const std::string &path, unsigned seed)
        : shape_(shape), file_(shape, path), model_(shape), random_(seed) {}

    void run(int steps) {
        for (int i = 0; i < steps && !testing::Test::HasFailure(); i++) {
            step();
        }
    }

private:
    unsigned below(unsigned bound) { return random_() % bound; }

    std::string letters(std::size_t length) {
        std::string text;
        while (text.size() < length) {
            text += static_cast<char>('a' + below(4));
        }
        return text;
    }

    void step() {
        static constexpr uint16_t kModes[] = {FCB_INPUT, FCB_OUTPUT, FCB_IO,
                                              FCB_IO,    FCB_IO,     FCB_EXTEND};
        const unsigned verb = below(100);
        const uint32_t number = below(12);
        const auto keyref = static_cast<uint8_t>(model_.indexed() ? below(3) : 0);
        const std::string keyValue = letters(2);
        const auto size = static_cast<std::size_t>(shape_.minrec < 0 ? 10 : 5 + below(7));
        const std::string data = letters(size);
        file_.fcb.relative = number;
        file_.fcb.keyref = keyref;
        if (verb < 6) {
            const uint16_t mode = kModes[below(std::size(kModes))];
            check("OPEN", file_.open(mode), model_.open(mode));
        } else if (verb < 8) {
            check("CLOSE", file_.close(), model_.close());
        } else if (verb < 45) {
            static constexpr uint32_t kOptions[] = {0, FCB_NEXT, FCB_PREVIOUS};
            const uint32_t options = kOptions[below(3)];
            const std::string wanted = model_.indexed() ? keyValue : FileModel::keyOf(number);
            const int got = file_.readKey(keyValue, keyref, options);
            check("READ", got, model_.read(options, wanted, keyref));
            if (got < 10) {
                EXPECT_EQ(file_.record(), model_.record);
                checkNumber();
            }
        } else if (verb < 70) {
            const int got = file_.write(data);
            check("WRITE", got, model_.write(data, number));
            if (got < 10) {
                checkNumber();
            }
        } else if (verb < 85) {
            check("REWRITE", file_.rewrite(data), model_.rewrite(data, number));
        } else if (verb < 92) {
            file_.putKey(keyValue, 0);
            check("DELETE", file_.erase(), model_.erase(keyValue, number));
        } else {
            const auto relation = static_cast<uint8_t>(below(7));
            const std::size_t length = below(3);
            check("START", file_.start(relation, keyValue, keyref, length),
                  model_.start(relation, keyValue, keyref, length, number));
        }
    }

    void check(const char *verb, int got, int wanted) {
        done_ += std::string(verb) + " " + std::to_string(got) + ", ";
        EXPECT_EQ(got, wanted) << done_.substr(done_.size() > 400 ? done_.size() - 400 : 0);
    }
    void checkNumber() {
        if (shape_.organization == FILE_RELATIVE) {
            EXPECT_EQ(file_.fcb.relative, model_.number);
        }
    }

    Shape shape_;
    CobolFile file_;
    FileModel model_;
    std::mt19937 random_;
    std::string done_;
};

TEST(Fuzz, VerbsInAnyOrder) {
    const unsigned seeds = getenv("ZOR_LONG_TESTS") != nullptr ? 200 : 4;
    for (const Shape &shape : subjects()) {
        for (unsigned seed = 1; seed <= seeds && !HasFailure(); seed++) {
            const kit::TemporaryDirectory directory;
            SCOPED_TRACE(testing::Message()
                         << shape.system << ", organization " << +shape.organization << ", access "
                         << +shape.access << ", shortest " << shape.minrec << ", lock "
                         << shape.lock << ", seed " << seed);
            Fuzz(shape, directory.file("data"), seed).run(600);
        }
    }
}

} // namespace

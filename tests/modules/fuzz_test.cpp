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

void fuzz(const Shape &shape, unsigned seed) {
    static constexpr uint16_t kModes[] = {FCB_INPUT, FCB_OUTPUT, FCB_IO,
                                          FCB_IO,    FCB_IO,     FCB_EXTEND};
    static constexpr uint32_t kOptions[] = {0, FCB_NEXT, FCB_PREVIOUS};
    const kit::TemporaryDirectory directory;
    CobolFile file(shape, directory.file("data"));
    FileModel model(shape);
    std::mt19937 random(seed);
    std::string done;
    const auto below = [&](unsigned bound) { return random() % bound; };
    const auto letters = [&](std::size_t length) {
        std::string text(length, ' ');
        std::ranges::generate(text, [&] { return static_cast<char>('a' + below(4)); });
        return text;
    };
    const auto check = [&](const char *verb, int got, int wanted, bool numbers = false) {
        done += std::string(verb) + " " + std::to_string(got) + ", ";
        EXPECT_EQ(got, wanted) << done.substr(done.size() > 400 ? done.size() - 400 : 0);
        if (numbers && got < 10 && shape.organization == FILE_RELATIVE) {
            EXPECT_EQ(file.fcb.relative, model.number);
        }
    };
    for (int i = 0; i < 600 && !testing::Test::HasFailure(); i++) {
        const unsigned verb = below(100);
        const uint32_t number = below(12);
        const auto keyref = static_cast<uint8_t>(model.indexed() ? below(3) : 0);
        const std::string keyValue = letters(2);
        const std::string data = letters(shape.minrec < 0 ? 10 : 5 + below(7));
        file.fcb.relative = number;
        file.fcb.keyref = keyref;
        if (verb < 6) {
            const uint16_t mode = kModes[below(std::size(kModes))];
            check("OPEN", file.open(mode), model.open(mode));
        } else if (verb < 8) {
            check("CLOSE", file.close(), model.close());
        } else if (verb < 45) {
            const uint32_t options = kOptions[below(3)];
            const std::string wanted = model.indexed() ? keyValue : FileModel::keyOf(number);
            const int got = file.readKey(keyValue, keyref, options);
            check("READ", got, model.read(options, wanted, keyref), true);
            EXPECT_TRUE(got >= 10 || file.record() == model.record) << file.record();
        } else if (verb < 70) {
            const int got = file.write(data);
            check("WRITE", got, model.write(data, number), true);
        } else if (verb < 85) {
            check("REWRITE", file.rewrite(data), model.rewrite(data, number));
        } else if (verb < 92) {
            file.putKey(keyValue, 0);
            check("DELETE", file.erase(), model.erase(keyValue, number));
        } else {
            const auto relation = static_cast<uint8_t>(below(7));
            const std::size_t length = below(3);
            check("START", file.start(relation, keyValue, keyref, length),
                  model.start(relation, keyValue, keyref, length, number));
        }
    }
}

TEST(Fuzz, VerbsInAnyOrder) {
    const unsigned seeds = getenv("ZOR_LONG_TESTS") != nullptr ? 200 : 4;
    for (const Shape &shape : subjects()) {
        for (unsigned seed = 1; seed <= seeds && !HasFailure(); seed++) {
            SCOPED_TRACE(testing::Message()
                         << shape.system << ", organization " << +shape.organization << ", access "
                         << +shape.access << ", shortest " << shape.minrec << ", lock "
                         << shape.lock << ", seed " << seed);
            fuzz(shape, seed);
        }
    }
}

} // namespace

// Line sequential files: what bytes a program's records become, and what records come of bytes.

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

#include "modules/cobol_file.h"

namespace {

using modules_test::CobolFile;
using modules_test::Shape;
using Statuses = std::vector<int>;

const Shape kLines = {.system = "lsq", .organization = FILE_LINE_SEQUENTIAL, .maxrec = 4};

TEST(Lines, Read) {
    struct Case {
        std::string file;
        std::vector<std::string> records; // as far as READ fills them; the rest is blank
        Statuses statuses;
    };
    const Case cases[] = {
        {"", {}, {10}},
        {"\n", {""}, {0, 10}},
        {"ab\ncd\n", {"ab", "cd"}, {0, 0, 10}},
        {"ab\ncd", {"ab", "cd"}, {0, 0, 10}},
        {"ab\r\n\r\nabcd\r\n", {"ab", "", "abcd"}, {0, 0, 0, 10}},
        {"a\tb\n a \n", {"a\tb", " a "}, {0, 0, 10}},
        {"abcdefghij\nk\n", {"abcd", "efgh", "ij", "k"}, {6, 6, 0, 0, 10}},
        {"abcdefgh\n", {"abcd", "efgh"}, {6, 0, 10}},
        {"abcde", {"abcd", "e"}, {6, 0, 10}},
        {"a\rb\n\r\r\nabcd\r", {"a\rb", "\r", "abcd", "\r"}, {0, 0, 6, 0, 10}},
    };
    const kit::TemporaryDirectory directory;
    const std::string path = directory.file("lines");
    for (const Case &test : cases) {
        kit::writeFile(path, test.file);
        CobolFile file(kLines, path);
        ASSERT_EQ(file.open(FCB_INPUT), 0);
        std::vector<std::string> records;
        Statuses statuses{file.read()};
        while (statuses.back() < 10) {
            records.push_back(file.record());
            const std::string area(reinterpret_cast<char *>(file.fcb.data), 4);
            EXPECT_EQ(area, records.back() + std::string(4 - records.back().size(), ' '));
            statuses.push_back(file.read());
        }
        EXPECT_EQ(records, test.records) << kit::hex(test.file);
        EXPECT_EQ(statuses, test.statuses) << kit::hex(test.file);
        EXPECT_EQ(file.read(), 46);
    }
}

struct Advance {
    uint8_t kind;
    int16_t lines;
    std::string text;
};

void writeAll(CobolFile &file, const std::vector<Advance> &lines) {
    for (const Advance &line : lines) {
        file.fcb.advancekind = line.kind;
        file.fcb.advance = line.lines;
        ASSERT_EQ(file.write(line.text), 0);
    }
}

TEST(Lines, Write) {
    struct Case {
        std::vector<Advance> lines;
        std::string file;
    };
    const Case cases[] = {
        {{{0, 0, "ab"}, {0, 0, ""}, {0, 0, " c  "}}, "ab\n\n c\n"},
        {{{FCB_BEFORE_LINES, 2, "a"}, {FCB_BEFORE_LINES, 0, "b"}, {0, 0, "_"}}, "a\n\nb\r\n_\n"},
        {{{FCB_AFTER_LINES, 2, "a"}, {FCB_AFTER_LINES, 1, "b"}, {0, 0, "c"}}, "\n\na\nb\nc\n"},
        {{{FCB_AFTER_LINES, 1, "a"}, {FCB_AFTER_LINES, 0, "_"}}, "\na\r_\n"},
        {{{FCB_AFTER_PAGE, 0, "a"}, {FCB_BEFORE_PAGE, 0, "b"}, {0, 0, "c"}}, "\fa\nb\n\fc\n"},
    };
    const kit::TemporaryDirectory directory;
    const std::string path = directory.file("lines");
    for (const Case &test : cases) {
        CobolFile file(kLines, path);
        ASSERT_EQ(file.open(FCB_OUTPUT), 0);
        writeAll(file, test.lines);
        EXPECT_EQ(file.close(), 0);
        EXPECT_EQ(kit::hex(kit::readFile(path)), kit::hex(test.file));
    }
    // EXTEND ends a last line that has no line feed.
    kit::writeFile(path, "ab");
    CobolFile file(kLines, path);
    ASSERT_EQ(file.open(FCB_EXTEND), 0);
    EXPECT_EQ(file.write("c"), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(kit::readFile(path), "ab\nc\n");
}

// Pages of 4 lines with the footing at the third, 1 line above and 2 below.
TEST(Lines, Linage) {
    const kit::TemporaryDirectory directory;
    CobolFile file(kLines, directory.file("pages"));
    file.described.linageflags = 0xF0;
    const int32_t page[] = {4, 3, 1, 2};
    memcpy(file.fcb.linageset, page, sizeof page);
    ASSERT_EQ(file.open(FCB_OUTPUT), 0);
    struct Step {
        Advance line;
        int counter;
        bool ended;
    };
    const Step steps[] = {
        {{FCB_BEFORE_LINES, 1, "a"}, 2, false}, {{FCB_BEFORE_LINES, 1, "b"}, 3, true},
        {{FCB_BEFORE_LINES, 1, "c"}, 4, true},  {{FCB_BEFORE_LINES, 1, "d"}, 1, true},
        {{FCB_AFTER_LINES, 1, "e"}, 2, false},  {{FCB_AFTER_PAGE, 0, "f"}, 1, false},
        {{FCB_AFTER_LINES, 9, "g"}, 1, true},
    };
    for (const Step &step : steps) {
        writeAll(file, {step.line});
        EXPECT_EQ(file.fcb.linecount, step.counter) << step.line.text;
        EXPECT_EQ((file.fcb.flags & FCB_END_OF_PAGE) != 0, step.ended) << step.line.text;
    }
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(kit::readFile(directory.file("pages")), "\na\nb\nc\nd\n\n\n\n"
                                                      "\ne"
                                                      "\n\n\n\n\n\nf"
                                                      "\n\n\n\n\n\n\ng\n");
}

TEST(Lines, RewriteKeepsTheLength) {
    const kit::TemporaryDirectory directory;
    const std::string path = directory.file("lines");
    kit::writeFile(path, "ab\nabc\nabcdefg\n");
    CobolFile file(kLines, path);
    ASSERT_EQ(file.open(FCB_IO), 0);
    const Statuses statuses = {file.rewrite("x"), file.read(),       file.rewrite("xyz"),
                               file.read(),       file.rewrite("x"), file.rewrite("x"),
                               file.read(),       file.read(),       file.rewrite("EFG")};
    EXPECT_EQ(statuses, (Statuses{43, 0, 44, 0, 0, 43, 6, 0, 0}));
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(kit::readFile(path), "ab\nx  \nabcdEFG\n");
}

// A writer waits for the reader of its pipe, which gets all of it.
TEST(Lines, GoThroughPipes) {
    const Shape records = {.system = "rsd", .maxrec = 4};
    for (const Shape &shape : {kLines, records}) {
        const kit::TemporaryDirectory directory;
        const std::string path = directory.file("pipe");
        ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        CobolFile file(shape, path);
        std::thread writer([&] {
            EXPECT_EQ(file.open(FCB_OUTPUT), 0);
            EXPECT_EQ(file.write("abc") + file.close(), 0);
        });
        usleep(20'000);
        const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
        writer.join();
        char text[8] = "";
        EXPECT_EQ(read(reader, text, sizeof text), 4) << shape.system;
        close(reader);
    }
}

TEST(Lines, SeveralFilesAsOne) {
    const kit::TemporaryDirectory directory;
    kit::writeFile(directory.file("a"), "1\n2");
    kit::writeFile(directory.file("b"), "");
    kit::writeFile(directory.file("c"), "3\n");
    const std::string names =
        directory.file("a") + ":" + directory.file("b") + ":" + directory.file("c");
    for (const bool optional : {false, true}) {
        Shape shape = kLines;
        shape.optional = optional;
        CobolFile file(shape, names + (optional ? ":" + directory.file("absent") : ""));
        ASSERT_EQ(file.open(FCB_INPUT), 0);
        const std::vector<std::string> all = {"1", "2", "3"};
        EXPECT_EQ(file.rest(), std::pair(all, 10));
        EXPECT_EQ(file.read(), 46);
        EXPECT_EQ(file.close(), 0);
    }
    CobolFile file(kLines, names + ":" + directory.file("absent"));
    ASSERT_EQ(file.open(FCB_INPUT), 0);
    EXPECT_EQ(file.rest().second, 35);
    EXPECT_EQ(file.close(), 42);
}

} // namespace

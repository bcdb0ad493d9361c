// Verbs in the wrong state, and who hears of them.
#include <algorithm>
#include <cerrno>
#include <functional>
#include <random>

#include "file_kit.h"
#include "national.h"

using files::File;

namespace {

constexpr uint16_t kOpenModes[] = {0, FCB_INPUT, FCB_OUTPUT, FCB_IO, FCB_EXTEND};

struct Verb {
    uint8_t number;
    FileOperation operation;
    uint32_t clears;
};
constexpr Verb kVerbs[] = {
    {FCB_VERB_OPEN, _zorOpenError, 0},       {FCB_VERB_READ, _zorReadError, FCB_READ_GOOD},
    {FCB_VERB_WRITE, _zorWriteError, 0},     {FCB_VERB_REWRITE, _zorRewriteError, 0},
    {FCB_VERB_DELETE, _zorDeleteError, 0},   {FCB_VERB_START, _zorStartError, FCB_POSITIONED},
    {FCB_VERB_UNLOCK, _zorUnlockError, 0},   {FCB_VERB_CLOSE, _zorCloseError, ~0U},
};

// The rules, of which the first that holds counts.
struct Rule {
    int verb;
    int status;
    int status2;
    std::function<bool(const FCB &, const FileDescription &)> holds;
};
const auto kIn = [](int modes) {
    return [=](const FCB &f, const FileDescription &) { return (f.curmode & modes) != 0; };
};
const auto kAlways = [](const FCB &, const FileDescription &) { return true; };
const auto kAbsent = [](const FCB &f, const FileDescription &) { return f.flags >> 31 != 0; };
const auto kNotIn = [](int modes) {
    return [=](const FCB &f, const FileDescription &) { return (f.curmode & modes) == 0; };
};
const std::vector<Rule> kRules = {
    {2, 41, 17, kIn(0xFFFF)},
    {2, 38, 16, [](const FCB &f, auto &) { return (f.lastclose & 0x1000) != 0; }},
    {2, 30, 5, kAlways},
    {1, 0, 0, kAbsent},
    {1, 30, 5, kIn(0xFFFF)},
    {1, 42, 9, kAlways},
    {128, 47, 9, kNotIn(0x8000)},
    {128, 30, 5, [](const FCB &f, auto &) { return f.flags >> 31 == 0; }},
    {128, 23, 29,
     [](const FCB &f, const FileDescription &d) {
         return (d.organization & 0x30) != 0 && d.access < 0x80 && (f.verbopts & 0x02000000) == 0;
     }},
    {128, 46, 29,
     [](const FCB &f, auto &) { return f.lastverb == 16 && (f.flags & 0x02000000) == 0; }},
    {128, 46, 29,
     [](const FCB &f, auto &) { return f.lastverb == 128 && (f.flags & 0x08000000) == 0; }},
    {128, 10, 29, kAlways},
    {64, 92, 29,
     [](const FCB &f, const FileDescription &d) {
         return (f.curmode & 0x2000) != 0 && d.access >= 0x80 && d.organization < 0x80;
     }},
    {64, 30, 5, kIn(0x4000)},
    {64, 48, 30, kAlways},
    {32, 30, 5, kIn(0x2000)},
    {32, 49, 30, kAlways},
    {8, 30, 5, kIn(0x2000)},
    {8, 49, 30, kAlways},
    {16, 47, 29, kNotIn(0xA000)},
    {16, 23, 29, kAbsent},
    {16, 30, 5, kAlways},
    {4, 42, 9, kNotIn(0xFFFF)},
    {4, 30, 5, kAlways},
};

const Rule &ruleFor(const Verb &verb, const FCB &file, const FileDescription &description) {
    return *std::ranges::find_if(kRules, [&](const Rule &rule) {
        return rule.verb == verb.number && rule.holds(file, description);
    });
}

// What the USE procedures of a file are called with.
std::vector<std::string> used;
void use(int32_t zero, int32_t zeroToo, void *word) {
    used.emplace_back(static_cast<const char *>(word) + std::to_string(zero + zeroToo));
}

std::string statusLine(const File &file) {
    return std::to_string(file.fcb.status) + "/" + std::to_string(file.fcb.status2) + " " +
           file.digits() + " " + file.extendedStatus();
}

} // namespace

// Random orders of verbs on blocks in random states: closed, open, absent, closed WITH LOCK.
TEST(WrongState, FollowsItsRules) {
    std::mt19937 random(20);
    const auto any = [&](auto... values) {
        const uint32_t list[] = {static_cast<uint32_t>(values)...};
        return list[random() % sizeof...(values)];
    };
    for (int i = 0; i < 30000; ++i) {
        File file;
        file.described.organization = static_cast<uint8_t>(any(0, 0x10, 0x20, 0x40, 0x80));
        file.described.access = static_cast<uint8_t>(any(0, 0x40, 0x80));
        file.fcb.curmode = kOpenModes[random() % std::size(kOpenModes)];
        file.fcb.flags = any(0, FCB_ABSENT_OPTIONAL) | any(0, FCB_POSITIONED) |
                         any(0, FCB_READ_GOOD);
        file.fcb.lastclose = static_cast<uint16_t>(any(0, FCB_CLOSE_LOCK));
        file.fcb.verbopts = any(0, FCB_NEXT);
        for (int step = 0; step < 4; ++step) {
            const Verb &verb = kVerbs[random() % std::size(kVerbs)];
            const Rule &rule = ruleFor(verb, file.fcb, file.described);
            const uint32_t kept = file.fcb.flags & ~verb.clears;
            char digits[3];
            snprintf(digits, sizeof digits, "%02d", rule.status);
            verb.operation(&file.fcb, nullptr);
            ASSERT_EQ(statusLine(file), std::to_string(rule.status) + "/" +
                                            std::to_string(rule.status2) + " " + digits + " 000000")
                << int{verb.number} << " " << file.fcb.curmode;
            ASSERT_EQ(file.fcb.flags, kept);
            ASSERT_EQ(file.fcb.lastverb, verb.number);
        }
    }
}

TEST(WrongState, IsSilentAtTheEndOfTheRunUnit) {
    for (const Verb &verb : kVerbs) {
        File file;
        UseProcedure procedure{use, const_cast<char *>("called")};
        UseProcedure *table[USE_ELEMENTS] = {&procedure, &procedure, &procedure, &procedure,
                                             &procedure};
        file.fcb.usetable = table;
        file.fcb.closemode = FCB_CLOSE_NO_USE;
        verb.operation(&file.fcb, nullptr);
        EXPECT_NE(file.fcb.status, 0);
        EXPECT_EQ(file.digits(), "??");
        EXPECT_TRUE(used.empty());
    }
}

TEST(FileStatus, HasTheFormOfItsItem) {
    const std::pair<uint8_t, std::string> forms[] = {{0, "34373f3f"},
                                                     {FILE_STATUS_NATIONAL, "34003700"},
                                                     {FILE_STATUS_EBCDIC, "f4f73f3f"}};
    for (const auto &[flags, expected] : forms) {
        File file;
        file.described.statusflags = flags;
        _zorReadError(&file.fcb, nullptr);
        EXPECT_EQ(kit::hex(file.status, 4), expected);
    }
    File none;
    none.described.statusbase = nullptr;
    none.described.status2base = nullptr;
    none.fcb.usetable = nullptr;
    none.fcb.flags = FCB_ABSENT_OPTIONAL;
    _zorCloseError(&none.fcb, nullptr);
    EXPECT_EQ(none.digits(), "??");
}

// Areas of each length, in the program's code page and in EBCDIC. What no file system serves is
// refused by the library itself.
CHILD_TEST(FileStatus, IsExtendedAsFarAsItsAreaGoes, ) {
    const std::pair<std::string, std::string> cases[] = {{"sok-FILE=5", "000002"},
                                                         {"sok-FILE", "000000"},
                                                         {"zZ9-LEDGER", "000002,zZ9,LEDGER"},
                                                         {"sok-A:B", "000000"},
                                                         {"zZ9-A:B", "000002,zZ9,A"}};
    const auto shownAfterOpen = [](const std::string &assignment, int16_t length, uint8_t flags) {
        File file(assignment);
        files::enterWith(file);
        memset(file.extended, '#', sizeof file.extended);
        file.described.status2len = length;
        file.described.statusflags = flags;
        file.open();
        std::string shown(file.extended, sizeof file.extended);
        file.close();
        EXPECT_TRUE(length < 1 || flags == 0 || static_cast<uint8_t>(file.extended[0]) >= 0x40);
        return shown;
    };
    for (const auto &[assignment, text] : cases) {
        for (int16_t length = 0; length < 40; ++length) {
            std::string expected(static_cast<std::size_t>(length), ' ');
            if (length > 5) {
                expected.replace(0, text.size(), text).resize(static_cast<std::size_t>(length));
            }
            std::string ebcdic = expected;
            int32_t left = length;
            _zorUniAtoE(expected.data(), length, ebcdic.data(), &left);
            expected.resize(40, '#');
            ebcdic.resize(40, '#');
            EXPECT_EQ(shownAfterOpen(assignment, length, 0), expected);
            EXPECT_EQ(shownAfterOpen(assignment, length, FILE_STATUS2_EBCDIC), ebcdic);
        }
    }
    EXPECT_EQ(kit::hex(shownAfterOpen("zZ9-L", 13, FILE_STATUS2_EBCDIC)).substr(0, 26),
              "f0f0f0f0f0f26ba9e9f96bd340");
}

// The mode of the file chooses; OPEN has a mode of its own.
TEST(UseProcedures, AreChosenByTheMode) {
    const char *const words[] = {"input", "output", "i-o", "extend", "file"};
    UseProcedure procedures[USE_ELEMENTS];
    UseProcedure *table[USE_ELEMENTS];
    const auto chosen = [&](int verb, int openmode, int curmode, int status, uint32_t verbopts) {
        File file;
        file.fcb.usetable = table;
        file.fcb.verb = static_cast<uint8_t>(verb);
        file.fcb.openmode = static_cast<uint16_t>(openmode);
        file.fcb.curmode = static_cast<uint16_t>(curmode);
        file.fcb.status = static_cast<int16_t>(status);
        file.fcb.verbopts = verbopts;
        used.clear();
        _zorCallUseProc(&file.fcb, 0, nullptr);
        return used.empty() ? "" : used[0];
    };
    for (int i = 0; i < USE_ELEMENTS; ++i) {
        procedures[i] = {use, const_cast<char *>(words[i])};
        table[i] = &procedures[i];
    }
    for (int mode = 0; mode < 0x10000; mode += 0x400) {
        const char *expected = (mode & 0x8000) != 0   ? "input0"
                               : (mode & 0x4000) != 0 ? "output0"
                               : (mode & 0x2000) != 0 ? "i-o0"
                               : (mode & 0x1000) != 0 ? "extend0"
                                                      : "file0";
        EXPECT_EQ(chosen(FCB_VERB_OPEN, mode, 0x8000, 35, 0), expected);
        EXPECT_EQ(chosen(FCB_VERB_READ, 0x8000, mode, 10, FCB_INVALID_KEY), expected);
    }
    for (int status = 0; status < 100; ++status) {
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_INVALID_KEY), status / 5 == 4 ? "" : "file0");
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_AT_END), status == 10 ? "" : "file0");
    }
    table[USE_FILE] = nullptr; // nothing takes its place
    EXPECT_EQ(chosen(FCB_VERB_READ, 0x8000, 0, 47, 0), "");
}

// Without a USE procedure: who has no FILE STATUS either is stopped.
TEST(FileErrors, EndTheRunWhereNobodyLooks) {
    static constexpr auto run = [](int status, int usecode, int8_t looks) {
        auto *file = new File("x", "LEDGER-OF-THE-YEAR-2024-AND-MORE");
        files::enterWith(*file);
        file->described.statusbase = looks == 1 ? file->described.statusbase : nullptr;
        file->described.status2base = looks == 2 ? file->described.status2base : nullptr;
        file->fcb.verb = FCB_VERB_START;
        file->fcb.status = static_cast<int16_t>(status);
        _zorCallUseProc(&file->fcb, usecode, &file->program->ipcb[0]);
        printf("goes on");
    };
    const auto ends = [](const std::string &text) {
        return failure::kTraceback + "ZOR200S  START of file LEDGER-OF-THE-YEAR-2024-AND-MOR failed" +
               " with file status " + text + failure::kClosing + "\n";
    };
    const std::string rest = ", and the program has neither FILE STATUS nor a USE procedure for it. ";
    kit::expectChildren({
        {"no text", {.err = ends("30" + rest + "\n"), .status = failure::kAborted},
         [] { run(30, 0, 0); }},
        {"text", {.err = ends("96" + rest + "The run-time refused it before a file system was called.\n"),
                  .status = failure::kAborted},
         [] { run(96, FILE_USE_REFUSED, 0); }},
        {"FILE STATUS", {.out = "goes on"}, [] { run(30, 0, 1); }},
        {"extended status", {.out = "goes on"}, [] { run(30, 0, 2); }},
        {"below 30", {.out = "goes on"}, [] { run(29, 0, 0); }},
    });
}

CHILD_TEST(FileErrors, AreLogged, .environment = {{"VFS_DEBUG_ERROR", "1"}},
           .out = "taking at end!\n",
           .err = "FS=35:2 errno=7 verb=2 last=10 file=MASTER\nFS1=35 FS2=handle 2 0 1\n"
                  "FS=10:2 errno=7 verb=2 last=10 file=MASTER\nFS1=10 FS2=000002    \n") {
    File file;
    files::enterWith(file);
    file.open();
    file.fcb.verb = FCB_VERB_OPEN;
    file.fcb.lastverb = FCB_VERB_START;
    file.fcb.status2 = 2;
    file.fcb.verbopts = FCB_AT_END;
    memcpy(file.extended, "000002    ", 10);
    for (const int16_t status : {int16_t{35}, int16_t{10}}) {
        file.described.status2len = status == 10 ? 10 : 0;
        file.fcb.status = status;
        errno = 7;
        file.fcb.use(file.block, 0, nullptr);
    }
}

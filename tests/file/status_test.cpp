// Verbs in the wrong state, and who hears of them.
#include <algorithm>
#include <cerrno>
#include <random>

#include "file_kit.h"
#include "national.h"

using files::File;

namespace {

constexpr FileOperation kOperations[] = {_zorCloseError,  _zorOpenError,  _zorUnlockError,
                                         _zorDeleteError, _zorStartError, _zorRewriteError,
                                         _zorWriteError,  _zorReadError};

// The rules, of which the first that holds counts.
struct Rule {
    int verb;
    int status;
    int status2;
    bool (*holds)(const FCB &, const FileDescription &);
};
#define WHEN(condition)                                                                            \
    [](const FCB &f [[maybe_unused]], const FileDescription &d [[maybe_unused]]) {                 \
        return condition;                                                                          \
    }
#define READS_BY_KEY (d.organization & 0x30) != 0 && d.access < 0x80 && f.verbopts == 0
#define WRITES_IN_IO (f.curmode & 0x2000) != 0 && d.access >= 0x80 && d.organization < 0x80
const Rule kRules[] = {{2, 41, 17, WHEN(f.curmode != 0)},
                       {2, 38, 16, WHEN((f.lastclose & 0x1000) != 0)},
                       {1, 0, 0, WHEN(f.flags >> 31 != 0)},
                       {1, 42, 9, WHEN(f.curmode == 0)},
                       {128, 47, 9, WHEN((f.curmode & 0x8000) == 0)},
                       {128, 30, 5, WHEN(f.flags >> 31 == 0)},
                       {128, 23, 29, WHEN(READS_BY_KEY)},
                       {128, 46, 29, WHEN(f.lastverb == 16 && (f.flags & 0x02000000) == 0)},
                       {128, 46, 29, WHEN(f.lastverb == 128 && (f.flags & 0x08000000) == 0)},
                       {128, 10, 29, WHEN(true)},
                       {64, 92, 29, WHEN(WRITES_IN_IO)},
                       {64, 48, 30, WHEN((f.curmode & 0x4000) == 0)},
                       {32, 49, 30, WHEN((f.curmode & 0x2000) == 0)},
                       {8, 49, 30, WHEN((f.curmode & 0x2000) == 0)},
                       {16, 47, 29, WHEN((f.curmode & 0xA000) == 0)},
                       {16, 23, 29, WHEN(f.flags >> 31 != 0)},
                       {4, 42, 9, WHEN(f.curmode == 0)},
                       {0, 30, 5, WHEN(true)}};

// A file whose USE procedures note their names.
std::string used;
struct UsedFile : File {
    UsedFile() {
        static const char *const words[] = {"input", "output", "i-o", "extend", "file"};
        used = "";
        for (int i = 0; i < USE_ELEMENTS; ++i) {
            procedures[i] = {[](int32_t zero, int32_t zeroToo, void *word) {
                                 used += static_cast<char *>(word) + (zero | zeroToo);
                             },
                             const_cast<char *>(words[i])};
            table[i] = &procedures[i];
        }
        fcb.usetable = table;
    }
    UseProcedure procedures[USE_ELEMENTS];
    UseProcedure *table[USE_ELEMENTS];
};

} // namespace

// Random orders of verbs on blocks in random states: closed, open, absent, closed WITH LOCK.
TEST(WrongState, FollowsItsRules) {
    std::mt19937 random(20);
    const auto any = [&](auto... values) {
        const uint32_t list[] = {static_cast<uint32_t>(values)...};
        return list[random() % sizeof...(values)];
    };
    for (int i = 0; i < 20000; ++i) {
        File file;
        FCB &fcb = file.fcb;
        file.described.organization = static_cast<uint8_t>(any(0, 0x10, 0x20, 0x40, 0x80));
        file.described.access = static_cast<uint8_t>(any(0, 0x40, 0x80));
        fcb.curmode = static_cast<uint16_t>(any(0, 0x8000, 0x4000, 0x2000, 0x1000));
        fcb.flags = any(0, 0x80000000) | any(0, 0x02000000) | any(0, 0x08000000);
        fcb.lastclose = static_cast<uint16_t>(any(0, 0x1000));
        fcb.verbopts = any(0, 0x02000000);
        for (int step = 0; step < 4; ++step) {
            const unsigned which = random() % std::size(kOperations);
            const int verb = 1 << which;
            const Rule &rule = *std::find_if(kRules, std::end(kRules), [&](const Rule &each) {
                return (each.verb == verb || each.verb == 0) && each.holds(fcb, file.described);
            });
            const std::pair<int, uint32_t> cleared[] = {
                {1, 0xFE7FFFFF}, {16, 0x02000000}, {128, 0x08000000}, {verb, 0}};
            const uint32_t kept =
                fcb.flags &
                ~std::ranges::find(cleared, verb, &std::pair<int, uint32_t>::first)->second;
            kOperations[which](&fcb, nullptr);
            char expected[9];
            snprintf(expected, sizeof expected, "%02d000000", rule.status);
            ASSERT_EQ(file.seen(), expected) << verb << " " << fcb.curmode;
            ASSERT_EQ(std::pair(+fcb.status, fcb.status2), std::pair(rule.status, rule.status2));
            ASSERT_EQ(std::pair(fcb.flags, +fcb.lastverb), std::pair(kept, verb));
        }
    }
}

TEST(WrongState, IsSilentAtTheEndOfTheRunUnit) {
    for (const FileOperation operation : kOperations) {
        UsedFile file;
        file.fcb.closemode = FCB_CLOSE_NO_USE;
        operation(&file.fcb, nullptr);
        EXPECT_EQ(file.seen() + used, "??");
        file.fcb.closemode = 0;
        operation(&file.fcb, nullptr);
        EXPECT_EQ(used, "file");
    }
}

// Areas of each length in each form, by files that a file system and the library itself refuse.
CHILD_TEST(FileStatus, HasItsForms, ) {
    const auto shownAfterOpen = [](const std::string &assignment, int length, int flags) {
        File file(assignment);
        file.enter();
        memset(file.status, '#', sizeof file.status + sizeof file.extended);
        file.described.status2len = static_cast<int16_t>(length);
        file.described.statusflags = static_cast<uint8_t>(flags);
        file.statusAt = flags == FILE_STATUS_NATIONAL ? file.record : file.statusAt;
        file.open();
        std::string shown(file.status, sizeof file.status + sizeof file.extended);
        file.close(); // the area is in EBCDIC already
        EXPECT_TRUE(length < 1 || flags < 0x40 || static_cast<uint8_t>(file.extended[0]) >= 0x40);
        return flags == FILE_STATUS_NATIONAL ? std::string(file.record, file.record + 4) : shown;
    };
    const std::pair<std::string, std::string> cases[] = {{"sok-FILE=5", "05000002"},
                                                         {"sok-FILE", "00000000"},
                                                         {"zZ9-LEDGER", "96000002,zZ9,LEDGER"},
                                                         {"sok-A:B", "00000000"},
                                                         {"zZ9-A:B", "96000002,zZ9,A"}};
    for (const auto &[assignment, text] : cases) {
        for (int length = 0; length < 40; ++length) {
            std::string expected = (length > 5 ? text : text.substr(0, 2)) + std::string(40, ' ');
            expected.resize(static_cast<std::size_t>(length) + 2);
            std::string ebcdic = expected;
            int32_t left = 42;
            _zorUniAtoE(expected.data(), length + 2, ebcdic.data(), &left);
            expected.resize(42, '#');
            ebcdic.resize(42, '#');
            EXPECT_EQ(shownAfterOpen(assignment, length, 0), expected);
            EXPECT_EQ(shownAfterOpen(assignment, length, 0xC0), ebcdic);
        }
    }
    EXPECT_EQ(kit::hex(shownAfterOpen("zZ9-L", 13, 0xC0)).substr(0, 30),
              "f9f6f0f0f0f0f0f26ba9e9f96bd340");
    EXPECT_EQ(kit::hex(shownAfterOpen("x-=47", 0, FILE_STATUS_NATIONAL)), "34003200");
}

// The mode of the file chooses; OPEN has a mode of its own. Nothing takes the place of one that is
// missing.
TEST(UseProcedures, AreChosenByTheMode) {
    const auto chosen = [](int verb, int openmode, int curmode, int status, uint32_t verbopts) {
        UsedFile file;
        file.fcb.verb = static_cast<uint8_t>(verb);
        file.fcb.openmode = static_cast<uint16_t>(openmode);
        file.fcb.curmode = static_cast<uint16_t>(curmode);
        file.fcb.status = static_cast<int16_t>(status);
        file.fcb.verbopts = verbopts;
        file.table[USE_EXTEND] = nullptr;
        _zorCallUseProc(&file.fcb, 0, nullptr);
        return used;
    };
    for (int mode = 0; mode < 0x10000; mode += 0x400) {
        const char *const byTop[] = {"file",   "",       "i-o",    "i-o",
                                     "output", "output", "output", "output"};
        const char *expected = mode >= 0x8000 ? "input" : byTop[mode >> 12];
        EXPECT_EQ(chosen(FCB_VERB_OPEN, mode, 0x8000, 35, 0), expected);
        EXPECT_EQ(chosen(FCB_VERB_READ, 0x8000, mode, 10, FCB_INVALID_KEY), expected);
    }
    for (int status = 0; status < 100; ++status) {
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_INVALID_KEY), status / 5 == 4 ? "" : "file");
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_AT_END), status == 10 ? "" : "file");
    }
}

// Without a USE procedure: who has neither FILE STATUS nor an extended status is stopped.
TEST(FileErrors, EndTheRunWhereNobodyLooks) {
    static constexpr auto run = [](int16_t status, int usecode, int looks) {
        File file("x", "LEDGER-OF-THE-YEAR-2024-AND-MORE");
        file.enter();
        file.described.statusbase = looks == 1 ? file.described.statusbase : nullptr;
        file.described.status2base = looks == 2 ? file.described.status2base : nullptr;
        file.fcb.verb = FCB_VERB_START;
        file.fcb.status = status;
        _zorCallUseProc(&file.fcb, usecode, file.program.ipcb);
        printf("goes on");
    };
    const auto ends = [](const std::string &text) {
        return kit::Expected{.errHolds =
                                 "ZOR200S  START of file LEDGER-OF-THE-YEAR-2024-AND-MOR failed"
                                 " with file status 96, and the program has neither FILE STATUS "
                                 "nor a USE procedure for it. " +
                                 text + "\nZOR901S ",
                             .status = failure::kAborted};
    };
    kit::expectChildren({{"no text", ends(""), [] { run(96, 0, 0); }},
                         {"text", ends("The run-time refused it before a file system was called."),
                          [] { run(96, FILE_USE_REFUSED, 0); }},
                         {"FILE STATUS", {.out = "goes on"}, [] { run(30, 0, 1); }},
                         {"extended status", {.out = "goes on"}, [] { run(30, 0, 2); }},
                         {"below 30", {.out = "goes on"}, [] { run(29, 0, 0); }}});
}

CHILD_TEST(FileErrors, AreLogged, .environment = {{"VFS_DEBUG_ERROR", "1"}},
           .out = "taking at end!\n",
           .err = "FS=35:2 errno=7 verb=40 last=2 file=MASTER\nFS1=35 FS2=1 2 0 1\n"
                  "FS=10:2 errno=7 verb=40 last=2 file=MASTER\nFS1=10 FS2=000000    \n") {
    File file;
    file.enter();
    file.open();
    file.fcb.verb = FCB_VERB_WRITE;
    file.fcb.status2 = 2;
    file.fcb.verbopts = FCB_AT_END;
    for (const int status : {35, 10}) {
        file.described.status2len = status == 10 ? 10 : 0;
        file.fcb.status = static_cast<int16_t>(status);
        errno = 7;
        file.fcb.use(file.block, 0, nullptr);
    }
}

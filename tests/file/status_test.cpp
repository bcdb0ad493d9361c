// Verbs in the wrong state, and who hears of them.
#include <cerrno>
#include <map>
#include <random>

#include "file_kit.h"
#include "national.h"

using files::File;

namespace {

constexpr FileOperation kOperations[] = {_zorCloseError,  _zorOpenError,  _zorUnlockError,
                                         _zorDeleteError, _zorStartError, _zorRewriteError,
                                         _zorWriteError,  _zorReadError};

using Answer = std::pair<int, int>; // status and extended status

Answer expected(int verb, const FCB &f, const FileDescription &d) {
    const auto isIn = [&](int modes) { return (f.curmode & modes) != 0; };
    const auto lacks = [&](uint32_t flag) { return (f.flags & flag) == 0; };
    const bool absent = !lacks(0x80000000);
    const bool byKey = (d.organization & 0x30) != 0 && d.access < 0x80 && f.verbopts == 0;
    const bool inSequence = d.access >= 0x80 && d.organization < 0x80;
    const bool passed =
        (f.lastverb == 16 && lacks(0x02000000)) || (f.lastverb == 128 && lacks(0x08000000));
    const std::map<int, std::vector<std::pair<bool, Answer>>> rules = {
        {1, {{absent, {0, 0}}, {!isIn(0xFFFF), {42, 9}}}},
        {2, {{isIn(0xFFFF), {41, 17}}, {(f.lastclose & 0x1000) != 0, {38, 16}}}},
        {4, {{!isIn(0xFFFF), {42, 9}}}},
        {8, {{!isIn(0x2000), {49, 30}}}},
        {16, {{!isIn(0xA000), {47, 29}}, {absent, {23, 29}}}},
        {32, {{!isIn(0x2000), {49, 30}}}},
        {64, {{isIn(0x2000) && inSequence, {92, 29}}, {!isIn(0x4000), {48, 30}}}},
        {128,
         {{!isIn(0x8000), {47, 9}},
          {absent,
           {byKey    ? 23
            : passed ? 46
                     : 10,
            29}}}}};
    for (const auto &[holds, answer] : rules.at(verb)) {
        if (holds) {
            return answer;
        }
    }
    return {30, 5}; // the module has no such verb
}

// A file whose USE procedures note their names.
std::string used;
void use(int32_t zero, int32_t zeroToo, void *word) {
    used += static_cast<char *>(word) + (zero | zeroToo);
}
char words[][8] = {"input", "output", "i-o", "", "file"};
UseProcedure uses[] = {{use, words[0]}, {use, words[1]}, {use, words[2]}, {}, {use, words[4]}};
UseProcedure *table[] = {&uses[0], &uses[1], &uses[2], nullptr, &uses[4]};
struct UsedFile : File {
    UsedFile() {
        fcb.usetable = table;
        used = "";
    }
};

} // namespace

// Random orders of verbs on blocks in random states: closed, open, absent, closed WITH LOCK, and at
// the end of the run unit, when nobody is told.
TEST(WrongState, FollowsItsRules) {
    std::mt19937 random(20);
    const auto any = [&](std::initializer_list<uint32_t> values) {
        return values.begin()[random() % values.size()];
    };
    for (int i = 0; i < 10000; ++i) {
        UsedFile file;
        FCB &fcb = file.fcb;
        file.described.organization = static_cast<uint8_t>(any({0, 0x10, 0x20, 0x40, 0x80}));
        file.described.access = static_cast<uint8_t>(any({0, 0x40, 0x80}));
        fcb.curmode = static_cast<uint16_t>(any({0, 0x8000, 0x4000, 0x2000, 0x1000}));
        fcb.flags = any({0, 0x80000000}) | any({0, 0x02000000}) | any({0, 0x08000000});
        fcb.lastclose = static_cast<uint16_t>(any({0, 0x1000}));
        fcb.closemode = static_cast<uint16_t>(any({0, 0, FCB_CLOSE_NO_USE}));
        fcb.verbopts = any({0, 0x02000000});
        for (int step = 0; step < 4; ++step) {
            const unsigned which = random() % std::size(kOperations);
            const int verb = 1 << which;
            const auto [status, status2] = expected(verb, fcb, file.described);
            const uint32_t cleared = verb == 1 ? 0xFE7FFFFF : verb == 128 ? 0x08000000 : 0;
            const uint32_t kept = fcb.flags & ~(verb == 16 ? 0x02000000 : cleared);
            const std::string digits = {char('0' + status / 10), char('0' + status % 10)};
            const bool extend = fcb.curmode == 0x1000 && verb > 2; // without a procedure
            used = "";
            memset(file.status, '?', 8);
            kOperations[which](&fcb, nullptr);
            ASSERT_EQ(std::string(file.status, 8),
                      fcb.closemode != 0 ? "????????" : digits + "000000");
            ASSERT_EQ(used.empty(), fcb.closemode != 0 || status == 0 || extend);
            ASSERT_EQ(std::pair(+fcb.status, fcb.status2), std::pair(status, status2));
            ASSERT_EQ(std::pair(fcb.flags, +fcb.lastverb), std::pair(kept, verb));
        }
    }
}

// Areas of each length in each form, by files that a file system and the library itself refuse.
CHILD_TEST(FileStatus, HasItsForms, ) {
    const auto shownAfterOpen = [](const std::string &assignment, int length, int flags) {
        File file(assignment);
        file.enter();
        memset(file.status, '#', 42);
        file.described.status2len = static_cast<int16_t>(length);
        file.described.statusflags = static_cast<uint8_t>(flags);
        file.open();
        std::string shown(file.status, 42);
        file.close(); // the area is in EBCDIC already
        EXPECT_TRUE(length < 1 || flags < 0x40 || static_cast<uint8_t>(file.extended[0]) >= 0x40);
        return shown;
    };
    for (const std::string each : {"05000002/sok-F=5", "00000000/sok-F", "00000000/sok-A:B",
                                   "96000002,zZ9,LEDGER/zZ9-LEDGER", "96000002,zZ9,A/zZ9-A:B"}) {
        const std::size_t divider = each.find('/');
        for (int length = 0; length < 40; ++length) {
            std::string expected = each.substr(0, length > 5 ? divider : 2) + std::string(40, ' ');
            expected.resize(static_cast<std::size_t>(length) + 2);
            std::string ebcdic = expected;
            int32_t left = 42;
            _zorUniAtoE(expected.data(), length + 2, ebcdic.data(), &left);
            expected.resize(42, '#');
            ebcdic.resize(42, '#');
            EXPECT_EQ(shownAfterOpen(each.substr(divider + 1), length, 0), expected);
            EXPECT_EQ(shownAfterOpen(each.substr(divider + 1), length, 0xC0), ebcdic);
        }
    }
    EXPECT_EQ(shownAfterOpen("zZ9-L", 11, 0xC0).substr(0, 15),
              "\xF9\xF6\xF0\xF0\xF0\xF0\xF0\xF2\x6B\xA9\xE9\xF9\x6B##");
    EXPECT_EQ(shownAfterOpen("x-F", 0, FILE_STATUS_NATIONAL).substr(0, 5),
              std::string("0\0000\0#", 5));
}

// The mode of the file chooses; OPEN has a mode of its own. Nothing takes the place of one that is
// missing, and phrases of the statement come first.
TEST(UseProcedures, AreChosenByTheMode) {
    const auto chosen = [](int verb, int openmode, int curmode, int status, uint32_t verbopts) {
        UsedFile file;
        file.fcb.verb = static_cast<uint8_t>(verb);
        file.fcb.openmode = static_cast<uint16_t>(openmode);
        file.fcb.curmode = static_cast<uint16_t>(curmode);
        file.fcb.status = static_cast<int16_t>(status);
        file.fcb.verbopts = verbopts;
        _zorCallUseProc(&file.fcb, 0, nullptr);
        return used;
    };
    const std::string byTop[] = {"file", "", "i-o", "i-o", "output", "output", "output", "output"};
    for (int mode = 0; mode < 0x10000; mode += 0x400) {
        const std::string &expected = mode >= 0x8000 ? "input" : byTop[mode >> 12];
        EXPECT_EQ(chosen(FCB_VERB_OPEN, mode, 0x8000, 35, 0), expected);
        EXPECT_EQ(chosen(FCB_VERB_READ, 0x8000, mode, 10, FCB_INVALID_KEY), expected);
    }
    for (int status = 0; status < 100; ++status) {
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_INVALID_KEY), status / 5 == 4 ? "" : "file");
        EXPECT_EQ(chosen(1, 0, 0, status, FCB_AT_END), status == 10 ? "" : "file");
        UsedFile closed;
        closed.fcb.status = static_cast<int16_t>(status);
        _zorGenericClose(&closed.fcb, nullptr, FILE_USE_NO_TEXT);
        EXPECT_EQ(used, status > 9 ? "file" : "");
    }
}

// Without a USE procedure: who has neither FILE STATUS nor an extended status is stopped.
TEST(FileErrors, EndTheRunWhereNobodyLooks) {
    static constexpr auto run = [](int16_t status, int usecode, int looks) {
        File file("sok-F", "LEDGER-OF-THE-YEAR-2024-AND-MORE");
        file.enter();
        file.open();
        file.described.statusbase = looks == 1 ? &file.statusAt : nullptr;
        file.described.status2base = looks == 2 ? &file.extendedAt : nullptr;
        file.fcb.verb = FCB_VERB_START;
        file.fcb.verbopts = FCB_AT_END;
        file.fcb.status = status;
        errno = 7;
        file.fcb.use(file.block, usecode, file.program.ipcb);
    };
    static constexpr auto open = [] {
        File file("zzz-F", "LEDGER-OF-THE-YEAR-2024-AND-MOR");
        file.enter();
        file.described.statusbase = file.described.status2base = nullptr;
        file.open();
    };
    const std::string message = " of file LEDGER-OF-THE-YEAR-2024-AND-MOR failed with "
                                "file status 96, and the program has neither FILE STATUS nor a USE "
                                "procedure for it. ";
    const std::string refused = "The run-time refused it before a file system was called.";
    const std::string rest = ":0 errno=7 verb=10 last=2 file=LEDGER-OF-THE-YEAR-2024-AND-MOR\nFS1=";
    kit::expectChildren(
        {{"no text",
          {.errHolds = "ZOR200S  START" + message + "\nZOR901S ", .status = failure::kAborted},
          [] { run(96, 0, 0); }},
         {"text",
          {.errHolds = "START" + message + refused + "\nZOR901S ", .status = failure::kAborted},
          [] { run(96, FILE_USE_REFUSED, 0); }},
         {"text of OPEN",
          {.errHolds = "OPEN" + message + refused + "\nZOR901S ", .status = failure::kAborted},
          [] { open(); }},
         {"looks",
          {.environment = {{"VFS_DEBUG_ERROR", "1"}},
           .out = "taking at end!\n",
           .err = "FS=30" + rest + "30 FS2=1 0 0 1\nFS=30" + rest + "30 FS2=000000" +
                  std::string(34, ' ') + "\nFS=10" + rest + "10 FS2=1 0 0 1\n"},
          [] { run(30, 0, 1), run(30, 0, 2), run(10, 0, 0); }}});
}

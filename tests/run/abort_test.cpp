// Abnormal ends that no signal began, and the core files of all of them.

#include <filesystem>
#include <regex>
#include <sys/resource.h>

#include "messages.h"
#include "support/failure_kit.h"

using namespace failure;
using namespace kit;

namespace {

const auto forceEnd = inProgram([] { ZORABEND(); });

TEST(Abort, EndsTheProcess) {
    EXPECT_EQ(&ZORABEND, &ZORABORT);
    const Expected forcedEnd{.err = kForcedEnd, .status = kAborted};
    const std::string closing = "closing\n" + kForcedEnd;
    const char *state = "_zorAbort: PID # Proccom @@ Runcom @@@  reason=5  signal=0  abort=0  "
                        "stop=@(nil)  abrt=@(nil)  jmp=@@  main 1 cored 1\n";
    expectChildren({
        {"in the end itself", {.err = closing + closing, .status = kAborted}, inProgram([] {
             static FCB file = openFile([](FCB *, IPCB *) {
                 fputs("closing\n", stderr);
                 ZORABEND();
             });
             giveFiles({&file});
         })},
        {"logged",
         {.environment = {{"__ZORDEBUG", "1"}}, .errHolds = state, .status = kAborted},
         inProgram([] { _zorAbort(1); })},
        {"ignored", forcedEnd,
         [] {
             signal(SIGABRT, SIG_IGN);
             forceEnd();
         }},
        {"blocked", forcedEnd, inProgram([] {
             sigset_t all;
             sigfillset(&all);
             sigprocmask(SIG_BLOCK, &all, nullptr);
             ZORABEND();
         })},
    });
}

CHILD_TEST(Abort, TheLocksOfAThreadThatEndsAreGivenBack, .err = "Delayed Init!\n") {
    static Program main("MAIN");
    enter(main);
    EXPECT_TRUE(joinsAsEnded(startThread([] {
        _zorPgmEnterLock(main.ipcb); // kept for the entry code, which fails
        _zorAbort(0);
    })));
    enter(main);
    EXPECT_EQ(main.ipcb[0].ent, 1);
}

// ---- core files

bool coreToolWorks() {
    static const bool works = [] {
        const TemporaryDirectory directory;
        const std::string command = "sleep 60 & /usr/bin/gcore -o " + directory.file("x") +
                                    " $! >/dev/null 2>&1; rc=$?; kill $!; exit $rc";
        return ZOR_UNDER_SANITIZER == 0 && std::system(command.c_str()) == 0;
    }();
    return works;
}

const auto dump = inProgram([] { printf("%d", ZORDUMP()); });
const auto fail = inProgram([] { readNothing(); });

void failInTheMonitor() {
    _zor_cpm_init(nullptr, nullptr);
    if (sigsetjmp(*_zorGetJmpBuffer(), 1) == 0) {
        printf("%d", ZORDUMP());
        ZORABEND();
    }
}

TEST(CoreFile, IsMadeWhereOneIsWanted) {
    const std::string stamp = R"(\.PROG\.\d{8}\.\d{6}\.\d{6}[+-]\d{4})";
    const std::string made = coreToolWorks() ? "1" : "0";
    const struct {
        std::string name; // a pattern; empty when there is to be no file
        void (*body)();
        const char *trap, *pattern;
        std::string out, err; // err without the line about the file
        int status = 0;
    } cases[] = {
        {"core" + stamp, dump, "TRAP=ON", "", made, ""},
        {"core" + stamp, dump, "TRAP=ON", "%", made, ""},
        {"mine" + stamp, dump, "TRAP=ON", "mine%", made, ""},
        {R"(plain\.name)", dump, "TRAP=OLD", "plain.name", made, ""},
        {R"(it's; \$\(touch broken\)`touch broken`)", dump, "TRAP=ON",
         "it's; $(touch broken)`touch broken`", made, ""},
        {"lost",
         [] {
             signal(SIGCHLD, SIG_IGN); // the tool's status is lost
             dump();
         },
         "TRAP=ON", "lost", made, ""},
        {"my", forceEnd, "TRAP=ON", "./my", "", kForcedEnd, kAborted},
        {"my", fail, "TRAP=ON", "./my", "", kReadNothing, kAborted},
        {"my", fail, "TRAP=DUMP", "./my", "", kReadNothing, kSignalled + SIGSEGV},
        {"", forceEnd, "TRAP=OLD", "my", "", kForcedEnd, kAborted},
        {"", inProgram([] { _zorAbort(1); }), "TRAP=ON", "my", "", "", kAborted}, // has one already
        {"", failInTheMonitor, "TRAP=ON", "my", "1", kForcedEnd},
    };
    for (const auto &each : cases) {
        const bool isWanted = !each.name.empty();
        if (isWanted && ZOR_UNDER_SANITIZER) {
            continue; // whose memory is beyond the tool
        }
        SCOPED_TRACE(each.pattern);
        const TemporaryDirectory folder;
        const auto &[status, out, err] = runChild(
            each.body, {.environment = {{"COBRTOPT", each.trap}, {"COBCORE", each.pattern}},
                        .directory = folder.path(),
                        .coreFiles = true});
        EXPECT_EQ(shape(std::regex_replace(err, std::regex("Create.*\n"), "")), each.err);
        EXPECT_EQ(err.find("Create") != std::string::npos, isWanted);
        if (isWanted && coreToolWorks()) {
            const std::filesystem::directory_iterator all(folder.path());
            const std::vector<std::filesystem::path> files(begin(all), end(all));
            ASSERT_EQ(files.size(), 1U) << err;
            const std::string file = files[0].filename();
            EXPECT_TRUE(std::regex_match(file, std::regex(each.name + R"(\.\d+)"))) << file;
            const std::string directory = each.pattern[0] == '.' ? "./" : "";
            EXPECT_NE(err.find("Created core file: " + directory + file + "\n"), std::string::npos);
        }
        EXPECT_EQ(out, each.out);
        EXPECT_EQ(status, each.status);
    }
}

PROGRAM_TEST(CoreFile, ThatCannotBeWrittenIsAFailure, .environment = {{"COBCORE", "nowhere/core"}},
             .errMatches = "Create core file failed: [0-9a-f]+ - \\d+ .*\n") {
    rlimit cores{};
    getrlimit(RLIMIT_CORE, &cores);
    cores.rlim_cur = cores.rlim_max;
    setrlimit(RLIMIT_CORE, &cores);
    EXPECT_EQ(ZORDUMP(), 0);
}

} // namespace

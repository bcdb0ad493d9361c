// The standard files, opened by the verbs and messages that need them.

#include <filesystem>
#include <regex>
#include <tuple>

#include "display.h"
#include "messages.h"
#include "support/kit.h"

using namespace kit;

namespace {

const auto useAll = inProgram([] {
    displayLine(DISPLAY_ON_SYSOUT, {"to sysout"});
    displayLine(DISPLAY_ON_CONSOLE, {"to console"});
    _zorWriteERRmsg(2527, MESSAGE_INFORMATIONAL);
    fflush(nullptr);
});

const std::string kMessage =
    "ZOR2527I The formatted timestamp does not fit 80 characters and is cut.\n\n";

class StandardFiles : public testing::Test {
protected:
    // Runs a child in a fresh directory under an environment in which "@" stands for it; gives what
    // is left on both streams.
    std::string run(Environment environment, void (*body)() = useAll) {
        for (auto &[name, value] : environment) {
            value = std::regex_replace(value, std::regex("@"), directory_.path());
        }
        environment.emplace_back("TZ", "EST5EDT");
        const ChildResult child =
            runChild(body, {.environment = environment, .directory = directory_.path()});
        return child.out + "|" + child.err;
    }

    std::string content(const std::string &name) { return readFile(directory_.file(name)); }

    TemporaryDirectory directory_;
};

TEST_F(StandardFiles, UnsetEmptyOrUnopenedOnesAreThoseOfTheProcess) {
    const Environment environments[] = {
        {},
        {{"SYSOUT", ""}, {"SYSLIST", "list"}, {"CONSOLE", ""}, {"COBMSGS", ""}},
        {{"SYSOUT", "a"}, {"CONSOLE", "b"}, {"COBMSGS", "@/no/c"}, {"COBOUTDIR", "@/no"}}};
    for (const Environment &environment : environments) {
        EXPECT_EQ(run(environment), "to sysout\nto console\n|" + kMessage);
        EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
    }
}

TEST_F(StandardFiles, FilesAreAppendedToAndANoticeTellsAnExpandedName) {
    writeFile(directory_.file("out"), "old\n");
    std::filesystem::create_directory(directory_.file("sub"));
    EXPECT_EQ(run({{"SYSLST", "out"}, {"CONSOLE", "./con"}, {"COBMSGS", "@/msg"}}), "|");
    EXPECT_EQ(content("out"), "old\nto sysout\n");
    EXPECT_EQ(content("con"), "to console\n");
    EXPECT_EQ(content("msg"), kMessage);

    EXPECT_EQ(run({{"SYSOUT", "out"}, {"CONSOLE", "./con"}, {"COBOUTDIR", "@/sub"}}),
              "Creating SYSOUT file: " + directory_.path() + "/sub/out\n|" + kMessage);
    EXPECT_EQ(run({{"SYSOUT", "out"}, {"CONSOLE", "./con"}, {"COBOUTDIR", "sub/"}}),
              "Creating SYSOUT file: sub/out\n|" + kMessage);
    EXPECT_EQ(content("sub/out"), "to sysout\nto sysout\n");
}

TEST_F(StandardFiles, APercentSignAsksForAGeneratedName) {
    const std::string left =
        run({{"SYSOUT", "%"}, {"CONSOLE", "con%"}, {"COBMSGS", "@/%"}, {"COBOUTDIR", "."}});
    const std::string stamp = R"((\.PROG\.\d{8}\.\d{6}\.\d{6}\+0500\.\d+))";
    std::smatch match;
    ASSERT_TRUE(std::regex_match(left, match,
                                 std::regex("Creating SYSOUT file: ./stdout" + stamp +
                                            "\nCreating CONSOLE file: ./con\\1\n"
                                            "Creating COBMSGS file: " +
                                            directory_.path() + "/stderr\\1\n\\|")))
        << left;
    EXPECT_EQ(content("stdout" + match.str(1)), "to sysout\n");
    EXPECT_EQ(content("con" + match.str(1)), "to console\n");
    EXPECT_EQ(content("stderr" + match.str(1)), kMessage);
}

TEST_F(StandardFiles, SyspunchIsNewEachTimeAndHasNoDefault) {
    const auto punch = [] { displayLine(DISPLAY_ON_SYSPUNCH, {"punched"}); };
    writeFile(directory_.file("cards"), "old cards\n");
    EXPECT_EQ(run({{"SYSPCH", "cards"}}, punch), "|");
    for (const Environment &environment :
         {Environment{}, {{"SYSPUNCH", ""}, {"SYSPCH", "cards"}}, {{"SYSPUNCH", "@/no/cards"}}}) {
        EXPECT_TRUE(run(environment, punch).starts_with("punched\n|ZOR168W"));
    }
    EXPECT_EQ(content("cards"), "punched\n");
}

// Whichever way a run ends, and ahead of what the next one writes.
TEST_F(StandardFiles, AreWrittenOutAtTheEnd) {
    const auto twoRuns = [] {
        for (const char *name : {"ONE", "TWO"}) {
            Program program(name);
            runMainProgram(
                program, [] { displayLine(DISPLAY_ON_SYSOUT, {_zorProccom->runcom->main->name}); });
        }
        _exit(0);
    };
    const auto aborted = inProgram([] {
        displayLine(DISPLAY_ON_SYSOUT, {"THREE"});
        _zorAbort(0);
    });
    run({{"SYSOUT", "out"}}, twoRuns);
    run({{"SYSOUT", "out"}}, aborted);
    EXPECT_EQ(content("out"), "ONE\nTWO\nTHREE\n");
}

TEST_F(StandardFiles, AFileHasNoTerminalSize) {
    const std::string left = run({{"COBMSGS", "msg"}}, [] {
        _zorProccom->stderrsize.ws_col = 40;
        _zorProccom->stdoutsize.ws_col = 40;
        useAll();
        EXPECT_EQ(std::tuple(_zorProccom->stderrsize.ws_col, _zorProccom->stdoutsize.ws_col),
                  std::tuple(0, 0));
    });
    EXPECT_EQ(left, "to sysout\nto console\n|");
}

TEST_F(StandardFiles, InputNamesAreTakenAsTheyStand) {
    writeFile(directory_.file("in%"), "from in%\n");
    writeFile(directory_.file("in"), "console\n");
    const std::string left = run({{"SYSIPT", "in%"}, {"CONSOLE", "in%"}, {"COBOUTDIR", "no"}}, [] {
        char text[] = "########|#######";
        _zorcAccept(ACCEPT_FROM_SYSIN, 8, text);
        _zorcAccept(ACCEPT_FROM_CONSOLE, 7, text + 9);
        fputs(text, stdout);
    });
    EXPECT_EQ(left, "from in%|console|");
}

} // namespace

// The standard files, opened by the verbs and messages that need them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "display.h"
#include "messages.h"
#include "support/kit.h"

namespace {

using kit::ChildResult;
using kit::Environment;
using kit::runChild;

void displayOn(uint8_t device, const std::string &text) {
    const DisplayControl control{1, device, 0, '.', 0};
    DisplayItem item{text.data(), static_cast<uint32_t>(text.size()), 0, DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

// Displays on all devices and issues a message, in program PROG.
void useAll() {
    kit::Program program("PROG");
    kit::runMainProgram(program, [] {
        displayOn(DISPLAY_ON_SYSOUT, "to sysout");
        displayOn(DISPLAY_ON_CONSOLE, "to console");
        _zorWriteERRmsg(2527, MESSAGE_INFORMATIONAL);
        fflush(nullptr);
    });
}

const std::string kMessage =
    "ZOR2527I The formatted timestamp does not fit 80 characters and is cut.\n\n";

class StandardFiles : public testing::Test {
protected:
    // Runs useAll in a fresh directory under an environment in which "@" stands for that directory.
    ChildResult run(Environment environment, void (*body)() = useAll) {
        for (auto &[name, value] : environment) {
            value = std::regex_replace(value, std::regex("@"), directory_.path());
        }
        environment.emplace_back("TZ", "EST5EDT");
        kit::ChildOptions options;
        options.environment = environment;
        options.directory = directory_.path();
        return runChild(body, options);
    }

    std::string content(const std::string &name) { return kit::readFile(directory_.file(name)); }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(directory_.path())) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    kit::TemporaryDirectory directory_;
};

TEST_F(StandardFiles, UnsetEmptyOrUnopenedOnesAreThoseOfTheProcess) {
    const std::vector<Environment> cases{
        {},
        {{"SYSOUT", ""}, {"SYSLIST", "list"}, {"CONSOLE", ""}, {"COBMSGS", ""}},
        {{"SYSOUT", "no/a"}, {"CONSOLE", "no/b"}, {"COBMSGS", "@/no/c"}, {"COBOUTDIR", "@/no"}},
    };
    for (const Environment &environment : cases) {
        const ChildResult result = run(environment);
        EXPECT_EQ(result.out, "to sysout\nto console\n");
        EXPECT_EQ(result.err, kMessage);
        EXPECT_TRUE(files().empty());
    }
}

TEST_F(StandardFiles, FilesAreAppendedToAndANoticeTellsAnExpandedName) {
    kit::writeFile(directory_.file("out"), "old\n");
    std::filesystem::create_directory(directory_.file("sub"));
    ChildResult result = run({{"SYSLST", "out"}, {"CONSOLE", "./con"}, {"COBMSGS", "@/msg"}});
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(content("out"), "old\nto sysout\n");
    EXPECT_EQ(content("con"), "to console\n");
    EXPECT_EQ(content("msg"), kMessage);

    for (const std::string &outputDirectory : {directory_.path() + "/sub", std::string("sub/")}) {
        result = run({{"SYSOUT", "out"}, {"CONSOLE", "./con"}, {"COBOUTDIR", outputDirectory}});
        const std::string slash = outputDirectory.back() == '/' ? "" : "/";
        EXPECT_EQ(result.out, "Creating SYSOUT file: " + outputDirectory + slash + "out\n");
    }
    EXPECT_EQ(content("sub/out"), "to sysout\nto sysout\n");
}

TEST_F(StandardFiles, APercentSignAsksForAGeneratedName) {
    const ChildResult result =
        run({{"SYSOUT", "%"}, {"CONSOLE", "con%"}, {"COBMSGS", "@/%"}, {"COBOUTDIR", "."}});
    const std::string stamp = R"((\.PROG\.\d{8}\.\d{6}\.\d{6}\+0500\.\d+))";
    const std::string expected =
        "Creating SYSOUT file: ./stdout" + stamp + "\nCreating CONSOLE file: ./con" + stamp +
        "\nCreating COBMSGS file: " + directory_.path() + "/stderr" + stamp + "\n";
    std::smatch match;
    ASSERT_TRUE(std::regex_match(result.out, match, std::regex(expected))) << result.out;
    EXPECT_EQ(match[1], match[2]);
    EXPECT_EQ(match[1], match[3]);
    EXPECT_EQ(content("stdout" + match[1].str()), "to sysout\n");
    EXPECT_EQ(content("con" + match[1].str()), "to console\n");
    EXPECT_EQ(content("stderr" + match[1].str()), kMessage);
}

TEST_F(StandardFiles, SyspunchIsNewEachTimeAndHasNoDefault) {
    const auto punch = [] { displayOn(DISPLAY_ON_SYSPUNCH, "punched"); };
    kit::writeFile(directory_.file("cards"), "old cards\n");
    EXPECT_EQ(run({{"SYSPCH", "cards"}}, punch).err, "");
    EXPECT_EQ(content("cards"), "punched\n");

    for (const Environment &environment :
         {Environment{}, Environment{{"SYSPUNCH", ""}, {"SYSPCH", "cards"}},
          Environment{{"SYSPUNCH", "@/no/cards"}}}) {
        const ChildResult result = run(environment, punch);
        EXPECT_EQ(result.out, "punched\n");
        EXPECT_EQ(result.err.substr(0, 7), "ZOR168W");
    }
    EXPECT_EQ(content("cards"), "punched\n");
}

TEST_F(StandardFiles, AFileHasNoTerminalSize) {
    const ChildResult result = run({{"COBMSGS", "msg"}}, [] {
        _zorProccom->stderrsize.ws_col = 40;
        _zorProccom->stdoutsize.ws_col = 40;
        useAll();
        printf("%d %d\n", _zorProccom->stderrsize.ws_col, _zorProccom->stdoutsize.ws_col);
    });
    EXPECT_EQ(result.out, "to sysout\nto console\n0 0\n");
}

TEST_F(StandardFiles, InputNamesAreTakenAsTheyStand) {
    kit::writeFile(directory_.file("in%"), "from in%\n");
    kit::writeFile(directory_.file("in"), "from in\n");
    const ChildResult result =
        run({{"SYSIPT", "in%"}, {"CONSOLE", "in%"}, {"COBOUTDIR", "no"}}, [] {
            char sysin[12];
            char console[12];
            _zorcAccept(ACCEPT_FROM_SYSIN, 8, sysin);
            _zorcAccept(ACCEPT_FROM_CONSOLE, 7, console);
            printf("%.8s|%.7s\n", sysin, console);
        });
    EXPECT_EQ(result.out, "from in%|from in\n");
}

} // namespace

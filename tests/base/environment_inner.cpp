// Which variables count in a process with raised privileges, and the names of output files that
// they ask for.

#include <filesystem>
#include <regex>
#include <sys/auxv.h>
#include <sys/stat.h>

#include "base/environment.h"
#include "base/output_name.h"
#include "support/kit.h"

using namespace kit;

namespace {

constexpr const char *kChoosing[] = {
    "SYSOUT",  "SYSLST",          "SYSIN",   "CONSOLE", "SYSPUNCH", "COBMSGS",  "COBOUTDIR",
    "COBCORE", "traceback_lines", "COBPATH", "NLSPATH", "TMPDIR",   "gdg_home", "__ZORDEBUG"};
constexpr const char *kOther[] = {"COBRTOPT", "COBOL_BCD_DEBUG", "EBCDIC_CODEPAGE", "LANG"};

void showVariables() {
    printf("%lu", getauxval(AT_SECURE));
    for (const char *name : kChoosing) {
        setenv(name, "x", 1);
        printf("%c", zor::valueOf(name) != nullptr ? 'x' : '-');
    }
    for (const char *name : kOther) {
        setenv(name, "x", 1);
        printf("%c", zor::settingOf(name) != nullptr ? 'x' : '-');
    }
    fflush(stdout);
    _exit(0);
}

TEST(Environment, ChoosesNoFilesForAPrivilegedProcess) {
    const std::string all(std::size(kChoosing), 'x');
    const std::string none(std::size(kChoosing), '-');
    const std::string others(std::size(kOther), 'x');
    EXPECT_EQ(runChild(showVariables, Environment{}).out, "0" + all + others);

    // This program, as one of another group.
    const TemporaryDirectory directory;
    const std::string copy = directory.file("privileged");
    std::filesystem::copy_file("/proc/self/exe", copy);
    if (chown(copy.c_str(), static_cast<uid_t>(-1), 1) != 0 || chmod(copy.c_str(), 02755) != 0) {
        GTEST_SKIP() << "only root can make a privileged program";
    }
    const ChildResult child = runChild(showVariables, {.environment = {}, .program = copy});
    if (child.out.starts_with("0")) {
        GTEST_SKIP() << "the file system gives no privileges";
    }
    EXPECT_EQ(child.out, "1" + none + others);
}

const struct {
    const char *value;
    const char *base;
    const char *inProgram; // the name with output directory /d, "@" for the stamp
    const char *alone;     // without directory and program
} kNames[] = {
    {"plain", "b", "/d/plain", "plain"}, {"./plain", "b", "./plain", "./plain"},
    {"/plain", "b", "/plain", "/plain"}, {"a%b", "b", "/d/a%b", "a%b"},
    {"%", "b", "/d/b.PROG.@", "b.@"},    {"/x/%", "b", "/x/b.PROG.@", "/x/b.@"},
    {"./%", "b", "./b.PROG.@", "./b.@"}, {"m%", "b", "/d/m.PROG.@", "m.@"},
    {"%", nullptr, "/d/.PROG.@", ".@"},  {"", "b", "/d/b.PROG.@", "b.@"},
    {"", nullptr, "PROG.@", "@"},
};

std::string expanded(const char *value, const char *base, const std::string &zone) {
    const std::regex stamp(R"(\d{8}\.\d{6}\.\d{6})" + zone + R"(\.\d+)");
    return std::regex_replace(std::string(zor::expandOutputName(value, false, base)), stamp, "@");
}

PROGRAM_TEST(OutputName, IsGeneratedForAPercentSign,
             .environment = {{"COBOUTDIR", "/d"}, {"TZ", "XXX5:30"}}) {
    for (const auto &each : kNames) {
        EXPECT_EQ(expanded(each.value, each.base, "\\+0530"), each.inProgram);
    }
}

CHILD_TEST(OutputName, IsGeneratedAheadOfAProgram, .environment = {{"TZ", "XXX-5:30"}}) {
    for (const auto &each : kNames) {
        EXPECT_EQ(expanded(each.value, each.base, "-0530"), each.alone);
    }
}

std::string generated(bool fresh = false) {
    return zor::expandOutputName("%", fresh, "b");
}

CHILD_TEST(OutputName, KeepsItsStampForTheRunUnitUnlessAFreshOneIsAsked) {
    const std::string ahead = generated();
    EXPECT_EQ(generated(), ahead);
    zor::forgetNameStamp();
    EXPECT_NE(generated(), ahead);
    static Program program("PROG");
    enter(program);
    static const std::string outer = generated();
    EXPECT_NE(generated(true), outer);
    Program nested("PROG");
    _zorCOBOLLink();
    runMainProgram(nested, [] {
        const std::string inner = generated();
        EXPECT_NE(inner, outer);
        EXPECT_EQ(generated(), inner);
    });
    EXPECT_EQ(generated(), outer);
    zor::forgetNameStamp();
    EXPECT_NE(generated(), outer);
}

} // namespace

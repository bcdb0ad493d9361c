// Which variables count in a process with raised privileges, and that hostile values do no harm.

#include "base/environment.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>

#include "support/failure_kit.h"

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
    EXPECT_EQ(kit::runChild(showVariables, kit::Environment{}).out, "0" + all + others);

    // This program, as one of another group.
    const kit::TemporaryDirectory directory;
    const std::string copy = directory.file("privileged");
    std::filesystem::copy_file("/proc/self/exe", copy);
    if (chown(copy.c_str(), static_cast<uid_t>(-1), 1) != 0 || chmod(copy.c_str(), 02755) != 0) {
        GTEST_SKIP() << "only root can make a privileged program";
    }
    kit::ChildOptions options;
    options.program = copy;
    const kit::ChildResult child = kit::runChild(showVariables, options);
    if (child.out.starts_with("0")) {
        GTEST_SKIP() << "the file system gives no privileges";
    }
    EXPECT_EQ(child.out, "1" + none + others);
}

} // namespace

// The rule for output file names.

#include <regex>

#include "base/output_name.h"
#include "support/kit.h"

using namespace kit;

namespace {

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

void expandAll() {
    for (const auto &each : kNames) {
        puts(zor::expandOutputName(each.value, false, each.base));
    }
}

TEST(OutputName, IsGeneratedForAPercentSign) {
    std::string inProgram;
    std::string alone;
    for (const auto &each : kNames) {
        inProgram += each.inProgram + std::string("\n");
        alone += each.alone + std::string("\n");
    }
    const std::string stamp = R"(\d{8}\.\d{6}\.\d{6})";
    const std::string west =
        runProgram({{"COBOUTDIR", "/d"}, {"TZ", "XXX5:30"}}, [] { expandAll(); }).out;
    EXPECT_EQ(std::regex_replace(west, std::regex(stamp + R"(\+0530\.\d+)"), "@"), inProgram);
    const std::string east = runChild(expandAll, Environment{{"TZ", "XXX-5:30"}}).out;
    EXPECT_EQ(std::regex_replace(east, std::regex(stamp + R"(-0530\.\d+)"), "@"), alone);
}

std::string generated(bool fresh = false) {
    return zor::expandOutputName("%", fresh, "b");
}

CHILD_TEST(OutputName, KeepsItsStampForTheRunUnitUnlessAFreshOneIsAsked) {
    const std::string first = generated();
    EXPECT_NE(generated(true), first);
    EXPECT_EQ(generated(), first);
    zor::forgetNameStamp();
    EXPECT_NE(generated(), first);
}

PROGRAM_TEST(OutputName, HasAStampOfItsOwnInANestedRunUnit) {
    static const std::string outer = generated();
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

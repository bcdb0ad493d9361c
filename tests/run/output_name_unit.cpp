// The rule for output file names.

#include <cstdlib>
#include <cstring>
#include <regex>

#include "standard_files.h"
#include "support/kit.h"

namespace {

// Expands each pair of value and base that stands in NAMES, "value:base,value:base"; "-" is no
// base.
void expandAll() {
    std::string names = getenv("NAMES");
    for (std::size_t start = 0; start < names.size();) {
        const std::size_t colon = names.find(':', start);
        const std::size_t end = std::min(names.find(',', start), names.size());
        const std::string value = names.substr(start, colon - start);
        const std::string base = names.substr(colon + 1, end - colon - 1);
        puts(zor::expandOutputName(value.c_str(), false, base == "-" ? nullptr : base.c_str()));
        start = end + 1;
    }
}

void expandInProgram() {
    kit::Program program("PROG");
    kit::runMainProgram(program, expandAll);
}

// The names of one process, with the common stamp replaced by "@".
std::string expanded(void (*body)(), const kit::Environment &environment) {
    const std::string out = kit::runChild(body, environment).out;
    const std::string stamp = R"(\d{8}\.\d{6}\.\d{6}[+-]\d{4}\.\d+)";
    std::smatch match;
    if (!std::regex_search(out, match, std::regex(stamp))) {
        return out;
    }
    const std::string first = std::regex_replace(match.str(), std::regex(R"([.+])"), R"(\$&)");
    return std::regex_replace(out, std::regex(first), "@");
}

TEST(OutputName, IsGeneratedForAPercentSign) {
    const kit::Environment environment{
        {"COBOUTDIR", "/d"},
        {"NAMES", "plain:b,./plain:b,/plain:b,a%b:b,%:b,/x/%:b,./%:b,m%:b,%:-,:b,:-"}};
    EXPECT_EQ(expanded(expandInProgram, environment),
              "/d/plain\n./plain\n/plain\n/d/a%b\n/d/b.PROG.@\n/x/b.PROG.@\n./b.PROG.@\n"
              "/d/m.PROG.@\n/d/.PROG.@\n/d/b.PROG.@\nPROG.@\n");
    EXPECT_EQ(expanded(expandAll, {{"NAMES", "%:b,:-,x:b"}}), "b.@\n@\nx\n");
}

TEST(OutputName, ShowsTheZoneAsTheClockCountsIt) {
    for (const auto &[zone, shown] : {std::pair{"EST5EDT", "+0500"},
                                      {"XXX-5:30", "-0530"},
                                      {"UTC0", "+0000"},
                                      {"XXX12:45", "+1245"}}) {
        const std::string name =
            kit::runChild(expandAll, kit::Environment{{"TZ", zone}, {"NAMES", "%:b"}}).out;
        EXPECT_TRUE(std::regex_match(
            name, std::regex(std::string(R"(b\.\d{8}\.\d{6}\.\d{6}\)") + shown + R"(\.\d+\n)")))
            << name;
    }
}

TEST(OutputName, KeepsItsStampForTheRunUnitUnlessAFreshOneIsAsked) {
    const kit::ChildResult result = kit::runChild([] {
        const auto name = [](bool fresh) {
            return std::string(zor::expandOutputName("%", fresh, "b"));
        };
        const std::string first = name(false);
        const std::string fresh = name(true);
        const bool kept = name(false) == first;
        zor::forgetNameStamp();
        printf("%d %d %d\n", fresh != first, kept, name(false) != first);
    });
    EXPECT_EQ(result.out, "1 1 1\n");
}

TEST(OutputName, IsCutAtItsBuffer) {
    const kit::ChildResult result = kit::runChild([] {
        const std::string longest(5000, 'n');
        for (const char *tail : {"", "%"}) {
            puts(std::to_string(strlen(zor::expandOutputName((longest + tail).c_str(), false, "b")))
                     .c_str());
        }
    });
    EXPECT_EQ(result.out, "4095\n4095\n");
}

} // namespace

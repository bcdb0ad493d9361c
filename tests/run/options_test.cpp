// COBRTOPT as a program finds it: every case runs a main program in a process of its own. The guide
// shows the messages.

#include <regex>
#include <string>

#include "support/kit.h"

using namespace kit;

namespace {

void showOptions() {
    const Proccom &process = *_zorProccom;
    printf("%08x %08x %d [%.3s] %.8s", process.options1, process.options2, process.errcount,
           process.filesys, process.upsi);
}

TEST(RunTimeOptions, SetTheFieldsOfTheProcess) {
    const char *defaults = "0a000000 c0000000 0 [] 00000000";
    std::string many;
    for (int i = 0; i < 16000; ++i) {
        many += "NOCHECK:";
    }
    const struct {
        std::string options;
        const char *fields;
        const char *messages = "";
    } cases[] = {
        {"", defaults},
        {" ,:),\t\n", defaults},
        {"trap(off), upsi=10000001", "0a000000 00000000 0 [] 10000001"},
        {"t r a p ( o f f\t)\n", "0a000000 00000000 0 [] 00000000"},
        {"TRAP=DUMP", "0a000000 e0000000 0 [] 00000000"},
        {"TRAP=DUMP:TRAP=OLD", "0a000000 80000000 0 [] 00000000"},
        {"TRAP(DUMP)TRAP(OFF)", "0a000000 60000000 0 [] 00000000"},
        {"ACCEPT", "0a000000 d0000000 0 [] 00000000"},
        {"ACCEPT=NEW,ACCEPT=OLD", defaults},
        {"CHECK::NODEBUG:", "08000000 c0000000 0 [] 00000000"},
        {"nocheck:debug=off:DEBUG", "02000000 c0000000 0 [] 00000000"},
        {"CHECK=OFF(DEBUG)", defaults, "172 "}, // "CHECK=OFF=DEBUG"
        {"FILEMODE=LARGE,fm(s),FILESYS,FS", defaults},
        {"FILESYS=NAT", "0a000000 c0000000 0 [lsq] 00000000"},
        {"FS=PSX,FILESYS=RAW", "0a000000 c0000000 0 [jdu] 00000000"},
        {"FS=WKAT", "0a000000 c0000000 0 [wka] 00000000"},
        {"FS=XYZ", defaults, "172 "},
        {"UPSI=11111111,UPSI", defaults},
        {"UPSI=11111111,UPSI=", defaults, "173 "},
        {"UPSI=111111111", defaults, "173 "},
        {"UPSI=11111112", defaults, "174 "},
        {"ERRCOUNT=2147483647", "0a000000 c0000000 2147483647 [] 00000000"},
        {"ERRCOUNT(+7),ERRCOUNT", defaults},
        {"ERRCOUNT=5x", defaults, "181 "},
        {"ERRCOUNT=9,ERRCOUNT=-99999999999", defaults, "181 "},
        {"ERRCOUNT=2147483648", defaults, "182 "},
        {"CHECK=MAYBE", defaults, "172 "},
        {"FOO,FOO=1,=,NOCHECK", "02000000 c0000000 0 [] 00000000", "171 171 171 "},
        {many + "UPSI=01010101", "02000000 c0000000 0 [] 01010101"},
        {std::string(100000, 'A') + ",NODEBUG", "08000000 c0000000 0 [] 00000000", "171 "},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.options.substr(0, 60));
        const ChildResult child = runProgram({{"COBRTOPT", each.options}}, [] { showOptions(); });
        EXPECT_EQ(child.status, 0);
        EXPECT_EQ(child.out, each.fields);
        EXPECT_EQ(std::regex_replace(child.err, std::regex("ZOR(\\d+)W"), "$1 ",
                                     std::regex_constants::format_no_copy),
                  each.messages)
            << child.err;
    }
}

} // namespace

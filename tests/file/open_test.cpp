// OPEN and CLOSE over the file systems of the tests: names, choice of the file system, modules,
// concatenations.
#include <map>
#include <sstream>
#include <sys/stat.h>

#include "file_kit.h"

using files::File;

namespace {

// How an OPEN ends: file system and name, or status and extended status.
std::string opened(File &file, int mode = FCB_INPUT) {
    const int status = file.open(mode);
    EXPECT_EQ(std::string(file.status, 2), (status < 10 ? "0" : "") + std::to_string(status));
    EXPECT_EQ(file.fcb.open, file.fcb.curmode != 0 ? _zorOpenError : _zorGenericOpen);
    EXPECT_EQ(file.fcb.lastverb, FCB_VERB_OPEN);
    return status < 10 ? file.code() + " " + file.fcb.name
                       : std::to_string(status) + "/" + std::to_string(file.fcb.status2);
}

} // namespace

// Which file system and which name an assignment means, by its kind: literal, word, variable, word
// or variable, none of them.
CHILD_TEST(Assignments, NameFileSystemAndFile,
           .environment = {{"PSXNAME", "psx-/tmp/x"},
                           {"PLAIN", "ab-c"},
                           {"EMPTY", ""},
                           {"B", "b"},
                           {"TWO", "x y"},
                           {"HOME", "/home/me"},
                           {"KOTS_TK_GYP_SERVER", "/.:/kots/gyp/srv"}}, ) {
    std::istringstream cases(
        "w sok-DATA=sok DATA;l SoK-DATA  =sok DATA;w psx-a-b=psx a-b;w psxfile-b=psx b;"
        "w nat-A=lsq A;w ddm-A=bni A;w ab-DATA=uqe ab-DATA;w DATA-=uqe DATA-;w 9ok-A=uqe 9ok-A;"
        "w s.k-A=uqe s.k-A;n sok-DATA=uqe sok-DATA;w str-A=96/2;w fif-A=96/2;w mqu-A=37/0;"
        "w zzz-x=96/2;w psx-   =95/2;w    =95/2;n =95/2;v PSXNAME=psx /tmp/x;"
        "b PSXNAME  =psx /tmp/x;v PLAIN=uqe ab-c;v EMPTY=uqe EMPTY;v sok-NO=uqe sok-NO;"
        "b sok-NO=sok NO;l sok-~/a$B=sok /home/me/ab;l sok-a$TWO=95/2;l sok-$NO=95/2;"
        "l sok-$(echo x)=sok $(echo x);w gyp-PAY(3)=gyp /.:/kots/gyp/srv/PAY;"
        "w gyp-/.:/kots/gyp/x/F=gyp /.:/kots/gyp/x/F;w bni-/.:/kots/gyp/F(1)=gyp /.:/kots/gyp/F;"
        "w bni-F(1)=bni F;w wka-/.:/kots/gyp/F=uqe /.:/kots/gyp/F;"
        "w wka-/.:/kots/gyp/s/F=gyp /.:/kots/gyp/s/F");
    const std::map<char, uint8_t> kinds = {{'l', 0x04}, {'w', 0x08}, {'v', 0x20}, {'b', 0x28}};
    for (std::string each; std::getline(cases, each, ';');) {
        const std::size_t divider = each.find('=');
        File file(each.substr(2, divider - 2));
        file.described.assign = kinds.contains(each[0]) ? kinds.at(each[0]) : uint8_t{0};
        file.enter();
        EXPECT_EQ(opened(file), each.substr(divider + 1)) << each;
    }
    for (const std::string each :
         {"psx1...psx F", "???1...lsq F", "???0psxpsx F", "\1\1\0010pipuqe F"}) {
        File file("F");
        each.copy(file.described.fscode, 3);
        file.described.organization = each[3] == '1' ? FILE_LINE_SEQUENTIAL : 0;
        each.copy(_zorProccom->filesys, 3, 4);
        file.enter();
        EXPECT_EQ(opened(file), each.substr(7)) << each;
    }
    EXPECT_EQ(std::string(_zorProccom->filesys, 3), "wka");
}

// Without a file system named, the file's first bytes tell it.
TEST(Assignments, AreLookedAt) {
    constexpr auto look = [] {
        const auto write = [&](const char *name, std::size_t at, const std::string &mark) {
            kit::writeFile(name, std::string(28, '.').replace(at, mark.size(), mark));
        };
        write("psx", 24, std::string("vfs\0", 4));
        write("uqe", 8, "UQE");
        write("bni", 9, "UQE");
        write("vfs", 24, "vfs.");
        kit::writeFile("short", "........UQE................");
        kit::writeFile("empty", "");
        mkfifo("fifo", 0666);
        for (const std::string name :
             {"psx", "uqe", "bni", "vfs", "short", "empty", "fifo", "no", "."}) {
            File file("wka-" + name);
            file.enter();
            printf("%.4s ", opened(file).c_str());
        }
    };
    for (const std::string other : {"uqe  uqe  uqe  ", "bni  bni  bni  "}) {
        const kit::TemporaryDirectory directory;
        kit::ChildOptions options{{{"VFS_NO_FORCE_FS", other[0] == 'u' ? "" : "1"}}};
        options.directory = directory.path();
        EXPECT_EQ(kit::runChild(look, options).out, "psx  uqe  bni  bni  bni  " + other + "93/0 ");
    }
}

CHILD_TEST(Open, LeavesAnOpenBlock, .environment = {{"VFS_DEBUG_OPEN", "1"}},
           .err = "Opening sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Opening sok-MASTER as 'F'   FS1=07 FS2=0\n"
                  "Closing sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Closing sok-MASTER as 'sok-F'   FS1=42 FS2=9\n"
                  "Opening sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Opening sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Closing sok-MASTER as 'F'   FS1=00 FS2=0\n") {
    File file;
    file.enter();
    FCB &fcb = file.fcb;
    file.described.linageflags = FILE_LINAGE;
    fcb.linageset[3] = 7;
    fcb.flags = FCB_READ_GOOD;
    EXPECT_EQ(file.open(FCB_OUTPUT | FCB_OPEN_NO_REWIND), 7);
    EXPECT_EQ(file.seen(), "07000000");
    EXPECT_EQ(std::pair(+fcb.curmode, +fcb.openmode), std::pair(0x4400, 0));
    EXPECT_EQ(fcb.linage[3] + fcb.linecount + fcb.line + fcb.openkind + fcb.openstate, 12);
    EXPECT_EQ(fcb.flags, FCB_POSITIONED | FCB_NAME_ALLOCATED);
    EXPECT_EQ(file.open(), 41);
    EXPECT_EQ(file.close(FCB_CLOSE_REEL), 7);
    EXPECT_EQ(std::pair(fcb.flags, +fcb.lastverb), std::pair(0U, +FCB_VERB_CLOSE));
    EXPECT_EQ(file.close(), 42);
    EXPECT_EQ(file.open(), 0);
    EXPECT_EQ(file.close(FCB_CLOSE_LOCK), 0);
    EXPECT_EQ(file.open(), 38);
}

// OPEN, READs up to a status above 9, and CLOSE, between what the file system does. What a module
// said itself of a failure stands.
TEST(Files, GoTheirWay) {
    struct Case {
        const char *assignment;
        const char *mode;
        const char *out;
        const char *err = "";
    };
    constexpr Case cases[] = {
        {"sok-A::B:", "32768",
         "open(A) sok A, read(A) close(A) open(B) 0, read(B) 10, close(B) 00000000"},
        {"sok-absent1:B:absent", "32768",
         "open(absent1) close(absent1) open(B) sok B, read(B) close(B) open(absent) close(absent) "
         "5, "
         "10, 00000000"},
        {"sok-absent:absent", "32768",
         "open(absent) close(absent) open(absent) close(absent) sok sok-absent:absent, 10, "
         "00000000"},
        {"uqe-A:wka-B", "32768",
         "open(A) uqe A, read(A) close(A) open(B) 0, read(B) 10, close(B) 00000000"},
        {"sok-A:psx-B", "32768", "open(A) sok A, read(A) close(A) 33, 33000039,psx-B"},
        {"sok-A:B=35", "32768", "open(A) sok A, read(A) close(A) open(B=35) 35, 35000000"},
        {":::", "32768", "33/34, 33000034,:::"},
        {"zzz-A:B", "32768", "96/2, 96000002,zzz,A"},
        {"sok-A:B", "16384", "37/0, 37000000"},
        {"gyp-A:B", "8192", "37/0, 37000000"},
        {"gyp-A:B", "32768", "33/2, 33000002,A", "GYP shortname usage requires setting:\n`export "},
        {"sok-A", "4096", "open(A) sok A, read(A) 10, close(A) 00000000"},
        {"sok-A=35", "32768", "open(A=35) 35/2, 35"},
        {"mqu-F", "32768", "37/0, 37"},
        {"rsd-F", "32768", "96/2, 96000002,rsd,F"},
        {"jdu-F", "32768", "96/2, 96000002,jdu,F",
         "dlopen(zorrfjdut_32r.so) error zorrfjdut_32r.so: cannot open "},
        {"pip-F", "32768", "96/2, 96000002,pip,F", "dlsym(_IO_Init) in zorrfpipe_32r.so error="}};
    constexpr auto body = [] {
        File file(getenv("ASSIGNMENT"));
        file.enter();
        const std::string way = opened(file, atoi(getenv("MODE")));
        printf("%s, ", way.c_str());
        while (file.fcb.curmode != 0 && file.fcb.status < 10) {
            printf("%d, ", file.read());
        }
        if (file.fcb.curmode != 0) {
            file.close();
        }
        printf("%s", file.seen().c_str());
        EXPECT_EQ(file.fcb.concat, nullptr);
        EXPECT_EQ(file.read(), 47);
    };
    for (const auto &[assignment, mode, out, err] : cases) {
        const auto child =
            kit::runChild(body, kit::Environment{{"ASSIGNMENT", assignment},
                                                 {"MODE", mode},
                                                 {"TRACE", "1"},
                                                 {"VFS_DEBUG_OPEN", *err == 'd' ? "1" : ""}});
        EXPECT_EQ(child.out, out);
        EXPECT_EQ(child.err.substr(0, strlen(err)), err);
    }
}

// OPEN and CLOSE over the file systems of the tests: names, choice of the file system, modules,
// concatenations.
#include <sstream>
#include <sys/stat.h>

#include "file_kit.h"
#include "groups/group_kit.h"

using files::File;

namespace {

// How an OPEN ends: file system and name, or status and extended status.
std::string opened(File &file, int mode = FCB_INPUT) {
    const int status = file.open(mode);
    EXPECT_EQ(std::string(file.status, 2), (status < 10 ? "0" : "") + std::to_string(status));
    EXPECT_EQ(file.fcb.open, file.fcb.curmode != 0 ? _zorOpenError : _zorGenericOpen);
    EXPECT_EQ(file.fcb.lastverb, FCB_VERB_OPEN);
    EXPECT_TRUE(status < 10 || file.fcb.unlock == _zorUnlockError);
    EXPECT_TRUE(status > 9 || (file.fcb.flags & FCB_POSITIONED) != 0);
    return status < 10 ? std::string(file.fcb.fscode, 3) + " " + file.fcb.name
                       : std::to_string(status) + "/" + std::to_string(file.fcb.status2);
}

} // namespace

// Which file system and which name an assignment means, by its kind: literal (4), word (8),
// variable (20), either of these (28).
CHILD_TEST(Assignments, NameFileSystemAndFile, ) {
    for (const char *variable : {"PSXNAME=psx-/tmp/x", "PLAIN=ab-c", "EMPTY=", "B=b", "TWO=x y",
                                 "HOME=/home/me", "KOTS_TK_GYP_SERVER=/.:/kots/gyp/srv"}) {
        putenv(const_cast<char *>(variable));
    }
    std::istringstream cases(
        "08 sok-DATA=sok DATA;04 SoK-DATA  =sok DATA;08 psx-a-b=psx a-b;08 psxfile-b=psx b;"
        "08 nat-A=lsq A;08 ddm-A=bni A;08 ab-DATA=uqe ab-DATA;08 DATA-=uqe DATA-;08 9ok-A=uqe "
        "9ok-A;"
        "08 s.k-A=uqe s.k-A;00 sok-DATA=uqe sok-DATA;08 str-A=96/2;08 fif-A=96/2;08 mqu-A=37/0;"
        "08 zzz-x=96/2;08 psx-   =95/2;08    =95/2;00 =95/2;20 PSXNAME=psx /tmp/x;"
        "28 PSXNAME  =psx /tmp/x;20 PLAIN=uqe ab-c;20 EMPTY=uqe EMPTY;20 sok-NO=uqe sok-NO;"
        "28 sok-NO=sok NO;04 sok-~/a$B=sok /home/me/ab;04 sok-a$TWO=95/2;04 sok-$NO=95/2;"
        "04 sok-$(echo x)=sok $(echo x);08 gyp-PAY(3)=gyp /.:/kots/gyp/srv/PAY;"
        "08 gyp-/.:/kots/gyp/x/F=gyp /.:/kots/gyp/x/F;08 bni-/.:/kots/gyp/F(1)=gyp /.:/kots/gyp/F;"
        "08 bni-/.:/kots/gyp/F=gyp /.:/kots/gyp/F;08 bni-F(1)=bni F;08 wka-/.:/kots/gyp/F=uqe "
        "/.:/kots/gyp/F;"
        "08 wka-/.:/kots/gyp/s/F=gyp /.:/kots/gyp/s/F");
    for (std::string each; std::getline(cases, each, ';');) {
        const std::size_t divider = each.find('=');
        File file(each.substr(3, divider - 3));
        file.described.assign = static_cast<uint8_t>(std::stoi(each, nullptr, 16));
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
        kit::writeFile("psx", std::string(24, '.') + std::string("vfs\0", 4));
        kit::writeFile("uqe", "........UQE.................");
        kit::writeFile("bni", ".........UQE............vfs.");
        kit::writeFile("short", "........UQE................");
        kit::writeFile("empty", "");
        mkfifo("fifo", 0666);
        for (const std::string name : {"psx", "uqe", "bni", "short", "empty", "fifo", "no", "."}) {
            File file("wka-" + name);
            file.enter();
            printf("%.4s ", opened(file).c_str());
        }
        File forbidden("wka-psx"); // to a process that has just the right to ask for it
        forbidden.enter();
        printf("%s", seteuid(1) == 0 ? opened(forbidden).c_str() : "91/0");
    };
    for (const std::string other : {"uqe  uqe  uqe  ", "bni  bni  bni  "}) {
        const kit::TemporaryDirectory directory;
        kit::ChildOptions options{{{"VFS_NO_FORCE_FS", other[0] == 'u' ? "" : "1"}}};
        options.directory = directory.path();
        EXPECT_EQ(kit::runChild(look, options).out, "psx  uqe  bni  bni  " + other + "93/0 91/0");
    }
}

CHILD_TEST(Open, LeavesAnOpenBlock, .environment = {{"VFS_DEBUG_OPEN", "1"}},
           .errHolds = "Opening sok-MASTER as 'F'   FS1=07 FS2=0\n"
                       "Closing sok-MASTER as 'F'   FS1=00 FS2=0\n"
                       "Closing sok-MASTER as 'sok-F'   FS1=42 FS2=9\n"
                       "Opening sok-MASTER as 'F'   FS1=00 FS2=0\n") {
    File file;
    FCB &fcb = file.fcb;
    fcb.level = 0;
    file.enter();
    EXPECT_EQ(fcb.unlock, nullptr);
    file.described.linageflags = FILE_LINAGE;
    fcb.linageset[3] = 7;
    fcb.flags = FCB_READ_GOOD | FCB_ABSENT_OPTIONAL;
    fcb.position = 9;
    EXPECT_EQ(file.open(FCB_OUTPUT | FCB_OPEN_NO_REWIND), 7);
    EXPECT_EQ(file.seen(), "07000000");
    EXPECT_EQ(std::pair(+fcb.curmode, +fcb.openmode), std::pair(0x4400, 0));
    EXPECT_EQ(
        fcb.position + fcb.linage[3] + fcb.linecount + fcb.line + fcb.openkind + fcb.openstate, 12);
    EXPECT_EQ(fcb.flags, FCB_POSITIONED | FCB_NAME_ALLOCATED);
    EXPECT_EQ(file.open(), 41);
    EXPECT_EQ(file.close(FCB_CLOSE_REEL), 7);
    EXPECT_EQ(fcb.flags, 0U);
    EXPECT_EQ(file.close(), 42);
    EXPECT_EQ(file.open() + file.close(FCB_CLOSE_LOCK), 0);
    EXPECT_EQ(file.open(), 38);
    EXPECT_EQ(fcb.lastclose, FCB_CLOSE_LOCK);
    File absent("sok-absent");
    absent.enter();
    EXPECT_EQ(absent.open(FCB_INPUT | FCB_OPEN_NO_REWIND), 5);
    File odd("sok-odd");
    odd.enter();
    EXPECT_EQ(odd.open() + odd.close(FCB_CLOSE_REEL), 30);
}

// The three generations of a group, by mode, access and assignment: the name, and how many there
// are then.
TEST(Open, ResolvesGenerations) {
    const kit::TemporaryDirectory directory;
    kit::ChildOptions options;
    options.directory = directory.path();
    const auto child = kit::runChild(
        [] {
            std::istringstream cases(
                "32768 80 00 PAY(+1)=sok PAY(+1)=3;8192 80 00 PAY(+1)=sok PAY(+1)=3;"
                "32768 80 80 PAY(+1)=sok PAY(+1)=3;32768 80 00 PAY=sok PAY.g0003v00=3;"
                "8192 00 00 PAY(-1)=sok PAY.g0002v00=3;32768 00 00 PAY=37/0=3;"
                "8192 80 00 PAY=37/0=3;16384 80 00 PAY(+1)=sok PAY.g0004v00=4;"
                "8192 80 80 PAY(+1)=sok PAY.g0004v00=4;");
            for (std::string each; std::getline(cases, each, ';');) {
                group::make("PAY", group::makeBlock(255, {1, 2, 3}));
                const std::size_t name = each.find("PAY");
                const std::size_t divider = each.find('=');
                File file("sok-" + each.substr(name, divider - name));
                file.described.access = each[name - 6] == '8' ? FILE_SEQUENTIAL : 0;
                file.described.assign =
                    each[name - 3] == '8' ? FILE_WORD | FILE_OPTIONAL : FILE_WORD;
                file.enter();
                const std::string how = opened(file, stoi(each)) + "=";
                const std::size_t count = group::entriesOf("PAY.catalogue").size();
                EXPECT_EQ(how + std::to_string(count), each.substr(divider + 1)) << each;
            }
        },
        options);
    EXPECT_EQ(child.status, 0) << child.out;
}

// OPEN, READs up to a status above 9, and CLOSE, between what the file system does; then what the
// program sees, and the beginning of stderr. What a module said itself of a failure stands.
TEST(Files, GoTheirWay) {
    std::istringstream cases(R"(
32768|sok-A::B:|open(A) sok A, read(A) close(A) open(B) 0, read(B) 10, close(B) 00000000|
32768|sok-absent1:B:absent|open(absent1) close(absent1) open(B) sok B, read(B) close(B) open(absent) close(absent) 5, 10, 00000000|
32768|sok-absent:absent|open(absent) close(absent) open(absent) close(absent) sok sok-absent:absent, 10, 00000000|
32768|uqe-A:wka-B|open(A) uqe A, read(A) close(A) open(B) 0, read(B) 10, close(B) 00000000|
32768|bni-A:wka-B|open(A) bni A, read(A) close(A) open(B) 0, read(B) 10, close(B) 00000000|
32768|sok-A:psx-B|open(A) sok A, read(A) close(A) 33, 33000039,psx-B|
32768|sok-A:B=35|open(A) sok A, read(A) close(A) open(B=35) 35, 35000000|
32768|:::|33/34, 33000034,:::|
16384|sok-A:B|37/0, 37000000|
32768|gyp-A:B|33/2, 33000002,A|GYP shortname usage requires setting:
4096|sok-A|open(A) sok A, read(A) 10, close(A) 00000000|
32768|sok-A=35|open(A=35) 35/2, 35|
32768|mqu-F|37/0, 37|
32768|rsd-F|96/2, 96000002,rsd,F|
32768|jdu-F|96/2, 96000002,jdu,F|dlopen(zorrfjdut_32r.so) error zorrfjdut_32r.so: cannot open 
32768|pip-F|96/2, 96000002,pip,F|dlsym(_IO_Init) in zorrfpipe_32r.so error=)");
    constexpr auto body = [] {
        File file(getenv("ASSIGNMENT") ?: "");
        file.enter();
        printf("%s, ", opened(file, atoi(getenv("MODE") ?: "")).c_str());
        while (file.fcb.curmode != 0 && file.fcb.status < 10) {
            printf("%d, ", file.read());
        }
        file.fcb.curmode != 0 ? file.close() : 0;
        printf("%s", file.seen().c_str());
        EXPECT_EQ(file.fcb.concat, nullptr);
        EXPECT_NE(file.fcb.fsid, 2); // it has no server
        EXPECT_EQ(file.read() + file.fcb.deffsid, 47 + 12);
        file.described.assignlen = 0;
        EXPECT_EQ(file.open(), 95);
        EXPECT_EQ(file.fcb.modhandle1, nullptr); // of an OPEN that failed before
    };
    std::string mode;
    for (std::string name, out, err; std::getline(cases >> std::ws, mode, '|');) {
        std::getline(std::getline(std::getline(cases, name, '|'), out, '|'), err);
        const kit::Environment environment{
            {"ASSIGNMENT", name}, {"MODE", mode}, {"TRACE", "1"}, {"VFS_DEBUG_OPEN", err}};
        const auto child = kit::runChild(body, environment);
        EXPECT_EQ(child.out, out);
        EXPECT_EQ(child.err.substr(0, err.empty() ? 99 : err.size()), err);
    }
}

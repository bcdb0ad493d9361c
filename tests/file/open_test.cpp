// OPEN and CLOSE over the file systems of the tests: names, choice of the file system, modules,
// concatenations.
#include <filesystem>
#include <sys/stat.h>

#include "file_kit.h"

using files::File;

namespace {

std::string shown(const File &file) {
    return file.code() + " " + file.name();
}

// Status, extended status and use code of an OPEN.
std::string refused(File &file, uint16_t mode = FCB_INPUT) {
    const int status = file.open(mode);
    EXPECT_EQ(file.digits(), (status < 10 ? "0" : "") + std::to_string(status));
    EXPECT_EQ(file.fcb.curmode != 0, status < 10 || status == 41);
    return std::to_string(status) + "/" + std::to_string(file.fcb.status2);
}

} // namespace

// Which file system and which name an assignment means, by its kind; the file systems that are not
// there refuse the name as it is by then.
CHILD_TEST(Assignments, NameFileSystemAndFile,
           .environment = {{"PSXNAME", "psx-/tmp/x"}, {"PLAIN", "ab-c"}, {"EMPTY", ""},
                           {"B", "b"}, {"TWO", "x y"}, {"HOME", "/home/me"},
                           {"KOTS_TK_GYP_SERVER", "/.:/kots/gyp/srv"}}) {
    struct Case {
        const char *assignment;
        int kind;
        const char *expected; // code and name, or the status
    };
    const Case cases[] = {
        {"sok-DATA", FILE_WORD, "sok DATA"},
        {"SoK-DATA  ", FILE_LITERAL, "sok DATA"},
        {"psx-a-b", FILE_WORD, "psx a-b"},
        {"psxfile-b", FILE_WORD, "psx b"},
        {"nat-A", FILE_WORD, "lsq A"},
        {"ddm-A", FILE_WORD, "bni A"},
        {"ab-DATA", FILE_WORD, "uqe ab-DATA"},
        {"DATA-", FILE_WORD, "uqe DATA-"},
        {"9ok-A", FILE_WORD, "uqe 9ok-A"},
        {"s.k-A", FILE_WORD, "uqe s.k-A"},
        {"sok-DATA", 0, "uqe sok-DATA"},
        {"str-A", FILE_WORD, "96/2"},
        {"fif-A", FILE_WORD, "96/2"},
        {"mqu-A", FILE_WORD, "37/0"}, // its module refuses
        {"zzz-x", FILE_WORD, "96/2"},
        {"psx-   ", FILE_WORD, "95/2"},
        {"   ", FILE_WORD, "95/2"},
        {"", 0, "95/2"},
        {"PSXNAME", FILE_ENVIRONMENT, "psx /tmp/x"},
        {"PSXNAME  ", FILE_ENVIRONMENT | FILE_WORD, "psx /tmp/x"},
        {"PLAIN", FILE_ENVIRONMENT, "uqe ab-c"},
        {"EMPTY", FILE_ENVIRONMENT, "uqe EMPTY"},
        {"sok-UNSET", FILE_ENVIRONMENT, "uqe sok-UNSET"},
        {"sok-~/a$B", FILE_LITERAL, "sok /home/me/ab"},
        {"sok-a$TWO", FILE_LITERAL, "95/2"},
        {"sok-$NOTHING", FILE_LITERAL, "95/2"},
        {"sok-$(echo x)", FILE_LITERAL, "sok $(echo x)"},
        {"gyp-PAY(3)", FILE_WORD, "gyp /.:/kots/gyp/srv/PAY"},
        {"gyp-/.:/kots/gyp/x/F", FILE_WORD, "gyp /.:/kots/gyp/x/F"},
        {"bni-/.:/kots/gyp/F(1)", FILE_WORD, "gyp /.:/kots/gyp/F"},
        {"bni-F(1)", FILE_WORD, "bni F"},
        {"wka-/.:/kots/gyp/F", FILE_WORD, "uqe /.:/kots/gyp/F"},
        {"wka-/.:/kots/gyp/s/F", FILE_WORD, "gyp /.:/kots/gyp/s/F"},
    };
    for (const auto &[assignment, kind, expected] : cases) {
        File file(assignment);
        file.described.assign = static_cast<uint8_t>(kind);
        files::enterWith(file);
        const std::string status = refused(file);
        EXPECT_EQ(file.fcb.status == 0 ? shown(file) : status, expected) << assignment;
        EXPECT_EQ(file.fcb.open, file.fcb.status == 0 ? _zorOpenError : _zorGenericOpen);
        EXPECT_EQ(file.fcb.lastverb, FCB_VERB_OPEN);
    }
    File described("F");
    memcpy(described.described.fscode, "psx", 3);
    files::enterWith(described);
    described.open();
    EXPECT_EQ(shown(described), "psx F");
    unsetenv("KOTS_TK_GYP_SERVER");
    File noServer("gyp-F");
    files::enterWith(noServer);
    fclose(stderr);
    EXPECT_EQ(refused(noServer), "96/2");
    EXPECT_EQ(noServer.fcb.fsid, 0);
}

// The file system that serves by default, also in COBRTOPT's words and for lines.
CHILD_TEST(Assignments, HaveADefaultFileSystem, ) {
    const std::pair<std::string, std::string> cases[] = {
        {"wka", "wka12"}, {"jdu", "jdu7"}, {"rsd", "rsd6"}, {"psx", "psx3"}, {"uqe", "uqe5"},
        {"lsq", "lsq4"},  {"gyp", "gyp2"}, {"kpn", "kpn8"}, {"bni", "bni1"}, {"nat", "lsq4"},
        {"pip", "wka12"}, {"xxx", "wka12"}};
    for (const auto &[setting, expected] : cases) {
        for (const bool lines : {true, false}) {
            File file;
            file.described.organization = lines ? FILE_LINE_SEQUENTIAL : 0;
            if (_zorProccom->runcom == nullptr) {
                kit::enter(*new kit::Program("MAIN"));
            }
            memcpy(_zorProccom->filesys, setting.c_str(), 3);
            files::enterWith(file);
            EXPECT_EQ(std::string(file.fcb.deffscode, 3) + std::to_string(file.fcb.deffsid),
                      lines ? "lsq4" : expected);
        }
        EXPECT_EQ(std::string(_zorProccom->filesys, 3),
                  expected == "wka12" ? "wka" : setting);
    }
}

// Without a file system named, the file's first bytes tell it.
TEST(Assignments, AreLookedAt) {
    constexpr auto look = [] {
        std::string head(28, '.');
        const auto with = [&](std::size_t at, std::string mark) {
            return std::string(head).replace(at, mark.size(), mark);
        };
        kit::writeFile("psx", with(24, std::string("vfs\0", 4)));
        kit::writeFile("uqe", with(8, "UQE") + "...");
        kit::writeFile("bni", head);
        kit::writeFile("vfs", with(24, "vfs."));
        kit::writeFile("short", with(8, "UQE").substr(0, 27));
        kit::writeFile("empty", "");
        mkfifo("fifo", 0666);
        mkdir("folder", 0777);
        for (const char *name : {"psx", "uqe", "bni", "vfs", "short", "empty", "fifo", "none"}) {
            File file(std::string("wka-") + name);
            files::enterWith(file);
            file.open();
            printf("%s ", file.code().c_str());
        }
        File folder("wka-folder");
        files::enterWith(folder);
        EXPECT_EQ(refused(folder), "93/0");
    };
    for (const char *setting : {"", "1"}) {
        const kit::TemporaryDirectory directory;
        kit::ChildOptions options{{{"VFS_NO_FORCE_FS", setting}}};
        options.directory = directory.path();
        const kit::ChildResult child = kit::runChild(look, options);
        EXPECT_EQ(child.out, *setting == 0 ? "psx uqe bni bni bni uqe uqe uqe "
                                           : "psx uqe bni bni bni bni bni bni ");
        EXPECT_EQ(child.status, 0) << child.err;
    }
}

CHILD_TEST(Open, LeavesAnOpenBlock, .environment = {{"TRACE", "1"}},
           .out = "open(F) close(F) open(F) close(F) ") {
    File file;
    files::enterWith(file);
    file.described.linageflags = FILE_LINAGE;
    file.fcb.linageset[3] = 7;
    file.fcb.flags = FCB_READ_GOOD;
    EXPECT_EQ(file.open(FCB_OUTPUT | FCB_OPEN_NO_REWIND), 7);
    EXPECT_EQ(file.digits() + file.extendedStatus(), "07000000");
    EXPECT_EQ(file.fcb.curmode, FCB_OUTPUT | FCB_OPEN_NO_REWIND);
    EXPECT_EQ(file.fcb.openmode, 0);
    EXPECT_EQ(file.fcb.linage[3] + file.fcb.linecount + file.fcb.line, 9);
    EXPECT_EQ(file.fcb.openkind + file.fcb.openstate, 3);
    EXPECT_EQ(file.fcb.flags, FCB_POSITIONED | FCB_NAME_ALLOCATED);
    EXPECT_EQ(file.open(), 41);
    EXPECT_EQ(file.close(FCB_CLOSE_REEL), 7);
    EXPECT_EQ(file.fcb.flags, 0U);
    EXPECT_EQ(file.fcb.lastverb, FCB_VERB_CLOSE);
    EXPECT_EQ(file.fcb.name, file.described.assignname);
    EXPECT_EQ(file.read(), 47);
    EXPECT_EQ(file.close(), 42);
    EXPECT_EQ(file.open(), 0);
    EXPECT_EQ(file.close(FCB_CLOSE_LOCK), 0);
    EXPECT_EQ(file.open(), 38);
}

CHILD_TEST(Open, ShowsWhatItDoes, .environment = {{"VFS_DEBUG_OPEN", "1"}},
           .err = "Opening sok-MASTER as 'F'   FS1=00 FS2=0\nOpening sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Closing sok-MASTER as 'F'   FS1=00 FS2=0\n"
                  "Opening sok-MASTER as 'A' (concat)  FS1=00 FS2=0\n"
                  "Opening sok-MASTER as 'A' (concat)  FS1=00 FS2=0\n"
                  "Closing sok-MASTER as 'A' (concat)  FS1=00 FS2=0\n"
                  "Closing -MASTER as 'never'   FS1=42 FS2=9\n") {
    for (const char *assignment : {"sok-F", "sok-A:B"}) {
        File file(assignment);
        files::enterWith(file);
        file.open();
        file.close();
    }
    File never("never");
    files::enterWith(never);
    never.fcb.name = const_cast<char *>(never.described.assignname);
    never.close();
}

// Absent members are passed over, whether OPEN or a READ comes to them.
TEST(Concatenations, AreReadAsOneFile) {
    static constexpr auto run = [](const char *assignment) {
        auto *file = new File(assignment);
        files::enterWith(*file);
        printf("%02d ", file->open());
        for (int i = 0; i < 5 && file->fcb.curmode != 0 && file->fcb.status < 10; ++i) {
            printf("%02d ", file->read());
        }
        printf("%02d ", file->close());
        printf("%s", file->fcb.concat == nullptr ? file->name().c_str() : "?");
    };
    const kit::Environment traced{{"TRACE", "1"}};
    kit::expectChildren({
        {"three", {traced, "open(A) 00 read(A) close(A) open(B) 00 read(B) close(B) open(C) 00 "
                           "read(C) 10 close(C) 00 sok-A::B:C:"},
         [] { run("sok-A::B:C:"); }},
        {"absent", {traced, "open(absent1) close(absent1) open(B) 00 read(B) close(B) open(absent) "
                            "close(absent) 05 10 00 sok-absent1:B:absent"},
         [] { run("sok-absent1:B:absent"); }},
        {"all absent", {traced, "open(absent) close(absent) open(absent) close(absent) 05 10 00 "
                                "sok-absent:absent"},
         [] { run("sok-absent:absent"); }},
        {"prefixes", {traced, "open(A) 00 read(A) close(A) open(B) 00 read(B) 10 close(B) 00 "
                              "uqe-A:wka-B"},
         [] { run("uqe-A:wka-B"); }},
        {"another", {traced, "open(A) 00 read(A) close(A) 33 42 sok-A:psx-B"},
         [] { run("sok-A:psx-B"); }},
        {"failing", {traced, "open(A) 00 read(A) close(A) open(B=35) 35 42 sok-A:B=35"},
         [] { run("sok-A:B=35"); }},
        {"unknown", {traced, "96 42 zzz-A:B"}, [] { run("zzz-A:B"); }},
    });
}

CHILD_TEST(Concatenations, AreForSequentialInput, ) {
    const std::pair<const char *, std::string> cases[] = {
        {"sok-A:B", "37/0"}, {"sok-A", "0/0"}, {":::", "33/34"}, {"gyp-A:B", "37/0"}};
    for (const auto &[assignment, expected] : cases) {
        for (const int mode : {int{FCB_OUTPUT}, int{FCB_IO}, int{FCB_EXTEND}, 0}) {
            File file(assignment);
            files::enterWith(file);
            file.described.access = mode == 0 ? FILE_DYNAMIC : FILE_SEQUENTIAL;
            EXPECT_EQ(refused(file, static_cast<uint16_t>(mode == 0 ? FCB_INPUT : mode)), expected);
            EXPECT_EQ(file.fcb.concat, nullptr);
            EXPECT_EQ(refused(file, static_cast<uint16_t>(mode == 0 ? FCB_INPUT : mode)),
                      expected == "0/0" ? "41/17" : expected);
        }
    }
}

// A module that is not there, cannot be loaded, lacks what it must have, refuses, or does nothing.
TEST(Modules, MayFail) {
    static constexpr auto run = [](const char *assignment) {
        auto *file = new File(assignment);
        files::enterWith(*file);
        const std::string before = kit::hex(&file->fcb.read, 6 * sizeof(void *));
        printf("%s ", refused(*file).c_str());
        printf("%s ", file->extendedStatus().c_str());
        EXPECT_EQ(kit::hex(&file->fcb.read, 6 * sizeof(void *)), before);
        printf("%d", file->read());
    };
    const kit::Environment logged{{"VFS_DEBUG_OPEN", "1"}};
    const std::string none = "cannot open shared object file: No such file or directory\n";
    kit::expectChildren({
        {"missing", {.out = "96/2 000002,jdu,F 47",
                     .err = "dlopen(zorrfjdut_32r.so) error zorrfjdut_32r.so: " + none},
         [] { run("jdu-F"); }},
        {"no _IO_Init", {.environment = logged, .out = "96/2 000002,pip,F 47",
                         .errHolds = "dlsym(_IO_Init) in zorrfpipe_32r.so error="},
         [] { run("pip-F"); }},
        {"refuses", {.out = "37/0  47"}, [] { run("mqu-F"); }},
        {"does nothing", {.out = "96/2 000002,rsd,F 47"}, [] { run("rsd-F"); }},
        {"fails", {.out = "35/2  47"}, [] { run("sok-F=35"); }},
    });
}

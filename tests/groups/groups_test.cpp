// Names as OPEN resolves them, over catalogues that the tests write and read byte by byte.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

#include "group_kit.h"

namespace {

using namespace group;
namespace fs = std::filesystem;

const std::string kPay = "PAY.catalogue";

} // namespace

TEST(Concatenation, PartsNamesAtColons) {
    struct {
        const char *name;
        const char *files;
    } const cases[] = {
        {"A:B:C", "+A B C"},
        {"A::B:", "+A B"},
        {"::A", "+A"},
        {":", "+"},
        {"A", "-"},
        {"", "-"},
        {"/.:/kots/gyp/srv/F", "-"},
        {"A:/.:/kots/gyp/srv/F:B", "+A /.:/kots/gyp/srv/F B"},
        {"/.:/.:/A:/.:", "+/.:/.:/A /."},
        {"/.:/:A", "+/.:/ A"},
    };
    for (const auto &each : cases) {
        EXPECT_EQ(resolve(each.name, "psx"), each.files) << each.name;
    }
    std::string names = "A";
    for (int i = 1; i < 256; ++i) {
        names += ":A";
    }
    EXPECT_EQ(resolve(names).size(), 1U + 256 + 255);
    EXPECT_EQ(resolve(names + "::").size(), 1U + 256 + 255);
    EXPECT_EQ(resolve(names + ":A"), "!");
    EXPECT_EQ(_zor_Concat_Next(nullptr), nullptr);
    _zor_Concat_Free(nullptr);
}

TEST(Groups, ResolveReferences) {
    expectInDirectory("", [] {
        make("PAY", makeBlock(255, {1, 2, 3}));
        make("NEW", makeBlock(255, {}));
        fs::create_directory("D");
        fs::copy(kPay, "D/PAY.catalogue");
        kit::writeFile("D/PAY.g0002v00", "");
        const std::string all = "PAY.g0003v00 PAY.g0002v00 PAY.g0001v00";
        const struct {
            std::string name;
            std::string files;
        } cases[] = {
            {"PAY", "+" + all},
            {"PAY(*)", "+" + all},
            {"PAY(0)", "PAY.g0003v00"},
            {"PAY(+0)", "PAY.g0003v00"},
            {"PAY(-1)", "PAY.g0002v00"},
            {"PAY(1)", "PAY.g0002v00"},
            {"PAY(2)", "PAY.g0001v00"},
            {"PAY(3)", "-"},
            {"PAY(-3)", "-"},
            {"PAY(+1)", "-"},
            {"PAY(12345)", "-"},
            {"PAY(99999999999)", "-"},
            {"PAY()", "-"},
            {"PAY(1x)", "-"},
            {"PAY)", "-"},
            {"(0)", "-"},
            {"PAY.g0002v00", "PAY.g0002v00"},
            {"PAY.g0007v00", "-"},
            {"PAY.g0000v00", "-"},
            {"PAY.G0002V00", "-"},
            {".g0002v00", "-"},
            {"NEW", "+"},
            {"NEW(0)", "-"},
            {"D/PAY(1)", "D/PAY.g0002v00"},
            {"D/PAY(0)", "-"},
            {"A:PAY(-1)", "+A PAY.g0002v00"},
            {"PAY:A:PAY(*):NEW:NONE(1)", "+" + all + " A " + all + " NONE(1)"},
        };
        for (const char *code : {"wka", "SYS", "lsq", "psx", "???"}) {
            for (const auto &each : cases) {
                EXPECT_EQ(resolve(each.name, code), each.files) << each.name << " " << code;
            }
        }
        fs::remove("PAY.g0002v00");
        EXPECT_EQ(resolve("PAY:A"), "+PAY.g0003v00 A"); // a gap ends the walk
        EXPECT_EQ(entriesOf(kPay), (std::vector<uint32_t>{1, 2, 3}));
    });
}

// What a catalogue and its files are after one new generation.
TEST(Groups, TakeNewGenerations) {
    struct Case {
        const char *name;
        Block before;
        const char *reference;
        std::vector<uint32_t> after;
        std::string files; // the numbers
    };
    static const uint32_t kRead = 0x03000000;
    expectInDirectory("", [] {
        Block days = makeBlock(2, {1, 2, 3});
        days[kDays] = 7;
        const std::vector<uint32_t> old{9997, 9998, 9999};
        const Case cases[] = {
            {"first", makeBlock(3, {}), "PAY(+1)", {1}, "1 "},
            {"far", makeBlock(9, {7}), "PAY(+9999)", {7}, "7 "},
            {"two on", makeBlock(3, {1}), "PAY(+2)", {1, 3}, "1 3 "},
            {"full", makeBlock(3, {1, 2, 3}), "PAY(+1)", {2, 3, 4}, "2 3 4 "},
            {"beyond", makeBlock(1, {1, 2, 3}), "PAY(+1)", {4}, "4 "},
            {"keeps files", makeBlock(1, {1, 2}, 0), "PAY(+1)", {3}, "1 2 3 "},
            {"empties", makeBlock(3, {1, 2, 3}, 3), "PAY(+1)", {4}, "4 "},
            {"young", days, "PAY(+1)", {1, 2, 3, 4}, "1 2 3 4 "},
            {"numbers wrap",
             makeBlock(9, old),
             "PAY(+1)",
             {9997, 9998, 9999, 0x8001},
             "1 9997 9998 9999 "},
            {"wraps and empties", makeBlock(3, old, 3), "PAY(+1)", {1}, "1 "},
            {"eras wrap",
             makeBlock(9, {0xFFFF0002, 0xFFFF8000 + 5, 0xFFFF8000 + 9999}),
             "PAY(+1)",
             {2, 5, 9999, 0x8001},
             "1 2 5 9999 "},
            {"late", makeBlock(9, {0x8001}), "PAY.g9998v00", {9998, 0x8001}, "1 9998 "},
            {"late, no era",
             makeBlock(9, {1, 2}),
             "PAY.g9998v00",
             {9998, 0x8001, 0x8002},
             "1 2 9998 "},
            {"between", makeBlock(9, {1, 3}), "PAY.g0002v00", {1, 2, 3}, "1 2 3 "},
            {"again", makeBlock(2, {1, 2}), "PAY(0)", {1, 2}, "1 2 "},
        };
        for (const Case &each : cases) {
            SCOPED_TRACE(each.name);
            make("PAY", each.before);
            const std::string file = resolve(each.reference, "wka", 1);
            kit::writeFile(file, "");
            const Block block = read(kPay);
            EXPECT_EQ(entriesOf(kPay), each.after);
            EXPECT_EQ(block[kLast], each.after.back() & 0x3FFF);
            EXPECT_EQ(block[kEra], each.after.back() & 0xFFFF8000);
            if (each.after.size() != each.before[kCount]) {
                EXPECT_EQ(block[kFlags], each.before[kFlags] | kRead);
            }
            std::string files;
            for (uint32_t number = 1; number < 10000; ++number) {
                if (fs::remove(generation("PAY", number))) {
                    files += std::to_string(number) + " ";
                }
            }
            EXPECT_EQ(files, each.files);
        }
    });
}

TEST(Groups, LoseOldAndMissingGenerations) {
    expectInDirectory("", [] {
        Block block = makeBlock(3, {1, 2, 3, 4, 5});
        block[kDays] = 7;
        make("PAY", block);
        fs::remove("PAY.g0004v00");
        const auto age = [](const char *name, int days) {
            fs::last_write_time(name,
                                fs::file_time_type::clock::now() - std::chrono::hours(24 * days));
        };
        age("PAY.g0001v00", 8);
        age("PAY.g0002v00", 6);
        EXPECT_EQ(resolve("PAY(+1)", "sys", 1), "PAY.g0006v00");
        EXPECT_EQ(entriesOf(kPay), (std::vector<uint32_t>{2, 3, 5, 6}));
        EXPECT_FALSE(fs::exists("PAY.g0001v00"));
    });
}

TEST(Groups, HaveNoRoomBeyondAThousand) {
    expectInDirectory("Error: Relative access exceeds the entries allocated for GDG PAY\n", [] {
        std::vector<uint32_t> all;
        for (uint32_t i = 1; i <= 1000; ++i) {
            all.push_back(i);
        }
        Block block = makeBlock(1000, all);
        block[kDays] = 1;
        make("PAY", block);
        EXPECT_EQ(resolve("PAY(+1)", "sys", 1), "-");
        EXPECT_EQ(entriesOf(kPay), all);
    });
}

// A group that is fit for use comes first: nothing of it must serve the next one.
TEST(Groups, RefuseWhatIsNoCatalogue) {
    expectInDirectory("Error: GDG catalogue version unkown!\n", [] {
        make("GOOD", makeBlock(255, {1, 2, 3}));
        for (uint32_t i = 1; i <= 3; ++i) {
            kit::writeFile(generation("PAY", i), "");
        }
        const struct {
            std::size_t word;
            uint32_t value;
        } cases[] = {{kMagic, 0},   {kVersion, 2},  {kVersion, 0}, {kCount, 1001},
                     {kCount, ~0U}, {kLast, 10000}, {kLimit, 0},   {kLimit, 1001}};
        for (const auto &each : cases) {
            Block block = makeBlock(255, {1, 2, 3});
            block[each.word] = each.value;
            write(kPay, block);
            EXPECT_EQ(resolve("GOOD(0):PAY(0)"), "+GOOD.g0003v00 PAY(0)") << each.word;
            EXPECT_EQ(read(kPay), block);
        }
        for (const std::size_t length : {0U, 40U, 4095U, 4097U}) {
            write(kPay, makeBlock(255, {1, 2, 3}));
            fs::resize_file(kPay, length);
            EXPECT_EQ(resolve("GOOD:PAY"), "+GOOD.g0003v00 GOOD.g0002v00 GOOD.g0001v00 PAY");
        }
    });
}

TEST(Groups, TellWhatIsWrong) {
    expectInDirectory("Info: Endian swapped!\n"
                      "Error: GDG catalogue ./DIR.catalogue is not regular.\n"
                      "Error: GDG_stat:stat(PAY.catalogue/X.catalogue) - 20 Not a directory\n"
                      "Error: GDS file PAY.g0002v00 is not regular.\n",
                      [] {
                          const Block native = makeBlock(255, {1, 2, 3});
                          Block swapped = native;
                          for (std::size_t i = 1; i < swapped.size(); ++i) {
                              swapped[i] = __builtin_bswap32(swapped[i]);
                          }
                          make("PAY", native);
                          write(kPay, swapped);
                          EXPECT_EQ(resolve("PAY(-1)"), "PAY.g0002v00");
                          Block after = native;
                          after[kFlags] |= 0x03000000;
                          EXPECT_EQ(read(kPay), after);
                          EXPECT_EQ(resolve("PAY(-1)"), "PAY.g0002v00");
                          fs::create_directory("DIR.catalogue");
                          EXPECT_EQ(resolve("DIR(0)"), "-");
                          EXPECT_EQ(resolve("PAY.catalogue/X"), "-");
                          fs::remove("PAY.g0002v00");
                          fs::create_directory("PAY.g0002v00");
                          EXPECT_EQ(resolve("PAY(1)"), "-");
                      });
}

// A name that is too long for its catalogue is a plain one; one byte less is a group.
TEST(Groups, EndAtTheLongestName) {
    expectInDirectory("", [] {
        const std::string directory(200, 'd');
        std::string path;
        for (int i = 0; i < 4; ++i) {
            path += directory + "/";
        }
        fs::create_directories(path);
        for (std::size_t length = 1010; length < 1030; ++length) {
            const std::string name = path + std::string(length - path.size(), 'n');
            const std::string file = generation(name, 1);
            write(name + ".catalogue", makeBlock(255, {1}));
            kit::writeFile(file, "");
            const bool fits = length <= 1013;
            EXPECT_EQ(resolve(name + "(0)"), fits ? file : "-") << length;
            EXPECT_EQ(resolve(name), fits ? "+" + file : "-");
            EXPECT_EQ(resolve(file), fits ? file : "-");
            EXPECT_EQ(resolve(name + ":" + name + "(+1)"),
                      "+" + (fits ? file : name) + " " + name + "(+1)");
        }
        EXPECT_EQ(resolve(std::string(100000, 'x') + "(0)"), "-");
    });
}

// An indexed file goes with its companions and parts, whatever a shell would make of its name.
TEST(Groups, DeleteIndexedFilesWhole) {
    expectInDirectory("", [] {
        const std::string base = "P* $(touch X)'";
        make(base, makeBlock(1, {1}));
        const std::string file = generation(base, 1);
        for (const std::string &name :
             {"." + file + ".DDMEA", "@" + file, ".@" + file + ".DDMEA", "." + file + ".DDMMAP",
              file + ".@", file + ".@1", "." + file + ".@2.DDMEA"}) {
            kit::writeFile(name, "");
        }
        kit::writeFile("PAY.g0001v00.@1", "another's");
        EXPECT_EQ(resolve(base + "(0)", "wka"), file);
        EXPECT_EQ(read(base + ".catalogue")[kSystem], 3U);
        EXPECT_EQ(resolve(base + "(+1)", "bni", 1), generation(base, 2));
        EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 2);
    });
}

// Other products' programs get the names as they are.
TEST(Groups, AskOtherProducts) {
    const kit::TemporaryDirectory directory;
    fs::create_directory(directory.file("bin"));
    for (const char *name : {"gypadmin", "kpn"}) {
        const std::string program = directory.file(std::string("bin/") + name);
        kit::writeFile(program,
                       "#!/bin/sh\nprintf '<%s>' \"$@\" >>log\necho noise; echo noise >&2\n"
                       "case \"$*\" in *0009*) exit 1; esac\n");
        chmod(program.c_str(), 0755);
    }
    const auto child = inDirectory(
        [] {
            const std::string base = "S.a'\"$(touch X);`touch X`\n b";
            fs::create_directories("home/gyp/srv");
            fs::create_directories("home/kpn/inst/db");
            write("home/gyp/srv/" + base + ".catalogue", makeBlock(1, {1}));
            write("home/kpn/inst/db/" + base + ".catalogue", makeBlock(1, {1, 9}));
            const auto called = [] {
                const std::string log = kit::readFile("log");
                fs::remove("log");
                return log;
            };
            const std::string first = generation(base, 1);
            const std::string second = generation(base, 2);
            const std::string server = "<-server></.:/kots/gyp/srv>";
            const std::string query = "<query><file>" + server;
            EXPECT_EQ(resolve(base + "(+1)", "gyp", 1), second);
            EXPECT_EQ(called(), query + "<" + second + ">" + query + "<" + first +
                                    "><destroy><file>" + server + "<" + first + ">" + query + "<" +
                                    second + ">");
            const std::string onServer = "/.:/kots/gyp/srv/" + base;
            EXPECT_EQ(resolve(onServer + "(0)", "wka"), generation(onServer, 2));
            EXPECT_EQ(resolve(base + "(0)", "kpn"), "-"); // it is the one that is not there
            EXPECT_EQ(resolve(base + "(1)", "kpn"), first);
            called();
            EXPECT_EQ(resolve(base + "(+1)", "kpn", 1), generation(base, 10));
            EXPECT_NE(called().find("<drop><table><" + first + ">"), std::string::npos);
            EXPECT_FALSE(fs::exists("X"));
        },
        {{"KOTS_TK_GYP_SERVER", "/.:/kots/gyp/srv"}, {"KPNINSTANCE", "inst"}, {"KPNDBDFT", "db"}},
        directory);
    EXPECT_EQ(child.status, 0) << child.out;
    EXPECT_EQ(child.err, "");
}

// Every one of many writers, in threads and processes, gets a number of its own.
TEST(Groups, ServeOneWriterAtATime) {
    expectInDirectory("", [] {
        constexpr int kEach = 20;
        constexpr uint32_t kAll = 4 * kEach;
        write(kPay, makeBlock(1000, {}));
        const auto work = [] {
            for (int i = 0; i < kEach; ++i) {
                const std::string file = resolve("PAY(+1)", "sys", 1);
                const int made = open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600);
                EXPECT_GE(made, 0) << file;
                close(made);
            }
        };
        const pid_t other = fork();
        std::thread thread(work);
        work();
        thread.join();
        if (other == 0) {
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        int status = -1;
        waitpid(other, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(entriesOf(kPay).size(), kAll);
        EXPECT_EQ(read(kPay)[kLast], kAll);
    });
}

// A process that locks as it always was done is waited for, and what it wrote is seen; so is a file
// that took the catalogue's place meanwhile.
TEST(Groups, WaitForOthers) {
    expectInDirectory("", [] {
        for (const bool replaces : {false, true}) {
            make("PAY", makeBlock(255, {1}));
            const int file = open(kPay.c_str(), O_RDWR);
            struct flock range {};
            range.l_type = F_WRLCK;
            range.l_len = 4096;
            EXPECT_EQ(fcntl(file, F_SETLK, &range), 0);
            std::thread waiting([] { EXPECT_EQ(resolve("PAY(+1)", "sys", 1), "PAY.g0008v00"); });
            usleep(100000);
            const Block changed = makeBlock(255, {1, 7});
            kit::writeFile("PAY.g0007v00", "");
            if (replaces) {
                write("other", changed);
                fs::rename("other", kPay);
            } else {
                EXPECT_EQ(pwrite(file, changed.data(), sizeof changed, 0), 4096);
            }
            close(file);
            waiting.join();
            EXPECT_EQ(entriesOf(kPay), (std::vector<uint32_t>{1, 7, 8}));
        }
    });
}

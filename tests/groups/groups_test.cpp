// Names as OPEN resolves them, over catalogues that the tests write and read byte by byte.
#include <fcntl.h>
#include <numeric>
#include <sys/stat.h>
#include <thread>

#include "group_kit.h"
#include "support/processes.h"

namespace {

using namespace group;

const std::string kPay = "PAY.catalogue";

class Groups : public testing::Test {
protected:
    Groups() { testing::internal::CaptureStderr(); }
    ~Groups() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), told); }
    const Place place;
    std::string told; // what must have come on standard error
};

using Resolved = std::pair<std::string, std::string>; // a name and its files

} // namespace

// clang-format off
TEST(Concatenation, PartsNamesAtColons) {
    const Resolved cases[] = {
        {"A:B:C", "+A B C"}, {"A::B:", "+A B"}, {"::A", "+A"}, {":", "+"}, {"A", "-"}, {"", "-"},
        {"/.:/kots/gyp/srv/F", "-"}, {"A:/.:/kots/gyp/srv/F:B", "+A /.:/kots/gyp/srv/F B"},
        {"/.:/.:/A:/.:", "+/.:/.:/A /."}, {"/.:/:A", "+/.:/ A"},
    };
    // clang-format on
    for (const auto &[name, files] : cases) {
        EXPECT_EQ(resolve(name, "psx"), files) << name;
    }
    std::string names(511, 'A');
    for (std::size_t at = 1; at < names.size(); at += 2) {
        names[at] = ':';
    }
    EXPECT_EQ(resolve(names + "::").size(), 1U + 256 + 255);
    EXPECT_EQ(resolve(names + ":A"), "!");
    EXPECT_EQ(_zor_Concat_Next(nullptr), nullptr);
    _zor_Concat_Free(nullptr);
}

TEST_F(Groups, ResolveReferences) {
    make("PAY", makeBlock(255, {1, 2, 3}));
    make("NEW", makeBlock(255, {}));
    fs::create_directory("D");
    make("D/PAY", makeBlock(255, {2, 5}));
    const std::string all = "PAY.g0003v00 PAY.g0002v00 PAY.g0001v00";
    // clang-format off
    std::vector<Resolved> cases = {
        {"PAY", "+" + all}, {"PAY(*)", "+" + all}, {"PAY(0)", "PAY.g0003v00"},
        {"PAY(+0)", "PAY.g0003v00"}, {"PAY(-1)", "PAY.g0002v00"}, {"PAY(1)", "PAY.g0002v00"},
        {"PAY(2)", "PAY.g0001v00"}, {"PAY( -1)", "PAY.g0002v00"}, {"PAY.g0002v00", "PAY.g0002v00"}, {"NEW", "+"},
        {"D/PAY(1)", "D/PAY.g0002v00"}, {"A:PAY(-1)", "+A PAY.g0002v00"},
        {"PAY:A:PAY(*):NEW:NONE(1)", "+" + all + " A " + all + " NONE(1)"},
    };
    // clang-format on
    for (const char *plain :
         {"PAY(3)", "PAY(-3)", "PAY(+1)", "PAY(12345)", "PAY(99999999999)", "PAY()", "PAY(1x)",
          "PAY)", "(0)", "PAY.g0007v00", "PAY.g0000v00", "PAY.G0002V00", ".g0002v00", "NEW(0)"}) {
        cases.emplace_back(plain, "-");
    }
    for (const char *code : {"wka", "SYS", "lsq", "psx", "???"}) {
        for (const auto &[name, files] : cases) {
            EXPECT_EQ(resolve(name, code), files) << name << " " << code;
        }
    }
    fs::remove("PAY.g0002v00");
    EXPECT_EQ(resolve("PAY:A"), "+PAY.g0003v00 A"); // a gap ends the walk
    EXPECT_EQ(read(kPay), makeBlock(255, {1, 2, 3}));
}

// What a catalogue and its files are after one new generation.
TEST_F(Groups, TakeNewGenerations) {
    const struct {
        Block before;
        const char *reference;
        Entries after;
        std::string files; // the numbers
    } cases[] = {
        {makeBlock(3, {}), "PAY(+1)", {1}, "1 "},
        {makeBlock(9, {7}), "PAY(+9999)", {7}, "7 "},
        {makeBlock(3, {1}), "PAY(+2)", {1, 3}, "1 3 "},
        {makeBlock(3, {1, 2, 3}), "PAY(+1)", {2, 3, 4}, "2 3 4 "},
        {makeBlock(1, {1, 2, 3}), "PAY(+1)", {4}, "4 "},
        {makeBlock(1, {1, 2}, 0), "PAY(+1)", {3}, "1 2 3 "},
        {makeBlock(3, {1, 2, 3}, 3), "PAY(+1)", {4}, "4 "},
        {makeBlock(2, {1, 2, 3}, 2, 7), "PAY(+1)", {1, 2, 3, 4}, "1 2 3 4 "},
        {makeBlock(9, {9998, 9999}), "PAY(+1)", {9998, 9999, 0x8001}, "1 9998 9999 "},
        {makeBlock(2, {9998, 9999}, 3), "PAY(+1)", {1}, "1 "},
        {makeBlock(9, {0xFFFF0002, 0xFFFFA70F}), "PAY(+1)", {2, 9999, 0x8001}, "1 2 9999 "},
        {makeBlock(9, {0x8001}), "PAY.g9998v00", {9998, 0x8001}, "1 9998 "},
        {makeBlock(9, {1, 2}), "PAY.g9998v00", {9998, 0x8001, 0x8002}, "1 2 9998 "},
        {makeBlock(9, {1, 3}), "PAY.g0002v00", {1, 2, 3}, "1 2 3 "},
        {makeBlock(2, {1, 2}), "PAY(0)", {1, 2}, "1 2 "},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(&each - cases);
        make("PAY", each.before);
        kit::writeFile(resolve(each.reference, "wka", 1), "");
        Block after =
            makeBlock(each.before[kLimit], each.after, each.before[kFlags], each.before[kDays]);
        after[kFlags] |= entriesOf(kPay) == each.after && after == each.before ? 0 : 0x03000000;
        EXPECT_EQ(read(kPay), after);
        std::string files;
        for (uint32_t number = 1; number < 10000; ++number) {
            files += fs::remove(generation("PAY", number)) ? std::to_string(number) + " " : "";
        }
        EXPECT_EQ(files, each.files);
    }
}

TEST_F(Groups, LoseOldAndMissingGenerations) {
    make("PAY", makeBlock(3, {1, 2, 3, 4, 5}, 2, 7));
    fs::remove("PAY.g0004v00");
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time("PAY.g0001v00", now - std::chrono::hours(8 * 24));
    fs::last_write_time("PAY.g0002v00", now - std::chrono::hours(6 * 24));
    EXPECT_EQ(resolve("PAY(+1)", "sys", 1), "PAY.g0006v00");
    EXPECT_EQ(entriesOf(kPay), (Entries{2, 3, 5, 6}));
    EXPECT_FALSE(fs::exists("PAY.g0001v00"));
    Block odd = makeBlock(9, {0x8001});
    odd[kEra] |= 0x7FFF; // bits of a number, which are none of an era
    make("ODD", odd);
    EXPECT_EQ(resolve("ODD(+1)", "sys", 1), "ODD.g0002v00");
    EXPECT_EQ(entriesOf("ODD.catalogue"), (Entries{0x8001, 0x8002}));
}

// A group that is fit for use comes first: nothing of it must serve the next one.
TEST_F(Groups, RefuseWhatIsNoCatalogue) {
    told = "Error: GDG catalogue version unkown!\n";
    make("GOOD", makeBlock(255, {3}));
    kit::writeFile("PAY.g0003v00", "");
    const std::pair<std::size_t, uint32_t> cases[] = {{kMagic, 0},    {kVersion, 2}, {kVersion, 0},
                                                      {kCount, 1001}, {kCount, ~0U}, {kLast, 10000},
                                                      {kLimit, 0},    {kLimit, 1001}};
    for (const auto &[word, value] : cases) {
        Block block = makeBlock(255, {1, 2, 3});
        block[word] = value;
        write(kPay, block);
        EXPECT_EQ(resolve("GOOD(0):PAY(0)"), "+GOOD.g0003v00 PAY(0)") << word;
        EXPECT_EQ(read(kPay), block);
    }
    write(kPay, makeBlock(255, {1, 2, 3}));
    for (const std::size_t length : {4097U, 4095U, 40U, 0U}) {
        fs::resize_file(kPay, length);
        EXPECT_EQ(resolve("GOOD:PAY"), "+GOOD.g0003v00 PAY");
    }
}

TEST_F(Groups, TellWhatIsWrong) {
    told = "Info: Endian swapped!\n"
           "Error: GDG catalogue ./DIR.catalogue is not regular.\n"
           "Error: GDG_stat:stat(PAY.catalogue/X.catalogue) - 20 Not a directory\n"
           "Error: GDS file PAY.g0002v00 is not regular.\n"
           "Error: Relative access exceeds the entries allocated for GDG ALL\n";
    Block block = makeBlock(255, {1, 2, 3});
    make("PAY", block);
    Block swapped = block;
    std::transform(block.begin() + 1, block.end(), swapped.begin() + 1,
                   [](uint32_t word) { return __builtin_bswap32(word); });
    write(kPay, swapped);
    block[kFlags] |= 0x03000000;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(resolve("PAY(-1)"), "PAY.g0002v00");
        EXPECT_EQ(read(kPay), block);
    }
    fs::create_directory("DIR.catalogue");
    EXPECT_EQ(resolve("DIR(0)"), "-");
    EXPECT_EQ(resolve("PAY.catalogue/X"), "-");
    fs::remove("PAY.g0002v00");
    fs::create_directory("PAY.g0002v00");
    EXPECT_EQ(resolve("PAY(1)"), "-");
    Entries all(1000);
    std::iota(all.begin(), all.end(), 1U);
    make("ALL", makeBlock(1000, all, 2, 1));
    EXPECT_EQ(resolve("ALL(+1)", "sys", 1), "-");
    EXPECT_EQ(entriesOf("ALL.catalogue"), all);
}

// A name that is too long for its catalogue is a plain one; one byte less is a group.
TEST_F(Groups, EndAtTheLongestName) {
    const std::string directory = std::string(250, 'd') + "/";
    const std::string path = directory + directory + directory + directory;
    fs::create_directories(path);
    for (std::size_t length = 1010; length < 1030; ++length) {
        const std::string name = path + std::string(length - path.size(), 'n');
        const std::string file = generation(name, 1);
        make(name, makeBlock(255, {1}));
        const bool fits = length <= 1013;
        EXPECT_EQ(resolve(name + "(0)"), fits ? file : "-") << length;
        EXPECT_EQ(resolve(name), fits ? "+" + file : "-");
        EXPECT_EQ(resolve(file), fits ? file : "-");
        EXPECT_EQ(resolve(name + ":" + name + "(+1)"),
                  "+" + (fits ? file : name) + " " + name + "(+1)");
    }
}

// An indexed file goes with its companions and parts, whatever a shell would make of its name.
TEST_F(Groups, DeleteIndexedFilesWhole) {
    const std::string base = "P* $(touch X)'";
    const std::string file = generation(base, 1);
    make(base, makeBlock(1, {1}));
    for (const std::string &name :
         {"." + file + ".DDMEA", "@" + file, ".@" + file + ".DDMEA", "." + file + ".DDMMAP",
          file + ".@", file + ".@1", "." + file + ".@2.DDMEA",
          std::string("PAY.g0001v00.@1")}) { // the last is another's
        kit::writeFile(name, "");
    }
    EXPECT_EQ(resolve(base + "(0)", "wka"), file);
    EXPECT_EQ(read(base + ".catalogue")[kSystem], 3U);
    EXPECT_EQ(resolve(base + "(+1)", "bni", 1), generation(base, 2));
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 2);
}

// Other products' programs get the names as they are.
TEST_F(Groups, AskOtherProducts) {
    for (const char *setting : {"KOTS_TK_GYP_SERVER=/.:/kots/gyp/srv", "KPNINSTANCE=inst",
                                "KPNDBDFT=db", "gdg_home=home", "PATH=.:/usr/bin:/bin"}) {
        putenv(const_cast<char *>(setting));
    }
    for (const char *program : {"gypadmin", "kpn"}) {
        kit::writeFile(program, "#!/bin/sh\nprintf '<%s>' \"$@\" >>log\necho noise >&2\n"
                                "case \"$*\" in *0009*) exit 1; esac\n");
        chmod(program, 0755);
    }
    const std::string base = "S.a'\"$(touch X);`touch X`\n b";
    fs::create_directories("home/gyp/srv");
    fs::create_directories("home/kpn/inst/db");
    write("home/gyp/srv/" + base + ".catalogue", makeBlock(1, {1}));
    write("home/kpn/inst/db/" + base + ".catalogue", makeBlock(1, {1, 9}));
    const std::string first = generation(base, 1);
    const std::string server = "<file><-server></.:/kots/gyp/srv><";
    EXPECT_EQ(resolve(base + "(+1)", "gyp", 1), generation(base, 2));
    EXPECT_EQ(kit::readFile("log"), "<query>" + server + generation(base, 2) + "><query>" + server +
                                        first + "><destroy>" + server + first + ">");
    const std::string onServer = "/.:/kots/gyp/srv/" + base;
    EXPECT_EQ(resolve(onServer + "(0)", "wka"), generation(onServer, 2));
    EXPECT_EQ(resolve(base + "(0)", "kpn"), "-"); // it is the one that is not there
    EXPECT_EQ(resolve(base + "(1)", "kpn"), first);
    EXPECT_EQ(resolve(base + "(+1)", "kpn", 1), generation(base, 10));
    EXPECT_NE(kit::readFile("log").find("<drop><table><" + first + ">"), std::string::npos);
    EXPECT_FALSE(fs::exists("X"));
}

// Every one of many writers, in threads and processes, gets a number of its own.
TEST_F(Groups, ServeOneWriterAtATime) {
    constexpr int kEach = 20;
    write(kPay, makeBlock(1000, {}));
    const auto work = [] {
        for (int i = 0; i < kEach; ++i) {
            EXPECT_TRUE(fs::create_directory(resolve("PAY(+1)", "sys", 1) + ".mine"));
        }
    };
    const auto workTwice = [&] {
        std::thread thread(work);
        work();
        thread.join();
    };
    const pid_t other = kit::startProcess(workTwice);
    workTwice();
    EXPECT_EQ(kit::statusOf(other), 0);
    EXPECT_EQ(entriesOf(kPay).size(), 4U * kEach);
}

// A process that locks as it always was done is waited for, and what it wrote is seen; so is a file
// that took the catalogue's place meanwhile.
TEST_F(Groups, WaitForOthers) {
    for (const bool replaces : {false, true}) {
        make("PAY", makeBlock(255, {1}));
        const int file = open(kPay.c_str(), O_RDWR);
        EXPECT_EQ(lockf(file, F_LOCK, 4096), 0);
        std::thread waiting([] { EXPECT_EQ(resolve("PAY(+1)", "sys", 1), "PAY.g0008v00"); });
        usleep(100000);
        const Block changed = makeBlock(255, {1, 7});
        kit::writeFile("PAY.g0007v00", "");
        write(replaces ? "other" : kPay, changed);
        fs::rename(replaces ? "other" : kPay, kPay);
        close(file);
        waiting.join();
        EXPECT_EQ(entriesOf(kPay), (Entries{1, 7, 8}));
    }
}

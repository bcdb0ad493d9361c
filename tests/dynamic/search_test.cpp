// Where CALL finds a program, what it takes for its entry, and what it says when there is none.
#include <cstdlib>
#include <dlfcn.h>
#include <sstream>
#include <sys/resource.h>

#include "calls.h"
#include "support/failure_kit.h"

namespace {

// CALL of the program that the environment names, ON EXCEPTION: shows the file and the symbol.
const auto callNamed = [] {
    int32_t exception = 5;
    const uint32_t flags = *getenv("FOLDED") == '1' ? PCB_UPPER_CASE_NAMES : 0;
    const FunctionDescriptor *target = calls::find(getenv("CALLED"), exception, flags);
    Dl_info place{};
    if (target != nullptr) {
        dladdr(target->entry, &place);
        EXPECT_EQ(target->reserved4, 0U);
        printf("%s %s", place.dli_fname, place.dli_sname);
    }
    printf("%s", exception == 5 ? "" : exception == 6 ? "exception" : "?");
};

// The lines of the log that tell of a load.
std::string loadLines(const std::string &log) {
    std::istringstream lines(log);
    std::string line;
    std::string result;
    while (std::getline(lines, line)) {
        if (line.starts_with("_zor_cpm: ") || line.starts_with("CPM: ")) {
            result += line + "\n";
        }
    }
    return kit::shape(result);
}

struct Search {
    const char *path;
    calls::Copies files;
    const char *found;
    const char *called = "SUB";
    bool inMonitor = false;
    const char *log = "";
    const char *libraryPath = "";
};

const std::string kLong(200, 'N');
const std::string kLongFile = std::string(160, 'N') + ".so";

} // namespace

TEST(Search, FollowsThePath) {
    const std::string longFound = "a/" + kLongFile + " main";
    const Search searches[] = {
        {"a:b", {{"SUB", "b/SUB.so"}}, "b/SUB.so SUB"},
        {"a:b", {{"SUB", "b/SUB"}, {"SUB", "a/SUB.so"}}, "a/SUB.so SUB"},
        {"a:b", {{"SUB", "a/SUB.so"}, {"SUB", "a/SUB"}}, "a/SUB SUB"},
        {"", {{"SUB", "SUB.so"}}, "./SUB.so SUB"},
        {"a::b:", {{"SUB", "b/SUB"}}, "b/SUB SUB"},
        {":b", {{"SUB", "b/SUB"}, {"SUB", "SUB"}}, "b/SUB SUB"},
        {"a", {{"SUB", "l/SUB"}}, "l/SUB SUB", "SUB", false, "", "l"},
        {"a",
         {{"SUB", "a/dir/SUB"}},
         "",
         "dir/SUB",
         false,
         "_zor_cpm: Failed to load dir/SUB  load @  entry (nil)\n"},
        {"a", {{"SUB", "a/SUB.so"}}, "a/SUB.so SUB", "SUB  "},
        {"a", {{"BYMAIN", "a/" + kLongFile}}, longFound.c_str(), kLong.c_str()},
        {"a:b",
         {{"SUB", "a/SUB.qbxcob"}},
         "",
         "SUB",
         false,
         "_zor_cpm: Failed to locate SUB in default search\n"
         "CPM: dlopen(SUB) error: 0 SUB: cannot open shared object file: No such file or "
         "directory\n"},
        // The monitor's own endings come first, in all directories.
        {"a:b", {{"SUB", "a/SUB"}, {"SUB", "b/SUB.qbxcob"}}, "b/SUB.qbxcob SUB", "SUB", true},
        {"a:b", {{"SUB", "a/SUB.so"}, {"SUB", "b/SUB.qbxcob"}}, "a/SUB.so SUB", "SUB", true},
        {"a:b", {{"SUB", "a/SUB.so"}, {"SUB", "a/SUB.qbxcob"}}, "a/SUB.qbxcob SUB", "SUB", true},
        {"a:b", {{"SUB", "b/SUB"}}, "b/SUB SUB", "SUB", true},
        {"a",
         {{"SUB", "l/SUB.qbxcob"}, {"SUB", "l/SUB"}},
         "l/SUB.qbxcob SUB",
         "SUB",
         true,
         "",
         "l"},
        // Entries.
        {"a", {{"BYMAIN", "a/SUB"}}, "a/SUB main"},
        {"a", {{"BYSTART", "a/SUB"}}, "a/SUB _start"},
        {"a", {{"INMONITOR", "a/SUB"}}, "a/SUB _zor_cobol_main", "SUB", true},
        {"a",
         {{"INMONITOR", "a/SUB"}},
         "",
         "SUB",
         false,
         "_zor_cpm: Failed to load SUB  load @  entry (nil)\n"},
    };
    for (const Search &search : searches) {
        const calls::Programs programs(search.files);
        const auto child =
            programs.run(callNamed, {{"COBPATH", search.path},
                                     {"CALLED", search.called},
                                     {"FOLDED", "0"},
                                     {"LD_LIBRARY_PATH", search.libraryPath},
                                     {"__COBOL_KOTS_CONTAINER", search.inMonitor ? "1" : ""},
                                     {"__ZORDEBUG", "1"}});
        const std::string where = search.called + (" in " + std::string(search.path));
        EXPECT_EQ(child.status, 0) << where;
        EXPECT_EQ(child.out, *search.found == '\0' ? "exception" : search.found) << where;
        EXPECT_EQ(loadLines(child.err), search.log) << where;
    }
}

TEST(Search, StopsAtAFileThatIsNoGood) {
    const struct {
        void (*spoil)(const std::string &file);
        const char *reason; // null: it is passed over
    } cases[] = {
        {[](const std::string &file) { kit::writeFile(file, "#!/bin/sh\n"); }, "file too short"},
        {[](const std::string &file) { kit::writeFile(file, std::string(5000, 'x')); },
         "invalid ELF header"},
        {[](const std::string &file) {
             std::string bytes = kit::readFile(file);
             bytes[4] = 2; // ELFCLASS64
             kit::writeFile(file, bytes);
         },
         "wrong ELF class: ELFCLASS64"},
        {[](const std::string &file) {
             std::filesystem::permissions(file, std::filesystem::perms::owner_read);
         },
         nullptr},
        {[](const std::string &file) { std::filesystem::remove(file); }, nullptr},
    };
    for (const auto &[spoil, reason] : cases) {
        const calls::Programs programs(calls::Copies{{"SUB", "a/SUB"}, {"SUB", "b/SUB"}});
        spoil(programs.directory().file("a/SUB"));
        const auto child = programs.run(
            callNamed,
            {{"COBPATH", "a:b"}, {"CALLED", "sub"}, {"FOLDED", "1"}, {"__ZORDEBUG", "1"}});
        EXPECT_EQ(child.out, reason == nullptr ? "b/SUB SUB" : "exception");
        EXPECT_EQ(loadLines(child.err), reason == nullptr
                                            ? ""
                                            : "_zor_cpm: Failed to locate SUB in COBPATH (a:b)\n"
                                              "CPM: dlopen(a/SUB) error: 0 a/SUB: " +
                                                  std::string(reason) + "\n");
    }
}

TEST(Search, EndsTheRunByMessage96) {
    const auto failedCall = [](const std::string &text) {
        return failure::kTraceback + "ZOR096S  CALL of " + text + "\n" + failure::kClosing + "\n";
    };
    kit::expectChildren({
        {"not found",
         {.err = failedCall("program NOSUCH failed: it was not found along COBPATH, could not be "
                            "loaded, or has no entry point. Check COBPATH and the file's "
                            "permissions."),
          .status = failure::kAborted},
         kit::inProgram([] { calls::call("NOSUCH  "); })},
        {"empty",
         {.err = failedCall("a program failed: its name is empty."), .status = failure::kAborted},
         kit::inProgram([] { calls::call(std::string("  \0 ", 4)); })},
        {"empty, with ON EXCEPTION", {.out = "8"}, kit::inProgram([] {
             int32_t exception = 7;
             EXPECT_EQ(calls::find("", exception), nullptr);
             printf("%d", exception);
         })},
    });
}

// Runs a main program in a process that has room for two large programs.
template <class Body> kit::ChildResult runInTwoRooms(Body, const char *cache) {
    const calls::Programs programs(calls::Copies{{"LARGE", "PROG001"},
                                                 {"LARGE", "PROG002"},
                                                 {"LARGE", "PROG003"},
                                                 {"LARGE", "PROG004"},
                                                 {"LARGE", "PROG005"}});
    return programs.run(
        [] {
            const rlimit limit{900'000'000, 900'000'000};
            setrlimit(RLIMIT_AS, &limit);
            Body{}();
        },
        {{"COBOL_CPM_CACHE", cache}});
}

void showCallsOf(const std::vector<const char *> &names) {
    for (const char *name : names) {
        printf("%d", calls::callsOf(name));
    }
}

// The cached program that was called longest ago makes room, but not while it is active; what was
// unloaded does not come back within its run unit.
TEST(Search, MakesRoomInTheCache) {
    if (ZOR_UNDER_SANITIZER != 0) {
        GTEST_SKIP() << "the sanitizer takes the address space for itself";
    }
    const auto cached = runInTwoRooms(
        [] {
            showCallsOf({"PROG001", "PROG002", "PROG003", "PROG001"});
            printf(" %d", calls::callsOf("PROG002", [] {
                       showCallsOf({"PROG004", "PROG003", "PROG005", "PROG004"});
                   }));
        },
        "1");
    EXPECT_EQ(cached.out, "11101010 2");
    EXPECT_EQ(cached.err, "");
    EXPECT_EQ(cached.status, 0);

    const auto notCached = runInTwoRooms(
        [] {
            showCallsOf({"PROG001", "PROG002", "PROG003", "PROG001"});
            fflush(stdout);
            calls::call("PROG003");
        },
        "0");
    EXPECT_EQ(notCached.out, "1102");
    EXPECT_EQ(notCached.status, failure::kAborted);
    EXPECT_NE(notCached.err.find("there is not enough storage to load it"), std::string::npos);
}

// Where CALL finds a program, what it takes for its entry, and what it says when there is none.
#include <dlfcn.h>
#include <sys/resource.h>

#include "calls.h"

namespace {

enum Place : uint8_t { outside, inMonitor };

// Runs a CALL ON EXCEPTION, of a caller that folds names if it is of "sub": the file and the symbol
// that it finds, and the lines of the log that tell of the load.
std::string search(const calls::Programs &programs, const std::string &path,
                   const std::string &called, Place place = outside, const char *libraryPath = "") {
    const auto child = programs.run(
        [] {
            const std::string name = getenv("CALLED");
            int32_t exception = 5;
            const auto *target =
                calls::find(name, exception, name == "sub" ? PCB_UPPER_CASE_NAMES : 0);
            Dl_info found{};
            if (target != nullptr) {
                dladdr(target->entry, &found);
                EXPECT_EQ(target->reserved4, 0U);
                printf("%s %s", found.dli_fname, found.dli_sname);
            }
            printf("%s", exception == 5 ? "" : exception == 6 ? "exception " : "?");
        },
        {{"COBPATH", path},
         {"CALLED", called},
         {"LD_LIBRARY_PATH", libraryPath},
         {"__COBOL_KOTS_CONTAINER", place == inMonitor ? "1" : ""},
         {"__ZORDEBUG", "1"}});
    std::istringstream log(child.err);
    std::string result = child.out;
    for (std::string line; std::getline(log, line);) {
        const bool tells = line.starts_with("_zor_cpm: ") || line.starts_with("CPM: ");
        result += tells ? line + "\n" : "";
    }
    EXPECT_EQ(child.status, 0) << result;
    return kit::shape(result);
}

} // namespace

TEST(Search, FollowsThePath) {
    const std::string longName(160, 'N');
    std::string tooLong = "a";
    tooLong.resize(4094, '/'); // which is a folder as long as no name follows
    const struct {
        std::string path;
        std::string files, found, called = "SUB";
        Place place = outside;
        const char *libraryPath = "";
    } rows[] = {
        {"a:b", "b/SUB.so", "b/SUB.so SUB"},
        {"a:b", "b/SUB a/SUB.so", "a/SUB.so SUB"},
        {"a:b", "a/SUB.so a/SUB", "a/SUB SUB"},
        {"", "SUB.so", "./SUB.so SUB"},
        {"a::b:", "b/SUB", "b/SUB SUB"},
        {":b", "b/SUB SUB", "b/SUB SUB"},
        {tooLong + ":b", "a/SUB b/SUB", "b/SUB SUB"},
        {"a", "l/SUB", "l/SUB SUB", "SUB", outside, "l"},
        {"a", "a/dir/SUB", "exception _zor_cpm: Failed to load dir/SUB  load @  entry (nil)\n",
         "dir/SUB"},
        {"a", "a/SUB.so", "a/SUB.so SUB", "SUB  "},
        {"a", "BYMAIN=a/" + longName, "a/" + longName + " main", longName + "N"},
        {"a:b", "a/SUB.qbxcob",
         "exception _zor_cpm: Failed to locate SUB in default search\nCPM: dlopen(SUB) error: 0 "
         "SUB: cannot open shared object file: No such file or directory\n"},
        {"a:b", "a/SUB b/SUB.qbxcob", "b/SUB.qbxcob SUB", "SUB", inMonitor},
        {"a:b", "a/SUB.so b/SUB.qbxcob", "a/SUB.so SUB", "SUB", inMonitor},
        {"a:b", "a/SUB.so a/SUB.qbxcob", "a/SUB.qbxcob SUB", "SUB", inMonitor},
        {"a:b", "b/SUB", "b/SUB SUB", "SUB", inMonitor},
        {"a", "l/SUB.qbxcob l/SUB", "l/SUB.qbxcob SUB", "SUB", inMonitor, "l"},
        {"a", "BYMAIN=a/SUB", "a/SUB main"},
        {"a", "BYSTART=a/SUB", "a/SUB _start"},
        {"a", "INMONITOR=a/SUB", "a/SUB _zor_cobol_main", "SUB", inMonitor},
        {"a", "INMONITOR=a/SUB", "exception _zor_cpm: Failed to load SUB  load @  entry (nil)\n"}};
    for (const auto &[path, files, found, called, place, libraryPath] : rows) {
        EXPECT_EQ(search(calls::Programs(files), path, called, place, libraryPath), found)
            << path << " has " << files;
    }
}

TEST(Search, StopsAtAFileThatIsNoGood) {
    std::string wide = kit::readFile(TEST_PROGRAMS "/SUB.so");
    wide[4] = 2; // ELFCLASS64
    const std::string cases[][2] = {{"#!/bin/sh\n", "file too short"},
                                    {std::string(5000, 'x'), "invalid ELF header"},
                                    {wide, "wrong ELF class: ELFCLASS64"}};
    const calls::Programs programs("a/SUB b/SUB");
    const std::string file = programs.directory.file("a/SUB");
    for (const auto &[content, reason] : cases) {
        kit::writeFile(file, content);
        EXPECT_EQ(search(programs, "a:b", "sub"),
                  "exception _zor_cpm: Failed to locate SUB in COBPATH (a:b)\n"
                  "CPM: dlopen(a/SUB) error: 0 a/SUB: " +
                      reason + "\n");
    }
    std::filesystem::permissions(file, std::filesystem::perms::owner_read); // is passed over
    EXPECT_EQ(search(programs, "a:b", "sub"), "b/SUB SUB");
}

TEST(Search, EndsTheRunByMessage96) {
    kit::expectChildren({
        {"not found",
         failure::endBy("ZOR096S  CALL of program NOSUCH failed: it was not found along COBPATH, "
                        "could not be loaded, or has no entry point. Check COBPATH and the file's "
                        "permissions."),
         kit::inProgram([] { calls::call("NOSUCH  "); })},
        {"empty", failure::endBy("ZOR096S  CALL of a program failed: its name is empty."),
         kit::inProgram([] { calls::call(std::string("  \0 ", 4)); })},
        {"empty, with ON EXCEPTION", {.out = "0 "}, kit::inProgram([] { calls::showCalls({""}); })},
    });
}

// The cached program that was called longest ago makes room for a third large one, but not while it
// or one in it is active; what was unloaded does not come back within its run unit.
TEST(Search, MakesRoomInTheCache) {
    if (ZOR_UNDER_SANITIZER != 0) {
        GTEST_SKIP() << "the sanitizer takes the address space for itself";
    }
    for (const auto &[cache, expected] : {std::pair{"1", kit::Expected{.out = "11210 1010 0 41 2"}},
                                          {"0",
                                           {.out = "11202 ",
                                           .errHolds = "there is not enough storage to load it",
                                           .status = failure::kAborted}}}) {
        kit::Expected there = expected;
        there.environment = {{"COBOL_CPM_CACHE", cache}};
        calls::expectRun("LARGE=P1 LARGE=P2 LARGE=P3 LARGE=P4 HUGE=HUGE LARGE=P6", there, [] {
            const rlimit limit{900'000'000, 900'000'000};
            setrlimit(RLIMIT_AS, &limit);
            calls::showCalls({"P2", "P1", "P2", "P3", "P1"});
            fflush(stdout);
            calls::call("P3"); // ends the run without the cache
            static ProgramData *huge;
            calls::call("P2", [] {
                calls::showCalls({"P4", "P3", "HUGE", "P4"});
                huge = calls::call("HUGE", [] { calls::showCalls({"P6"}); });
            });
            huge->ipcb[1].ent = 1;
            calls::showCalls({"P2", "P6"});
            huge->ipcb[1].ent = 0;
            printf("%d", huge->calls);
        });
    }
}

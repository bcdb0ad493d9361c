// The operator's program for generation data groups: one verb, its options, and the groups.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>

#include "file/groups/catalogue.h"
#include "file/groups/operations.h"

namespace {

using namespace zor::groups;

constexpr int kExitUsage = 2;

constexpr char kHelp[] =
    "Usage: gdgmgr VERB [OPTION]... NAME...\n"
    "Keeps generation data groups: named series of files, each a version of one data set.\n"
    "\n"
    "Verbs:\n"
    "  create     make a group without generations\n"
    "  alter      change the choices of a group; what exceeds a lower limit goes\n"
    "  list       show a group and its generations\n"
    "  maintain   drop generations whose files are gone, and apply the limit\n"
    "  rebuild    make the entries anew from the files that are there\n"
    "  remove     take generations out: NAME(0), NAME(-1), NAME.g0001v00\n"
    "  delete     delete a group\n"
    "\n"
    "Options of create and alter:\n"
    "  -L, --limit=N       most generations kept, 1 to 1000 (255)\n"
    "  -D, --days=N        keep generations younger than N days beyond the limit (0: none)\n"
    "  -E, --empty         a full group gives up all its generations\n"
    "  -e, --no-empty      a full group gives up its oldest generation (so by default)\n"
    "  -S, --scratch       delete the files of generations that leave (so by default)\n"
    "  -s, --no-scratch    keep them\n"
    "Options of all verbs:\n"
    "  -F, --file-system=CODE   sys, lsq, wka, bni, gyp, kpn; by default found by a look\n"
    "  -h, --help               show this and leave\n"
    "\n"
    "Exit status: 0 all done, 1 something failed, 2 the command line is not understood.\n";

// clang-format off
constexpr option kLongOptions[] = {
    {"limit", required_argument, nullptr, 'L'},
    {"days", required_argument, nullptr, 'D'},
    {"empty", no_argument, nullptr, 'E'},
    {"no-empty", no_argument, nullptr, 'e'},
    {"scratch", no_argument, nullptr, 'S'},
    {"no-scratch", no_argument, nullptr, 's'},
    {"file-system", required_argument, nullptr, 'F'},
    {"help", no_argument, nullptr, 'h'},
    {},
};
// clang-format on

struct Order {
    GroupChoices choices{-1, -1, -1, -1};
    const char *code = "";
    bool choosesAny = false;
};

struct Verb {
    const char *name;
    bool (*run)(const char *name, const Order &order);
    bool hasChoices;
};

constexpr Verb kVerbs[] = {
    {"create",
     [](const char *name, const Order &order) {
         return gdgCreate(name, order.choices, order.code);
     },
     true},
    {"alter",
     [](const char *name, const Order &order) { return gdgAlter(name, order.choices, order.code); },
     true},
    {"list", [](const char *name, const Order &order) { return gdgList(name, order.code); }, false},
    {"maintain", [](const char *name, const Order &order) { return gdgMaintain(name, order.code); },
     false},
    {"rebuild", [](const char *name, const Order &order) { return gdgRebuild(name, order.code); },
     false},
    {"remove", [](const char *name, const Order &order) { return gdgRemove(name, order.code); },
     false},
    {"delete", [](const char *name, const Order &order) { return gdgUnlink(name, order.code); },
     false},
};

int refuse(const char *what, const char *which) {
    fprintf(stderr, "gdgmgr: %s%s\nTry 'gdgmgr --help'.\n", what, which);
    return kExitUsage;
}

// -1 when it is no number of the range.
int32_t numberOf(const char *text, int32_t least, int32_t most) {
    constexpr int kDecimal = 10;
    char *end = nullptr;
    errno = 0;
    const long value = strtol(text, &end, kDecimal);
    const bool isNumber = errno == 0 && end != text && *end == '\0';
    return isNumber && value >= least && value <= most ? static_cast<int32_t>(value) : -1;
}

// 0, or the exit status.
int takeOption(Order &order, int letter) {
    GroupChoices &choices = order.choices;
    order.choosesAny = order.choosesAny || strchr("LDEeSs", letter) != nullptr;
    switch (letter) {
    case 'L':
        choices.limit = numberOf(optarg, 1, kMostGenerations);
        return choices.limit < 0 ? refuse("the limit is 1 to 1000, not ", optarg) : 0;
    case 'D':
        choices.days = numberOf(optarg, 0, INT32_MAX);
        return choices.days < 0 ? refuse("days are a number from 0, not ", optarg) : 0;
    case 'E':
    case 'e':
        choices.empty = letter == 'E' ? 1 : 0;
        return 0;
    case 'S':
    case 's':
        choices.scratch = letter == 'S' ? 1 : 0;
        return 0;
    case 'F':
        order.code = optarg;
        return strlen(optarg) == 3 && fileSystemOf(optarg) != FileSystem::unknown
                   ? 0
                   : refuse("no file system has the code ", optarg);
    default:
        return refuse("the options are not understood", "");
    }
}

const Verb *findVerb(const char *name) {
    for (const Verb &verb : kVerbs) {
        if (strcmp(verb.name, name) == 0) {
            return &verb;
        }
    }
    return nullptr;
}

int showHelp() {
    fputs(kHelp, stdout);
    return EXIT_SUCCESS;
}

int runAll(const Verb &verb, const Order &order, char **names) {
    int status = EXIT_SUCCESS;
    for (; *names != nullptr; ++names) {
        errno = 0;
        if (!verb.run(*names, order)) {
            const int code = errno;
            fprintf(stderr, "gdgmgr: %s %s failed%s%s\n", verb.name, *names, code == 0 ? "" : ": ",
                    code == 0 ? "" : strerror(code));
            status = EXIT_FAILURE;
        }
    }
    if (fflush(stdout) != 0) {
        fprintf(stderr, "gdgmgr: standard output: %s\n", strerror(errno));
        status = EXIT_FAILURE;
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    Order order;
    opterr = 0;
    for (int letter = 0;
         (letter = getopt_long(argc, argv, "L:D:EeSsF:h", kLongOptions, nullptr)) != -1;) {
        if (letter == 'h') {
            return showHelp();
        }
        if (const int status = takeOption(order, letter); status != 0) {
            return status;
        }
    }
    if (optind == argc) {
        return refuse("there is no verb", "");
    }
    const Verb *verb = findVerb(argv[optind]);
    if (verb == nullptr) {
        return refuse("there is no verb ", argv[optind]);
    }
    if (order.choosesAny && !verb->hasChoices) {
        return refuse("only create and alter take choices, not ", verb->name);
    }
    if (optind + 1 == argc) {
        return refuse("there is no name to ", verb->name);
    }
    return runAll(*verb, order, argv + optind + 1);
}

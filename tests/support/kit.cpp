#include "support/kit.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "display.h"
#include "messages.h"

namespace kit {
namespace {

constexpr const char *kChildOption = "--child=";
constexpr unsigned kChildSeconds = 60;

// Functions are named to the child by their distance from this one, which no loader changes.
char *const kBase = reinterpret_cast<char *>(&readFile);

[[noreturn]] void becomeChild(void (*body)(), const ChildOptions &options, int in, int out,
                              int err) {
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
#ifdef __SANITIZE_ADDRESS__
    // The library's own signal handling must meet the signals.
    setenv("ASAN_OPTIONS",
           "handle_segv=0:handle_sigfpe=0:handle_sigill=0:handle_sigbus=0:handle_abort=0:"
           "use_sigaltstack=0",
           1);
#endif
    setenv("LC_ALL", "C.UTF-8", 1);
    for (const auto &[name, value] : options.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) {
        _exit(126);
    }
    rlimit cores{};
    getrlimit(RLIMIT_CORE, &cores);
    cores.rlim_cur = options.coreFiles ? cores.rlim_max : 0;
    setrlimit(RLIMIT_CORE, &cores);
    const std::string argument =
        kChildOption + std::to_string(reinterpret_cast<char *>(body) - kBase);
    alarm(kChildSeconds);
    const char *program = options.program.empty() ? "/proc/self/exe" : options.program.c_str();
    execl(program, "child", argument.c_str(), nullptr);
    _exit(127);
}

// Reads a pipe until the last writer is gone.
std::string readAll(int descriptor) {
    std::string text = readFile("/dev/fd/" + std::to_string(descriptor));
    close(descriptor);
    return text;
}

} // namespace

ChildResult runChild(void (*body)(), const ChildOptions &options) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    ChildResult result;
    FILE *input = tmpfile();
    EXPECT_NE(input, nullptr);
    EXPECT_EQ(pipe(out.data()), 0);
    EXPECT_EQ(pipe(err.data()), 0);
    fwrite(options.input.data(), 1, options.input.size(), input);
    rewind(input);
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        becomeChild(body, options, fileno(input), out[1], err[1]);
    }
    close(out[1]);
    close(err[1]);
    fclose(input);
    std::thread errReader([&] { result.err = readAll(err[0]); });
    result.out = readAll(out[0]);
    errReader.join();
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}

std::string shape(const std::string &text) {
    static const std::regex frames("  Traceback:\n([^\n]*\\[0x[0-9a-f]+\\]\n)+"
                                   "    --- End of call chain ---\n");
    static const std::regex addresses("\\b0x[0-9a-f]{5,}\\b");
    static const std::regex pids("PID [0-9]+");
    const std::string shown = std::regex_replace(text, frames, "<traceback>\n");
    return std::regex_replace(std::regex_replace(shown, addresses, "@"), pids, "PID #");
}

void expectChild(const Expected &expected, void (*body)()) {
    const ChildResult child =
        runChild(body, {.environment = expected.environment, .directory = expected.directory});
    const std::string err = shape(child.err);
    EXPECT_EQ(child.out, expected.out);
    if (!expected.errMatches.empty()) {
        EXPECT_TRUE(std::regex_match(err, std::regex(expected.errMatches))) << child.err;
    } else if (expected.errHolds.empty()) {
        EXPECT_EQ(err, expected.err) << child.err;
    } else {
        EXPECT_NE(err.find(expected.errHolds), std::string::npos) << err;
    }
    EXPECT_EQ(child.status, expected.status);
}

void expectChildren(const std::vector<ChildCase> &cases) {
    for (const ChildCase &each : cases) {
        SCOPED_TRACE(each.name);
        expectChild(each.expected, each.body);
    }
}

Program::Program(const char *name, int nestedPrograms) {
    memcpy(pcb.level, "\5\1\1", sizeof pcb.level);
    pcb.ipcb = ipcb;
    pcb.name = name;
    pcb.namelen = static_cast<uint32_t>(strlen(name));
    pcb.century = PCB_NO_CENTURY_WINDOW;
    ipcb[0].nested = nestedPrograms;
    ipcb[0].entry = this;
}

int runMainProgram(Program &program, void (*body)()) {
    _zorPgmInit(&program.pcb);
    const int value = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (value == 0) {
        body();
    }
    _zorPgmTerm(&program.pcb);
    return value;
}

FCB openFile(FileOperation close) {
    FCB file{};
    memcpy(file.eyecatcher, "FCB", sizeof file.eyecatcher);
    file.curmode = FCB_INPUT;
    file.close = close;
    return file;
}

void giveFiles(std::vector<FCB *> files, IPCB *ipcb) {
    auto *kept = new std::vector<FCB *>(std::move(files)); // the unload may still close them
    ipcb = ipcb != nullptr ? ipcb : _zorProccom->runcom->main->ipcb;
    ipcb->fcbs = kept->data();
    ipcb->nfcbs = static_cast<int32_t>(kept->size());
}

void displayLine(uint8_t device, const std::vector<std::string> &texts) {
    std::vector<DisplayItem> items;
    for (const std::string &text : texts) {
        items.push_back({text.data(), static_cast<uint32_t>(text.size()), 0, DISPLAY_TEXT});
    }
    const DisplayControl control{static_cast<int32_t>(items.size()), device, 0, '.', 0};
    _zorcDisplay(&control, items.data());
}

std::string hex(const void *bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned byte = static_cast<const unsigned char *>(bytes)[i];
        text += {"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]};
    }
    return text;
}

TemporaryDirectory::TemporaryDirectory() {
    path_ = (std::filesystem::temp_directory_path() / "zortest.XXXXXX").string();
    EXPECT_NE(mkdtemp(path_.data()), nullptr) << strerror(errno);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::filesystem::remove_all(path_);
}

std::string readFile(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

void buildCatalog(const TemporaryDirectory &directory, const std::string &locale,
                  const std::string &source) {
    writeFile(directory.file("source.msg"), "$quote \"\n" + source);
    const std::string command = "cd " + directory.path() + " && mkdir -p " + locale +
                                " && gencat " + locale + "/cobol2run.cat source.msg";
    EXPECT_EQ(system(command.c_str()), 0);
}

void useCatalogAt(const std::string &path) {
    _zorWriteERRmsg(0, MESSAGE_CLOSE_CATALOG);
    setenv("NLSPATH", path.c_str(), 1);
    _zorWriteERRmsg(0, MESSAGE_OPEN_CATALOG);
}

} // namespace kit

#ifdef __SANITIZE_ADDRESS__
// Storage that runs out is tested; it gives null here as elsewhere.
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options() {
    return "allocator_may_return_null=1:detect_leaks=0";
}
#endif

int main(int argc, char **argv) {
    const std::size_t prefix = strlen(kit::kChildOption);
    if (argc == 2 && strncmp(argv[1], kit::kChildOption, prefix) == 0) {
        reinterpret_cast<void (*)()>(kit::kBase + strtol(argv[1] + prefix, nullptr, 10))();
        exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

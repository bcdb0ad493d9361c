#include "support/kit.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace kit {
namespace {

constexpr const char *kChildOption = "--child=";
constexpr unsigned kChildSeconds = 60;

// Functions are named to the child by their distance from this one, which no loader changes.
std::ptrdiff_t distanceOf(void (*body)()) {
    return reinterpret_cast<char *>(body) - reinterpret_cast<char *>(&readFile);
}

[[noreturn]] void becomeChild(void (*body)(), const ChildOptions &options, int in, int out,
                              int err) {
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    for (int descriptor = 3; descriptor < 64; ++descriptor) {
        close(descriptor);
    }
    for (const auto &[name, value] : options.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    if (!options.preload.empty()) {
        setenv("LD_PRELOAD", options.preload.c_str(), 1);
    }
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0) {
        _exit(126);
    }
    std::array<char, 32> argument{};
    snprintf(argument.data(), argument.size(), "%s%td", kChildOption, distanceOf(body));
    alarm(kChildSeconds);
    execl("/proc/self/exe", "child", argument.data(), nullptr);
    _exit(127);
}

// Reads both ends until the child closes them.
void drain(int out, int err, ChildResult &result) {
    std::array<pollfd, 2> ends{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    std::array<std::string *, 2> texts{&result.out, &result.err};
    int open = 2;
    while (open > 0) {
        if (poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR) {
            break;
        }
        for (std::size_t i = 0; i < ends.size(); ++i) {
            if (ends[i].fd < 0 || (ends[i].revents & (POLLIN | POLLHUP | POLLERR)) == 0) {
                continue;
            }
            std::array<char, 4096> buffer{};
            const ssize_t count = read(ends[i].fd, buffer.data(), buffer.size());
            if (count > 0) {
                texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
            } else if (count == 0) {
                ends[i].fd = -1;
                --open;
            }
        }
    }
}

} // namespace

ChildResult runChild(void (*body)(), const ChildOptions &options) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    ChildResult result;
    FILE *input = tmpfile();
    if (input == nullptr || pipe2(out.data(), O_CLOEXEC) != 0 ||
        pipe2(err.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe for the child: " << strerror(errno);
        return result;
    }
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
    drain(out[0], err[0], result);
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}

Program::Program(const char *name, int nestedPrograms) {
    const std::array<uint8_t, 3> level{5, 1, 1};
    memcpy(pcb.level, level.data(), level.size());
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

std::string pckd(const std::string &digits, unsigned count) {
    const bool negative = !digits.empty() && digits[0] == '-';
    std::string text = negative ? digits.substr(1) : digits;
    const std::size_t nibbles = (count / 2 + 1) * 2 - 1;
    text.insert(0, nibbles > text.size() ? nibbles - text.size() : 0, '0');
    text = text.substr(text.size() - nibbles);
    std::string bytes;
    for (std::size_t i = 0; i < nibbles; i += 2) {
        const int high = text[i] - '0';
        const int low = i + 1 < nibbles ? text[i + 1] - '0' : (negative ? 0xD : 0xC);
        bytes.push_back(static_cast<char>(high << 4 | low));
    }
    return bytes;
}

std::string znd(const std::string &digits, unsigned count) {
    const bool negative = !digits.empty() && digits[0] == '-';
    std::string text = negative ? digits.substr(1) : digits;
    text.insert(0, count > text.size() ? count - text.size() : 0, '0');
    text = text.substr(text.size() - count);
    if (negative) {
        text.back() = static_cast<char>(text.back() | 0x40);
    }
    return text;
}

std::string hex(const void *bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        std::array<char, 4> pair{};
        snprintf(pair.data(), pair.size(), "%02x", static_cast<const unsigned char *>(bytes)[i]);
        text += pair.data();
    }
    return text;
}

TemporaryDirectory::TemporaryDirectory() {
    path_ = (std::filesystem::temp_directory_path() / "zortest.XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) {
        ADD_FAILURE() << "no temporary directory: " << strerror(errno);
    }
}

TemporaryDirectory::~TemporaryDirectory() {
    std::filesystem::remove_all(path_);
}

std::string readFile(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

void writeFile(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
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
        auto *base = reinterpret_cast<char *>(&kit::readFile);
        reinterpret_cast<void (*)()>(base + strtol(argv[1] + prefix, nullptr, 10))();
        exit(0);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

// References resolved as OPEN does it, beside the plain calls on a file of 4096 bytes that each of
// them cannot do without.
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

#include "concat.h"
#include "file/groups/operations.h"
#include "support/bench.h"

namespace {

constexpr std::size_t kBytes = 4096;

// A group of three generations in the working directory, which the end takes away.
class Scene {
public:
    Scene() {
        char path[] = "groups.XXXXXX"; // not in a file system of storage: syncing is to be seen
        directory_ = mkdtemp(path);
        std::filesystem::current_path(directory_);
        zor::groups::gdgCreate("PAY", {3, -1, -1, 0}, "sys");
        for (int i = 0; i < 3; ++i) {
            resolve("PAY(+1)", 1);
        }
    }
    ~Scene() {
        std::filesystem::current_path("..");
        std::filesystem::remove_all(directory_);
    }
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;

    static void resolve(const char *name, int create) {
        int32_t concatenated = 0;
        void *list = _zor_Concat_Check(name, &concatenated, create, "sys");
        if (const char *file = _zor_Concat_Next(list); file != nullptr && create != 0) {
            std::ofstream(file).flush();
        }
        _zor_Concat_Free(list);
    }

private:
    std::string directory_;
};

template <class Body> double timeOf(Body body) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            body();
        }
    });
}

// A block that is read under its lock, and written if that is asked for.
void passBlock(bool writes) {
    char block[kBytes];
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_len = kBytes;
    const int file = open("plain", O_RDWR);
    fcntl(file, F_SETLKW, &range);
    bench::keep(read(file, block, kBytes));
    if (writes) {
        ++block[0];
        bench::keep(pwrite(file, block, kBytes, 0));
        fsync(file);
    }
    close(file);
}

ZOR_BENCH(references) {
    const Scene scene;
    std::ofstream("plain") << std::string(kBytes, 'x');
    struct stat status {};
    bench::row("plain name, no group", timeOf([] { Scene::resolve("PLAIN", 0); }), "two stats",
               timeOf([&] {
                   stat("PLAIN", &status);
                   stat("PLAIN.catalogue", &status);
               }));
    bench::row("PAY(-1)", timeOf([] { Scene::resolve("PAY(-1)", 0); }), "open, lock, read, close",
               timeOf([] { passBlock(false); }));
    int number = 0;
    bench::row("PAY(+1), full group", timeOf([] { Scene::resolve("PAY(+1)", 1); }),
               "open, lock, read, write, fsync, close", timeOf([&] {
                   passBlock(true);
                   std::ofstream("PLAIN." + std::to_string(++number)).flush();
               }));
}

} // namespace

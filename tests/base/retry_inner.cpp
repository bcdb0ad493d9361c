// Streams and descriptors that are interrupted, slow or full: nothing is lost, and what is lost is
// told.

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/time.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "base/stream_calls.h"
#include "base/system_calls.h"

#include <gtest/gtest.h>

namespace {

// Writes to a pipe that is full most of the time while a signal comes every millisecond.
TEST(Retry, WritesLoseNothingToSignalsAndSlowReaders) {
    constexpr std::size_t kRecord = 3000;
    constexpr int kRecords = 100;
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr); // without SA_RESTART
    const itimerval often{{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (const int flags : {0, O_NONBLOCK}) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, flags), 0);
        std::string read;
        std::thread reader([&] {
            std::string bytes(2000, '\0');
            while (const ssize_t count = zor::retryRead(ends[0], bytes.data(), bytes.size())) {
                read.append(bytes, 0, static_cast<std::size_t>(count));
                usleep(500);
            }
        });
        FILE *stream = fdopen(ends[1], "w");
        std::string written;
        for (int i = 0; i < kRecords; ++i) {
            const std::string record(kRecord, static_cast<char>('a' + i % 26));
            EXPECT_EQ(zor::retryFwrite(record.data(), 100, kRecord / 100, stream), kRecord / 100);
            written += record;
        }
        EXPECT_EQ(zor::retryFlush(stream), 0);
        fclose(stream);
        reader.join();
        close(ends[0]);
        EXPECT_TRUE(read == written) << read.size();
    }
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
}

TEST(Retry, AFullDiskIsTold) {
    FILE *full = zor::retryFopen("/dev/full", "w");
    EXPECT_EQ(zor::retryFwrite("text", 1, 4, full), 4U);
    EXPECT_EQ(std::tuple(zor::retryFseek(full, 0, SEEK_SET), errno), std::tuple(-1, ENOSPC));
    EXPECT_NE(ferror(full), 0);
    const std::string much(100000, 'x');
    EXPECT_LT(zor::retryFwrite(much.data(), 1, much.size(), full), much.size());
    fclose(full);
}

} // namespace

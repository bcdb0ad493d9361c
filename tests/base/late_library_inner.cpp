// Libraries that are loaded late.
#include <sys/resource.h>

#include "base/late_library.h"
#include "support/failure_kit.h"

using namespace zor;

TEST(LateLibrary, AShortageIsNotRemembered) {
    LateLibrary library("libquadmath.so.0");
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_FALSE(library.isPresent());
    setrlimit(RLIMIT_NOFILE, &files);
    EXPECT_TRUE(library.isPresent());
    EXPECT_NE(library.find("sqrtq"), nullptr);
}

PROGRAM_TEST(LateLibrary, ARunCannotGoOnWithout, .errHolds = "<traceback>\nZOR907S ",
             .status = failure::kAborted) {
    LateFunction<void()> function(*new LateLibrary("none.so"), "f");
    function();
}

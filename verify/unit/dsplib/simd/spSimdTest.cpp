// The width of vectors that a program takes: the machine's, or what it is asked for if that is
// less.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "dsplib/simd/simd.h"
#include "dsplib/sp_simd.h"

namespace {

/** sp_simd_lanes() of a process whose environment asks for that; nullptr: for nothing. */
int lanesWith(const char* wish) {
    const pid_t child = fork();
    if (child == 0) {
        if (wish == nullptr) {
            unsetenv("SP_SIMD_LANES");
        } else {
            setenv("SP_SIMD_LANES", wish, 1);
        }
        const int lanes = sp_simd_lanes();
        setenv("SP_SIMD_LANES", lanes == 4 ? "8" : "4", 1);
        _exit(sp_simd_lanes() == lanes ? lanes : 0);  // it stays
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

#ifdef SP_SIMD_SEVERAL_WIDTHS
int widestHere() {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    return avx512 ? 16 : __builtin_cpu_supports("avx") ? 8 : 4;
}

TEST(LanesInUse, AreTheMachinesUnlessFewerAreAskedFor) {
    EXPECT_EQ(lanesWith(nullptr), widestHere());
    EXPECT_EQ(lanesWith("4"), 4);
    EXPECT_EQ(lanesWith("8"), std::min(8, widestHere()));
}

TEST(LanesInUse, AreTheMachinesWhereWhatIsAskedForIsNoWidth) {
    for (const char* const wish : {"", "16", "5", "4 ", "32", "eight"}) {
        EXPECT_EQ(lanesWith(wish), widestHere()) << '"' << wish << '"';
    }
}
#else
TEST(LanesInUse, AreThoseOfTheBuild) {
    for (const char* const wish : {"4", "8", "16"}) EXPECT_EQ(lanesWith(wish), SP_SIMD_WIDEST);
}
#endif

}  // namespace

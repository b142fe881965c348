#include "dsplib/sp_simd.h"

#include "simd.h"

#ifdef SP_SIMD_SEVERAL_WIDTHS

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

std::atomic<int> lanesInUse(0);  // 0: nobody has asked yet

/**
 * AVX-512 counts where all four parts of it are that the kernels are compiled for. What the
 * operating system does not save, the compiler's library takes for missing.
 */
int widestOfMachine() {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    if (avx512) return 16;
    return __builtin_cpu_supports("avx") ? 8 : 4;
}

int widestThatIsWanted() {
    const char* const wish = std::getenv("SP_SIMD_LANES");
    if (wish != nullptr && std::strcmp(wish, "4") == 0) return 4;
    if (wish != nullptr && std::strcmp(wish, "8") == 0) return 8;
    return 16;
}

}  // namespace

int sp_simd_lanes(void) {
    const int known = lanesInUse.load(std::memory_order_relaxed);
    if (known != 0) return known;
    // Threads that come here together find out the same.
    const int widest = widestOfMachine(), wanted = widestThatIsWanted();
    const int lanes = widest < wanted ? widest : wanted;
    lanesInUse.store(lanes, std::memory_order_relaxed);
    return lanes;
}

#else

int sp_simd_lanes(void) {
    return SP_SIMD_WIDEST;
}

#endif

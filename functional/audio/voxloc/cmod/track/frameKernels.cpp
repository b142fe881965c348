#include "frameKernels.h"

#include "dsplib/simd/simdLanes.h"
#include "grids.h"

namespace voxloc {

void SP_SIMD_HERE::scale(const float* in, float factor, float* out, int count) {
    simd::forLanes(0, count, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        Lanes::store(out + i, simd::mul(Lanes::load(in + i), Lanes::splat(factor)));
    });
}

void SP_SIMD_HERE::multiply(const float* a, const float* b, float* out, int count) {
    simd::forLanes(0, count, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        Lanes::store(out + i, simd::mul(Lanes::load(a + i), Lanes::load(b + i)));
    });
}

void SP_SIMD_HERE::multiplyByConjugate(const float* a, const float* b, float* out, int count) {
    simd::forLanes(0, count, [=](int k, auto width) {
        using Lanes = simd::Lanes<width>;
        const auto x = Lanes::loadPairs(a + 2 * k), y = Lanes::loadPairs(b + 2 * k);
        simd::storePairs(out + 2 * k,
                         simd::add(simd::mul(x.first, y.first), simd::mul(x.second, y.second)),
                         simd::sub(simd::mul(x.second, y.first), simd::mul(x.first, y.second)));
    });
}

void SP_SIMD_HERE::windowAndAdvance(float* block, const float* window, const float* next,
                                    float* windowed) {
    simd::forLanes(0, FRAME_SAMPLES, [=](int i, auto width) {
        using Lanes = simd::Lanes<width>;
        const int j = FRAME_SAMPLES + i;
        const auto older = Lanes::load(block + i), newer = Lanes::load(block + j);
        Lanes::store(windowed + i, simd::mul(older, Lanes::load(window + i)));
        Lanes::store(windowed + j, simd::mul(newer, Lanes::load(window + j)));
        Lanes::store(block + i, newer);
        Lanes::store(block + j, Lanes::load(next + i));
    });
}

}  // namespace voxloc

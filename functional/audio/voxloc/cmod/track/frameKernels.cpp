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

float SP_SIMD_HERE::scaleAndSquare(const float* in, float factor, float refused, float* out,
                                   int count) {
    constexpr int width = simd::StreamLanes;
    constexpr int together = 4;  // maxima, since each has to wait for the one before
    using Lanes = simd::Lanes<width>;
    const auto factors = Lanes::splat(factor), limit = Lanes::splat(refused);
    simd::F32<width> largest[together];
    for (auto& largestSquare : largest) largestSquare = Lanes::splat(0.0f);
    for (int i = 0; i < count; i += together * width) {
        int at = i;
        for (auto& largestSquare : largest) {
            const auto value = simd::mul(Lanes::load(in + at), factors);
            Lanes::store(out + at, value);
            // In this order what is no number gives the limit.
            const auto square = simd::smaller(simd::mul(value, value), limit);
            largestSquare = simd::larger(square, largestSquare);
            at += width;
        }
    }
    return simd::largestLane(
        simd::larger(simd::larger(largest[0], largest[1]), simd::larger(largest[2], largest[3])));
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

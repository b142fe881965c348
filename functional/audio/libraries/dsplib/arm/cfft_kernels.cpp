#include "cfft_kernels.h"

#include "cfft_drivers.h"
#include "cfft_ends.h"

namespace cfft {

void SP_SIMD_HERE::forwardTransform(int N, int log2N, const float* x, float* y) {
    transform<Direction::Forward, simd::BestLanes>(N, log2N, x, y);
}

void SP_SIMD_HERE::inverseTransform(int N, int log2N, const float* x, float* y) {
    transform<Direction::Inverse, simd::BestLanes>(N, log2N, x, y);
}

void SP_SIMD_HERE::inverseTransformEnds(const float* x, float* y, int wanted) {
    transformEnds<Direction::Inverse, simd::BestLanes>(x, y, wanted);
}

}  // namespace cfft

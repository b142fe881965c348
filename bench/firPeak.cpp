#include "firPeak.h"

#include "dsplib/simd/simdLanes.h"

namespace firPeak {

float SP_SIMD_HERE::multiplyAdds() {
    constexpr int Lanes = SP_SIMD_WIDEST;
    using Width = simd::Lanes<Lanes>;
    using Vector = Width::Type;
    Vector a0 = Width::splat(0.0f), a1 = a0, a2 = a0, a3 = a0, a4 = a0, a5 = a0;
    Vector a6 = a0, a7 = a0, a8 = a0, a9 = a0, a10 = a0, a11 = a0;
    Vector sample = Width::splat(0.5f);
    const Vector coefficient = Width::splat(0.25f);
    // The empty statement makes `sample` a new value each time, so that no product is shared.
    const auto step = [&](Vector& sum) {
        __asm__ volatile("" : "+x"(sample));
        sum = simd::mulAdd(sum, sample, coefficient);
    };
    for (int round = 0; round < Rounds; ++round) {
        step(a0), step(a1), step(a2), step(a3), step(a4), step(a5);
        step(a6), step(a7), step(a8), step(a9), step(a10), step(a11);
    }
    const Vector first = simd::add(simd::add(a0, a1), simd::add(a2, a3));
    const Vector second = simd::add(simd::add(a4, a5), simd::add(a6, a7));
    const Vector third = simd::add(simd::add(a8, a9), simd::add(a10, a11));
    float lanes[Lanes];
    Width::store(lanes, simd::add(simd::add(first, second), third));
    return lanes[0];
}

}  // namespace firPeak

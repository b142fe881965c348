/** Vectors as arrays of values, and the widths that this build has. */
#ifndef VERIFY_UNIT_DSPLIB_SIMD_SIMD_TESTING_H
#define VERIFY_UNIT_DSPLIB_SIMD_SIMD_TESTING_H

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "dsplib/simd/simdLanes.h"

namespace simdtest {

using simd::Lanes;

template <int L>
using Values = std::array<float, L>;

/** Distinct values whose products do not fit a float, so that one rounding differs from two. */
template <int L>
Values<L> values(float first) {
    Values<L> v;
    for (int i = 0; i < L; ++i) {
        const float magnitude = first + 0.7f * static_cast<float>(i) + 1e-6f;
        v[static_cast<std::size_t>(i)] = i % 3 == 1 ? -magnitude : magnitude;
    }
    return v;
}

template <int L>
simd::F32<L> load(const Values<L>& v) {
    alignas(8) const Values<L> aligned = v;  // two lanes ask for that
    return Lanes<L>::load(aligned.data());
}

template <int L>
Values<L> unload(simd::F32<L> v) {
    alignas(8) Values<L> out;
    Lanes<L>::store(out.data(), v);
    return out;
}

template <int L>
struct Width {
    static constexpr int Count = L;
};

#if SP_SIMD_WIDEST >= 16
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>, Width<8>, Width<16>>;
using WideWidths = testing::Types<Width<4>, Width<8>, Width<16>>;
using StreamWidths = testing::Types<Width<1>, Width<4>, Width<8>, Width<16>>;
#elif SP_SIMD_WIDEST >= 8
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>, Width<8>>;
using WideWidths = testing::Types<Width<4>, Width<8>>;
using StreamWidths = testing::Types<Width<1>, Width<4>, Width<8>>;
#else
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>>;
using WideWidths = testing::Types<Width<4>>;
using StreamWidths = testing::Types<Width<1>, Width<4>>;
#endif

}  // namespace simdtest

#endif

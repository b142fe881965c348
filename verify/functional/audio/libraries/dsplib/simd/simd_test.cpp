// Every function of the vector layer, at every width that this build has, against plain arithmetic.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "guardedFloats.h"
#include "simdLanes.h"

namespace {

using simd::Lanes;

#if defined(SP_SIMD_SCALAR) || !defined(__FMA__)
constexpr bool FusedMultiplyAdd = false;
#else
constexpr bool FusedMultiplyAdd = true;
#endif

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
    return Lanes<L>::load(v.data());
}

template <int L>
Values<L> unload(simd::F32<L> v) {
    Values<L> out;
    Lanes<L>::store(out.data(), v);
    return out;
}

template <class Width>
class EveryWidth : public testing::Test {};

template <class Width>
class FourLanesAndMore : public testing::Test {};

template <int L>
struct Width {
    static constexpr int Count = L;
};

#ifdef DSPLIB_SIMD_SIMD_AVX512_H
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>, Width<8>, Width<16>>;
using WideWidths = testing::Types<Width<4>, Width<8>, Width<16>>;
#elif defined(DSPLIB_SIMD_SIMD_AVX_H)
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>, Width<8>>;
using WideWidths = testing::Types<Width<4>, Width<8>>;
#else
using AllWidths = testing::Types<Width<1>, Width<2>, Width<4>>;
using WideWidths = testing::Types<Width<4>>;
#endif
TYPED_TEST_SUITE(EveryWidth, AllWidths, );
TYPED_TEST_SUITE(FourLanesAndMore, WideWidths, );

TYPED_TEST(EveryWidth, LoadsAndStoresAtAnyFloatAndNothingBeside) {
    constexpr int L = TypeParam::Count;
    for (std::size_t offset = 0; offset < 4; ++offset) {
        reference::GuardedFloats from(L, offset), to(L, 3 - offset, 99.0f);
        for (std::size_t i = 0; i < L; ++i) from[i] = static_cast<float>(i) + 0.5f;
        Lanes<L>::store(to.data(), Lanes<L>::load(from.data()));
        EXPECT_TRUE(to.sameBitsAs(from)) << "offset " << offset;
        EXPECT_TRUE(to.intact()) << "offset " << offset;
    }
}

TYPED_TEST(EveryWidth, SplatFillsEveryLane) {
    constexpr int L = TypeParam::Count;
    for (const float lane : unload<L>(Lanes<L>::splat(-3.25f))) EXPECT_EQ(lane, -3.25f);
}

TYPED_TEST(EveryWidth, ArithmeticIsThatOfEachLane) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.1f), b = values<L>(-2.3f);
    const Values<L> sum = unload<L>(simd::add(load<L>(a), load<L>(b)));
    const Values<L> difference = unload<L>(simd::sub(load<L>(a), load<L>(b)));
    const Values<L> product = unload<L>(simd::mul(load<L>(a), load<L>(b)));
    for (std::size_t i = 0; i < L; ++i) {
        EXPECT_EQ(sum[i], a[i] + b[i]);
        EXPECT_EQ(difference[i], a[i] - b[i]);
        EXPECT_EQ(product[i], a[i] * b[i]);
    }
}

TYPED_TEST(EveryWidth, MultiplyAddRoundsTwiceUnlessTheBuildFuses) {
    constexpr int L = TypeParam::Count;
    constexpr bool Fused = FusedMultiplyAdd && L > 1;
    int told = 0;
    for (int round = 0; round < 8; ++round) {
        const float shift = 0.01f * static_cast<float>(round);
        const Values<L> c = values<L>(0.37f + shift), a = values<L>(1.1f + shift);
        const Values<L> b = values<L>(-2.3f - shift);
        const Values<L> plus = unload<L>(simd::mulAdd(load<L>(c), load<L>(a), load<L>(b)));
        const Values<L> minus = unload<L>(simd::mulSub(load<L>(c), load<L>(a), load<L>(b)));
        for (std::size_t i = 0; i < L; ++i) {
            const float rounded = a[i] * b[i];
            told += std::fma(a[i], b[i], c[i]) != c[i] + rounded;
            EXPECT_EQ(plus[i], Fused ? std::fma(a[i], b[i], c[i]) : c[i] + rounded);
            EXPECT_EQ(minus[i], Fused ? std::fma(-a[i], b[i], c[i]) : c[i] - rounded);
        }
    }
    EXPECT_GT(told, 0) << "no value tells one rounding from two";
}

TEST(TwoLanes, ZipTakesOneLaneOfEach) {
    const Values<2> a = {1.0f, 2.0f}, b = {3.0f, 4.0f};
    EXPECT_EQ(unload<2>(simd::zipLow(load<2>(a), load<2>(b))), (Values<2>{1.0f, 3.0f}));
    EXPECT_EQ(unload<2>(simd::zipHigh(load<2>(a), load<2>(b))), (Values<2>{2.0f, 4.0f}));
}

TEST(TwoLanes, EvenAndOddLanesAreTheSameTwo) {
    const Values<2> a = {1.0f, 2.0f}, b = {3.0f, 4.0f};
    EXPECT_EQ(unload<2>(simd::evenLanes(load<2>(a), load<2>(b))), (Values<2>{1.0f, 3.0f}));
    EXPECT_EQ(unload<2>(simd::oddLanes(load<2>(a), load<2>(b))), (Values<2>{2.0f, 4.0f}));
}

TEST(TwoLanes, ReversedSwapsThem) {
    EXPECT_EQ(unload<2>(simd::reversed(load<2>({1.0f, 2.0f}))), (Values<2>{2.0f, 1.0f}));
}

TEST(TwoLanes, StoreZippedInterleaves) {
    const Values<2> a = {1.0f, 2.0f}, b = {3.0f, 4.0f};
    reference::GuardedFloats to(4, 1);
    simd::storeZipped(to.data(), load<2>(a), load<2>(b));
    EXPECT_EQ((std::array<float, 4>{to[0], to[1], to[2], to[3]}),
              (std::array<float, 4>{1.0f, 3.0f, 2.0f, 4.0f}));
    EXPECT_TRUE(to.intact());
}

TEST(FourLanes, SumLanesAddsNeighboursFirst) {
    // In any other order the small terms are lost or the large ones do not cancel exactly.
    EXPECT_EQ(simd::sumLanes(load<4>({1e8f, -1e8f, 3.0f, 4.0f})), 7.0f);
    EXPECT_EQ(simd::sumLanes(load<4>({3.0f, 4.0f, 1e8f, -1e8f})), 7.0f);
    EXPECT_EQ(simd::sumLanes(load<4>({1e8f, 3.0f, -1e8f, 4.0f})), (1e8f + 3.0f) + (-1e8f + 4.0f));
}

/** Lane i of the result is lane from[i] of a, or of b where from[i] >= 4, in each group of four. */
template <int L>
Values<L> movedInGroups(const Values<L>& a, const Values<L>& b, std::array<std::size_t, 4> from) {
    Values<L> moved;
    for (std::size_t i = 0; i < L; ++i) {
        const std::size_t group = i - i % 4, lane = from[i % 4];
        moved[i] = lane < 4 ? a[group + lane] : b[group + lane - 4];
    }
    return moved;
}

TYPED_TEST(FourLanesAndMore, MovesOfTwoVectorsStayInTheirGroup) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.0f), b = values<L>(50.0f);
    const simd::F32<L> va = load<L>(a), vb = load<L>(b);
    EXPECT_EQ(unload<L>(simd::evenLanes(va, vb)), movedInGroups<L>(a, b, {0, 2, 4, 6}));
    EXPECT_EQ(unload<L>(simd::oddLanes(va, vb)), movedInGroups<L>(a, b, {1, 3, 5, 7}));
    EXPECT_EQ(unload<L>(simd::lowHalves(va, vb)), movedInGroups<L>(a, b, {0, 1, 4, 5}));
    EXPECT_EQ(unload<L>(simd::highHalves(va, vb)), movedInGroups<L>(a, b, {2, 3, 6, 7}));
    EXPECT_EQ(unload<L>(simd::zipLow(va, vb)), movedInGroups<L>(a, b, {0, 4, 1, 5}));
    EXPECT_EQ(unload<L>(simd::zipHigh(va, vb)), movedInGroups<L>(a, b, {2, 6, 3, 7}));
}

TYPED_TEST(FourLanesAndMore, MovesOfOneVectorStayInTheirGroup) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.0f);
    EXPECT_EQ(unload<L>(simd::zipHalves(load<L>(a))), movedInGroups<L>(a, a, {0, 2, 1, 3}));
    EXPECT_EQ(unload<L>(simd::swapHalves(load<L>(a))), movedInGroups<L>(a, a, {2, 3, 0, 1}));
    EXPECT_EQ(unload<L>(simd::swapPairs(load<L>(a))), movedInGroups<L>(a, a, {1, 0, 3, 2}));
}

TYPED_TEST(FourLanesAndMore, ReversedTurnsAllLanesRound) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.0f), back = unload<L>(simd::reversed(load<L>(a)));
    for (std::size_t i = 0; i < L; ++i) EXPECT_EQ(back[i], a[L - 1 - i]);
}

TYPED_TEST(FourLanesAndMore, NegationsFlipTheSignOfHalfTheLanesZerosToo) {
    constexpr int L = TypeParam::Count;
    Values<L> a = values<L>(1.0f);
    a[2] = a[3] = 0.0f;
    const Values<L> high = unload<L>(simd::negateHighHalf(load<L>(a)));
    const Values<L> odd = unload<L>(simd::negateOddLanes(load<L>(a)));
    for (std::size_t i = 0; i < L; ++i) {
        const float highExpected = i % 4 >= 2 ? -a[i] : a[i], oddExpected = i % 2 ? -a[i] : a[i];
        EXPECT_EQ(high[i], highExpected);
        EXPECT_EQ(std::signbit(high[i]), std::signbit(highExpected)) << i;
        EXPECT_EQ(odd[i], oddExpected);
        EXPECT_EQ(std::signbit(odd[i]), std::signbit(oddExpected)) << i;
    }
}

TYPED_TEST(FourLanesAndMore, StoreZippedIsZipLowThenZipHigh) {
    constexpr int L = TypeParam::Count;
    const simd::F32<L> a = load<L>(values<L>(1.0f)), b = load<L>(values<L>(50.0f));
    reference::GuardedFloats zipped(2 * L, 3), stored(2 * L, 1);
    Lanes<L>::store(zipped.data(), simd::zipLow(a, b));
    Lanes<L>::store(zipped.data() + L, simd::zipHigh(a, b));
    simd::storeZipped(stored.data(), a, b);
    EXPECT_TRUE(stored.sameBitsAs(zipped));
    EXPECT_TRUE(stored.intact());
}

/** Group g of the result is group from[g] of a, or of b where from[g] counts on past a. */
template <int L>
Values<L> movedGroups(const Values<L>& a, const Values<L>& b, std::vector<std::size_t> from) {
    Values<L> moved;
    for (std::size_t i = 0; i < L; ++i) {
        const std::size_t at = 4 * from[i / 4] + i % 4;
        moved[i] = at < L ? a[at] : b[at - L];
    }
    return moved;
}

#ifdef DSPLIB_SIMD_SIMD_AVX_H
TEST(EightLanes, GroupMovesKeepGroupsWhole) {
    const Values<8> a = values<8>(1.0f), b = values<8>(50.0f);
    EXPECT_EQ(unload<8>(simd::lowGroups(load<8>(a), load<8>(b))), movedGroups<8>(a, b, {0, 2}));
    EXPECT_EQ(unload<8>(simd::highGroups(load<8>(a), load<8>(b))), movedGroups<8>(a, b, {1, 3}));
}
#endif

#ifdef DSPLIB_SIMD_SIMD_AVX512_H
TEST(SixteenLanes, GroupMovesKeepGroupsWhole) {
    const Values<16> a = values<16>(1.0f), b = values<16>(50.0f);
    const simd::F32x16 va = load<16>(a), vb = load<16>(b);
    EXPECT_EQ(unload<16>(simd::lowGroups(va, vb)), movedGroups<16>(a, b, {0, 1, 4, 5}));
    EXPECT_EQ(unload<16>(simd::highGroups(va, vb)), movedGroups<16>(a, b, {2, 3, 6, 7}));
    EXPECT_EQ(unload<16>(simd::evenGroups(va, vb)), movedGroups<16>(a, b, {0, 2, 4, 6}));
    EXPECT_EQ(unload<16>(simd::oddGroups(va, vb)), movedGroups<16>(a, b, {1, 3, 5, 7}));
}
#endif

}  // namespace

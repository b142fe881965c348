// The vector layer at every width that this build has, against plain arithmetic: lane by lane.
// simdGroupsTest.cpp has what works on groups of lanes, and gathers.

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "kit/guardedFloats.h"
#include "simdTesting.h"

namespace {

using namespace simdtest;

#ifdef SP_SIMD_FUSED
constexpr bool FusedMultiplyAdd = true;
#else
constexpr bool FusedMultiplyAdd = false;
#endif

template <class Width>
class EveryWidth : public testing::Test {};

template <class Width>
class FourLanesAndMore : public testing::Test {};

template <class Width>
class StreamWidth : public testing::Test {};

TYPED_TEST_SUITE(EveryWidth, AllWidths, );
TYPED_TEST_SUITE(FourLanesAndMore, WideWidths, );
TYPED_TEST_SUITE(StreamWidth, StreamWidths, );

// Two lanes hold complex elements, which are 8-byte aligned; all other widths take any float.
TYPED_TEST(EveryWidth, LoadsAndStoresAtAnyFloatAndNothingBeside) {
    constexpr int L = TypeParam::Count;
    constexpr std::size_t step = L == 2 ? 2 : 1;
    for (std::size_t offset = 0; offset < 4; offset += step) {
        reference::GuardedFloats from(L, offset), to(L, 4 - step - offset, 99.0f);
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

TEST(TwoLanes, AddIfLessSubtractsInAllOtherLanesAndBesideANaN) {
    constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
    const Values<2> x = {5.0f, -0.75f}, y = {2.0f, 0.5f};
    const Values<2> sum = {7.0f, -0.25f}, difference = {3.0f, -1.25f};
    const auto of = [&](Values<2> a, Values<2> b) {
        return unload<2>(simd::addIfLess(load<2>(a), load<2>(b), load<2>(x), load<2>(y)));
    };
    EXPECT_EQ(of({1.0f, -3.0f}, {2.0f, -2.0f}), sum);
    EXPECT_EQ(of({2.0f, 1.0f}, {2.0f, -1.0f}), difference);
    EXPECT_EQ(of({1.0f, 2.0f}, {2.0f, 1.0f}), (Values<2>{sum[0], difference[1]}));
    EXPECT_EQ(of({2.0f, 1.0f}, {1.0f, 2.0f}), (Values<2>{difference[0], sum[1]}));
    EXPECT_EQ(of({NaN, 1.0f}, {1.0f, NaN}), difference);
}

TEST(TwoLanes, FirstLaneIsTheFirst) {
    EXPECT_EQ(simd::firstLane(load<2>({4.5f, -1.0f})), 4.5f);
}

TEST(TwoLanes, StoreZippedInterleaves) {
    const Values<2> a = {1.0f, 2.0f}, b = {3.0f, 4.0f};
    reference::GuardedFloats to(4, 2);
    simd::storeZipped(to.data(), load<2>(a), load<2>(b));
    EXPECT_EQ((std::array<float, 4>{to[0], to[1], to[2], to[3]}),
              (std::array<float, 4>{1.0f, 3.0f, 2.0f, 4.0f}));
    EXPECT_TRUE(to.intact());
}

TEST(TwoLanes, LoadZippedTakesApartWhatStoreZippedInterleaved) {
    reference::GuardedFloats from(4, 2);
    for (std::size_t i = 0; i < 4; ++i) from[i] = static_cast<float>(i);
    const simd::F32x2Zipped v = simd::loadZipped(from.data());
    EXPECT_EQ(unload<2>(v.a), (Values<2>{0.0f, 2.0f}));
    EXPECT_EQ(unload<2>(v.b), (Values<2>{1.0f, 3.0f}));
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

// The functions of kernels that walk through arrays, at one lane too.

TYPED_TEST(StreamWidth, DivisionAndRootAreThoseOfEachLane) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.1f), b = values<L>(-2.3f);
    const Values<L> quotient = unload<L>(simd::div(load<L>(a), load<L>(b)));
    const Values<L> root = unload<L>(simd::squareRoot(simd::mul(load<L>(a), load<L>(a))));
    for (std::size_t i = 0; i < L; ++i) {
        EXPECT_EQ(quotient[i], a[i] / b[i]);
        EXPECT_EQ(root[i], std::sqrt(a[i] * a[i]));
    }
}

TYPED_TEST(StreamWidth, ComparisonsTakeTheSecondWhereALaneIsNoNumber) {
    constexpr int L = TypeParam::Count;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (std::size_t at = 0; at < L; ++at) {  // NaN in each lane in turn, numbers in the others
        Values<L> a = values<L>(1.1f), b = values<L>(-2.3f);
        b[L - 1] = a[L - 1];  // equal lanes
        a[at] = nan;
        const Values<L> x = values<L>(20.0f), y = values<L>(-20.0f);
        const Values<L> least = unload<L>(simd::smaller(load<L>(a), load<L>(b)));
        const Values<L> most = unload<L>(simd::larger(load<L>(a), load<L>(b)));
        const Values<L> chosen =
            unload<L>(simd::selectLess(load<L>(a), load<L>(b), load<L>(x), load<L>(y)));
        const Values<L> turned =
            unload<L>(simd::selectLess(load<L>(b), load<L>(a), load<L>(x), load<L>(y)));
        for (std::size_t i = 0; i < L; ++i) {
            EXPECT_EQ(least[i], a[i] < b[i] ? a[i] : b[i]) << i;
            EXPECT_EQ(most[i], a[i] > b[i] ? a[i] : b[i]) << i;
            EXPECT_EQ(chosen[i], a[i] < b[i] ? x[i] : y[i]) << i;
            EXPECT_EQ(turned[i], b[i] < a[i] ? x[i] : y[i]) << i;
        }
    }
}

TYPED_TEST(StreamWidth, PairsComeApartAndGoTogetherInOrder) {
    constexpr int L = TypeParam::Count;
    reference::GuardedFloats from(2 * L, 1), to(2 * L, 3);
    for (std::size_t i = 0; i < 2 * L; ++i) from[i] = static_cast<float>(i) + 0.5f;
    const auto pairs = Lanes<L>::loadPairs(from.data());
    const Values<L> first = unload<L>(pairs.first), second = unload<L>(pairs.second);
    for (std::size_t i = 0; i < L; ++i) {
        EXPECT_EQ(first[i], from[2 * i]);
        EXPECT_EQ(second[i], from[2 * i + 1]);
    }
    simd::storePairs(to.data(), pairs.first, pairs.second);
    EXPECT_TRUE(to.sameBitsAs(from) && to.intact());
}

TYPED_TEST(StreamWidth, ReversedTurnsAllLanesRound) {
    constexpr int L = TypeParam::Count;
    const Values<L> a = values<L>(1.0f), back = unload<L>(simd::reversed(load<L>(a)));
    for (std::size_t i = 0; i < L; ++i) EXPECT_EQ(back[i], a[L - 1 - i]);
}

TYPED_TEST(StreamWidth, LargestLaneIsFoundInEveryPlace) {
    constexpr int L = TypeParam::Count;
    for (std::size_t at = 0; at < L; ++at) {
        Values<L> a;
        a.fill(-5.0f);
        a[at] = -4.5f;
        EXPECT_EQ(simd::largestLane(load<L>(a)), -4.5f) << at;
    }
}

TYPED_TEST(StreamWidth, BytesLoadAndStoreTheirWholeRange) {
    constexpr int L = TypeParam::Count;
    for (int first = 0; first + L <= 256; first += L) {
        std::array<std::uint8_t, L + 2> from, to;
        to.fill(77);
        for (std::size_t i = 0; i < from.size(); ++i) {
            from[i] = static_cast<std::uint8_t>(static_cast<std::size_t>(first) + i);
        }
        const Values<L> widened = unload<L>(Lanes<L>::loadBytes(from.data()));
        for (std::size_t i = 0; i < L; ++i) EXPECT_EQ(widened[i], static_cast<float>(from[i]));
        simd::storeBytes(to.data() + 1, load<L>(widened));
        for (std::size_t i = 0; i < L; ++i) EXPECT_EQ(to[i + 1], from[i]);
        EXPECT_TRUE(to[0] == 77 && to[L + 1] == 77);
    }
}

TYPED_TEST(StreamWidth, IntegersAreTruncated) {
    constexpr int L = TypeParam::Count;
    const float samples[] = {0.0f, 0.99f, 1.0f, 1.5f, 2.5f, 255.9f, 256.0f, 8191.99f, 32766.5f};
    for (const float sample : samples) {
        std::array<std::int16_t, L + 2> to;
        to.fill(-7);
        simd::storeIntegers(to.data() + 1, Lanes<L>::splat(sample));
        for (std::size_t i = 0; i < L; ++i) {
            EXPECT_EQ(to[i + 1], static_cast<std::int16_t>(sample)) << sample;
        }
        EXPECT_TRUE(to[0] == -7 && to[L + 1] == -7);
    }
}

TEST(ForLanes, VisitsEachElementOnceWithWholeStepsFirst) {
    for (const int begin : {0, 3}) {
        for (int count = 0; count <= 2 * simd::StreamLanes + 1; ++count) {
            std::vector<int> visits(static_cast<std::size_t>(begin + count), 0);
            int single = 0;
            simd::forLanes(begin, begin + count, [&](int first, auto width) {
                single += width == 1;
                for (int i = first; i < first + width; ++i) ++visits[static_cast<std::size_t>(i)];
            });
            for (int i = 0; i < begin + count; ++i) {
                EXPECT_EQ(visits[static_cast<std::size_t>(i)], i >= begin ? 1 : 0);
            }
            EXPECT_EQ(single, count % simd::StreamLanes) << count;
        }
    }
}

}  // namespace

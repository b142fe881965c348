// What the vector layer does with groups of lanes and with places in memory that lie apart: moves,
// sums of neighbours, products with one lane, gathers.

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "simdTesting.h"

namespace {

using namespace simdtest;

template <class Width>
class Gather : public testing::Test {};
TYPED_TEST_SUITE(Gather, StreamWidths, );

TYPED_TEST(Gather, ReadsWhatEachIndexNames) {
    constexpr int L = TypeParam::Count;
    std::vector<float> table(1000);
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<float>(i) * 0.25f;
    std::array<std::int16_t, L> index;
    for (std::size_t i = 0; i < L; ++i) index[i] = static_cast<std::int16_t>(999 - 37 * i);
    const Values<L> gathered = unload<L>(Lanes<L>::gather(table.data(), index.data()));
    for (std::size_t i = 0; i < L; ++i) {
        EXPECT_EQ(gathered[i], table[static_cast<std::size_t>(index[i])]);
    }
}

// Wide gathers take indices that lie close together out of whole vectors, from the smaller end on.
TYPED_TEST(Gather, ReadsALaneThatLiesApartFromTheOthers) {
    constexpr int L = TypeParam::Count;
    std::vector<float> table(1000);
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<float>(i) * 0.25f;
    for (const int slope : {1, -1}) {
        for (const int apart : {-70, -1, 31, 32, 40, 63, 64, 200}) {
            for (int lane = 0; lane < L; ++lane) {
                std::array<std::int16_t, L> index;
                for (int i = 0; i < L; ++i) {
                    index[static_cast<std::size_t>(i)] =
                        static_cast<std::int16_t>(300 + (i == lane ? apart : slope * i));
                }
                const Values<L> gathered = unload<L>(Lanes<L>::gather(table.data(), index.data()));
                for (std::size_t i = 0; i < L; ++i) {
                    ASSERT_EQ(gathered[i], table[static_cast<std::size_t>(index[i])])
                        << "lane " << i << ", lane " << lane << " apart by " << apart << ", slope "
                        << slope;
                }
            }
        }
    }
}

#if SP_SIMD_WIDEST >= 16
// The window of 64 floats, each of its quarters, and indices that do not fit it.
TEST(SixteenLanes, AreGatheredFromIndicesHoweverFarApart) {
    std::vector<float> table(200);
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<float>(i) + 0.5f;
    for (int reach = 0; reach < 100; ++reach) {
        std::int16_t index[16];
        for (int i = 0; i < 16; ++i) index[i] = static_cast<std::int16_t>(5 + i * reach / 15);
        const Values<16> gathered = unload<16>(simd::gather16(table.data(), index));
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_EQ(gathered[i], static_cast<float>(index[i]) + 0.5f) << reach << ", lane " << i;
        }
    }
}
#endif

TEST(FourLanes, AnyLessLooksAtEveryLaneAndPassesOverNaN) {
    const Values<4> limits = {1.0f, 2.0f, -3.0f, 4.0f};
    EXPECT_FALSE(simd::anyLess(load<4>(limits), load<4>(limits)));
    for (std::size_t i = 0; i < 4; ++i) {
        Values<4> values = limits;
        values[i] -= 0.5f;
        EXPECT_TRUE(simd::anyLess(load<4>(values), load<4>(limits))) << "lane " << i;
        EXPECT_FALSE(simd::anyLess(load<4>(limits), load<4>(values))) << "lane " << i;
        values[i] = std::numeric_limits<float>::quiet_NaN();
        EXPECT_FALSE(simd::anyLess(load<4>(values), load<4>(limits))) << "lane " << i;
    }
}

TEST(FourLanes, EvenAndOddLanesComeApart) {
    const simd::F32x4 a = load<4>({0.0f, 1.0f, 2.0f, 3.0f}), b = load<4>({4.0f, 5.0f, 6.0f, 7.0f});
    EXPECT_EQ(unload<4>(simd::evenLanes(a, b)), (Values<4>{0.0f, 2.0f, 4.0f, 6.0f}));
    EXPECT_EQ(unload<4>(simd::oddLanes(a, b)), (Values<4>{1.0f, 3.0f, 5.0f, 7.0f}));
}

TEST(FourLanes, AddPairsAndSumLanesOfFourReduceInTheOrderOfSumLanes) {
    const Values<4> v[] = {values<4>(1.1f), values<4>(-2.3f), values<4>(0.37f), values<4>(1e8f)};
    EXPECT_EQ(
        unload<4>(simd::addPairs(load<4>(v[0]), load<4>(v[1]))),
        (Values<4>{v[0][0] + v[0][1], v[0][2] + v[0][3], v[1][0] + v[1][1], v[1][2] + v[1][3]}));
    const Values<4> sums =
        unload<4>(simd::sumLanesOfFour(load<4>(v[0]), load<4>(v[1]), load<4>(v[2]), load<4>(v[3])));
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(sums[i], simd::sumLanes(load<4>(v[i]))) << i;
}

/** mulLane and mulAddLane with one lane of c; c is the same in each group of four. */
template <int Lane, int L>
void expectProductsWithLane() {
    const Values<L> v = values<L>(1.1f), sum = values<L>(0.37f), factors = values<L>(-2.3f);
    Values<L> c, splat;
    for (std::size_t i = 0; i < L; ++i) c[i] = factors[i % 4];
    splat.fill(factors[Lane]);
    EXPECT_EQ(unload<L>(simd::mulLane<Lane>(load<L>(v), load<L>(c))),
              unload<L>(simd::mul(load<L>(v), load<L>(splat))));
    EXPECT_EQ(unload<L>(simd::mulAddLane<Lane>(load<L>(sum), load<L>(v), load<L>(c))),
              unload<L>(simd::mulAdd(load<L>(sum), load<L>(v), load<L>(splat))));
}

template <int L>
void expectProductsWithEachLane() {
    expectProductsWithLane<0, L>();
    expectProductsWithLane<1, L>();
    expectProductsWithLane<2, L>();
    expectProductsWithLane<3, L>();
}

TEST(FourLanes, ProductsWithOneLaneAreThoseWithItsSplat) {
    expectProductsWithEachLane<4>();
}

#if SP_SIMD_WIDEST >= 8
TEST(EightLanes, ProductsWithOneLaneAreThoseWithItsSplat) {
    expectProductsWithEachLane<8>();
}

TEST(EightLanes, FourValuesLoadTwiceAndRegistersKeepTheirs) {
    const Values<8> a = values<8>(1.0f);
    const Values<8> twice = unload<8>(simd::load4Twice(a.data()));
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(twice[i], a[i % 4]);
    EXPECT_EQ(unload<8>(simd::inRegister(load<8>(a))), a);
}
#endif

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

#if SP_SIMD_WIDEST >= 8
TEST(EightLanes, GroupMovesKeepGroupsWhole) {
    const Values<8> a = values<8>(1.0f), b = values<8>(50.0f);
    EXPECT_EQ(unload<8>(simd::lowGroups(load<8>(a), load<8>(b))), movedGroups<8>(a, b, {0, 2}));
    EXPECT_EQ(unload<8>(simd::highGroups(load<8>(a), load<8>(b))), movedGroups<8>(a, b, {1, 3}));
}

TEST(EightLanes, ColumnsTakeOneLaneOfEachGroupInTurn) {
    const Values<8> a = values<8>(1.0f);
    const Values<8> columns = unload<8>(simd::columnsOfGroups(load<8>(a)));
    EXPECT_EQ(columns, (Values<8>{a[0], a[4], a[1], a[5], a[2], a[6], a[3], a[7]}));
}
#endif

#if SP_SIMD_WIDEST >= 16
TEST(SixteenLanes, GroupMovesKeepGroupsWhole) {
    const Values<16> a = values<16>(1.0f), b = values<16>(50.0f);
    const simd::F32x16 va = load<16>(a), vb = load<16>(b);
    EXPECT_EQ(unload<16>(simd::lowGroups(va, vb)), movedGroups<16>(a, b, {0, 1, 4, 5}));
    EXPECT_EQ(unload<16>(simd::highGroups(va, vb)), movedGroups<16>(a, b, {2, 3, 6, 7}));
    EXPECT_EQ(unload<16>(simd::evenGroups(va, vb)), movedGroups<16>(a, b, {0, 2, 4, 6}));
    EXPECT_EQ(unload<16>(simd::oddGroups(va, vb)), movedGroups<16>(a, b, {1, 3, 5, 7}));
}

TEST(SixteenLanes, ColumnsTakeOneLaneOfEachGroupInTurn) {
    const Values<16> a = values<16>(1.0f);
    const Values<16> columns = unload<16>(simd::columnsOfGroups(load<16>(a)));
    for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(columns[i], a[4 * (i % 4) + i / 4]) << i;
}

TEST(SixteenLanes, ColumnsLoadFromRowsOfAnyLengthAndStoreAsRowsOfFour) {
    constexpr std::size_t Row = 7;
    std::array<float, 16 * Row> rows;
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<float>(i);
    const simd::F32x16Four columns = simd::loadColumns(rows.data() + 1, Row);
    const Values<16> found[] = {unload<16>(columns.a), unload<16>(columns.b), unload<16>(columns.c),
                                unload<16>(columns.d)};
    std::array<float, 64> stored;
    simd::storeColumns(stored.data(), columns);
    for (std::size_t i = 0; i < 64; ++i) {
        const float expected = rows[i / 4 * Row + 1 + i % 4];
        EXPECT_EQ(found[i % 4][i / 4], expected) << i;
        EXPECT_EQ(stored[i], expected) << i;
    }
}
#endif

}  // namespace

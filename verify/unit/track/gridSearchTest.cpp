#include "track/gridSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "models/geometryModel.h"

namespace {

constexpr float Lowest = -3.4028235e38f;
constexpr int AzimuthRangePoints = 48 * 227;

using Lags = std::vector<std::int16_t>;

class SumCorrelations : public ::testing::Test {
  protected:
    static constexpr std::size_t MostPairs = 8;

    SumCorrelations() {
        std::mt19937 random(41);
        std::uniform_real_distribution<float> value(-1.0f, 1.0f);
        for (std::vector<float>& correlation : correlations_) {
            correlation.resize(16392);
            for (float& v : correlation) v = value(random);
        }
        for (std::size_t p = 0; p < MostPairs; ++p) {
            lags_[p].resize(29737);
            for (std::size_t i = 0; i < lags_[p].size(); ++i) {
                lags_[p][i] = static_cast<std::int16_t>((i * 7919 + p * 31) % 16385);
            }
        }
    }

    float value(std::size_t pair, std::size_t point) const {
        return correlations_[pair][static_cast<std::size_t>(lags_[pair][point])];
    }

    // Sums `count` pairs over `points` points into sum_, which has a guard behind its end.
    float sum(std::size_t count, std::size_t points) {
        voxloc::PairContribution pairs[MostPairs];
        for (std::size_t p = 0; p < count; ++p)
            pairs[p] = {correlations_[p].data(), lags_[p].data()};
        sum_.assign(points, NAN);
        sum_.resize(points + 16, -777.0f);
        std::fill_n(largest_, MostPairs + 1, -777.0f);
        const float result = voxloc::sumCorrelations(
            pairs, static_cast<int>(count), static_cast<int>(points), sum_.data(), largest_);
        for (std::size_t i = points; i < sum_.size(); ++i) EXPECT_EQ(sum_[i], -777.0f) << points;
        for (std::size_t p = count; p <= MostPairs; ++p) EXPECT_EQ(largest_[p], -777.0f) << p;
        return result;
    }

    std::vector<float> correlations_[MostPairs];
    Lags lags_[MostPairs];
    std::vector<float> sum_;
    float largest_[MostPairs + 1] = {};
};

// In the order of the pairs: the first one overwrites what was there, the others add.
TEST_F(SumCorrelations, AddsPairAfterPair) {
    for (std::size_t count = 1; count <= MostPairs; ++count) {
        for (const std::size_t points : {16U, 17U, 23U, 31U, 32U, 33U, 10896U, 29737U}) {
            sum(count, points);
            for (std::size_t i = 0; i < points; ++i) {
                float expected = value(0, i);
                for (std::size_t p = 1; p < count; ++p) expected += value(p, i);
                ASSERT_EQ(sum_[i], expected) << count << " pairs, point " << i << " of " << points;
            }
        }
    }
}

TEST_F(SumCorrelations, TellsTheLargestValueOfEachPairAndTheLargestSum) {
    for (std::size_t count = 1; count <= MostPairs; ++count) {
        for (const std::size_t points : {16U, 17U, 31U, 10896U}) {
            const float largestSum = sum(count, points);
            EXPECT_EQ(largestSum,
                      *std::max_element(sum_.begin(), sum_.begin() + static_cast<long>(points)));
            for (std::size_t p = 0; p < count; ++p) {
                float expected = Lowest;
                for (std::size_t i = 0; i < points; ++i) expected = std::max(expected, value(p, i));
                EXPECT_EQ(largest_[p], expected) << count << " pairs, " << points << " points";
            }
        }
    }
}

TEST_F(SumCorrelations, FindsTheLargestAtEveryPoint) {
    for (std::size_t winner = 0; winner < 33; ++winner) {
        std::fill(correlations_[0].begin(), correlations_[0].end(), -0.5f);
        correlations_[0][static_cast<std::size_t>(lags_[0][winner])] = -0.25f;
        EXPECT_EQ(sum(1, 33), -0.25f) << winner;
        EXPECT_EQ(largest_[0], -0.25f) << winner;
    }
}

TEST_F(SumCorrelations, ReadsOneLagPastTheLast) {
    correlations_[0][16384] = 123.0f;
    lags_[0][5] = 16384;
    sum(1, 16);
    EXPECT_EQ(sum_[5], 123.0f);
    EXPECT_EQ(largest_[0], 123.0f);
}

TEST_F(SumCorrelations, StartsItsSearchAtTheLowestFloat) {
    std::fill(correlations_[0].begin(), correlations_[0].end(), NAN);
    EXPECT_EQ(sum(1, 20), Lowest);
    EXPECT_EQ(largest_[0], Lowest);
    correlations_[0][static_cast<std::size_t>(lags_[0][7])] = -3.0e38f;
    EXPECT_EQ(sum(1, 20), -3.0e38f);
    EXPECT_EQ(largest_[0], -3.0e38f);
}

TEST_F(SumCorrelations, OfNoPairIsTheLowestFloatAndWritesNothing) {
    EXPECT_EQ(sum(0, 16), Lowest);
    for (std::size_t i = 0; i < 16; ++i) EXPECT_TRUE(std::isnan(sum_[i])) << i;
}

int firstMaximum(const std::vector<float>& sum) {
    const int points = static_cast<int>(sum.size());
    return voxloc::firstMaximum(sum.data(), points, voxloc::largestOf(sum.data(), points));
}

TEST(FirstMaximum, FindsTheWinnerWhereverItIs) {
    for (const std::size_t size : {1U, 2U, 5U, 8U, 9U, 227U, 10896U, 29737U}) {
        for (const std::size_t winner : {std::size_t{0}, size / 2, size - 1}) {
            std::vector<float> sum(size, -1.0f);
            sum[winner] = -0.5f;
            EXPECT_EQ(firstMaximum(sum), static_cast<int>(winner)) << size;
        }
    }
}

TEST(FirstMaximum, FindsEveryWinnerOfASmallGrid) {
    for (std::size_t winner = 0; winner < 67; ++winner) {
        std::vector<float> sum(67, 0.0f);
        sum[winner] = 1e-30f;
        EXPECT_EQ(firstMaximum(sum), static_cast<int>(winner));
    }
}

TEST(FirstMaximum, TakesTheFirstOfEquals) {
    for (std::size_t first = 0; first < 40; ++first) {
        std::vector<float> sum(64, 0.0f);
        sum[first] = 2.0f;
        for (std::size_t later = first + 1; later < 64; later += 3) sum[later] = 2.0f;
        EXPECT_EQ(firstMaximum(sum), static_cast<int>(first));
    }
}

TEST(FirstMaximum, OfAFlatGridIsItsFirstPoint) {
    for (const float level : {0.0f, -0.0f, -7.0f, 3.0e38f, Lowest}) {
        EXPECT_EQ(firstMaximum(std::vector<float>(1000, level)), 0) << level;
    }
}

TEST(FirstMaximum, PassesOverNaN) {
    std::vector<float> sum(100, NAN);
    EXPECT_EQ(firstMaximum(sum), 0);
    sum[57] = -5.0f;
    EXPECT_EQ(firstMaximum(sum), 57);
    std::vector<float> below(100, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(firstMaximum(below), 0);
    below[99] = std::numeric_limits<float>::infinity();
    EXPECT_EQ(firstMaximum(below), 99);
}

class FlatRangeRows : public ::testing::Test {
  protected:
    voxloc::RangeRows rows(int peak) const { return voxloc::flatRangeRows(sum_.data(), peak); }
    float& at(int row, int column) { return sum_[static_cast<std::size_t>(row * 227 + column)]; }
    std::vector<float> sum_ = std::vector<float>(AzimuthRangePoints, 0.0f);
};

TEST_F(FlatRangeRows, OfALonePeakAreItsRow) {
    for (int peak = 0; peak < AzimuthRangePoints; ++peak) {
        sum_[static_cast<std::size_t>(peak)] = 1.0f;
        const voxloc::RangeRows found = rows(peak);
        ASSERT_EQ(found.first, peak / 227) << peak;
        ASSERT_EQ(found.last, peak / 227) << peak;
        sum_[static_cast<std::size_t>(peak)] = 0.0f;
    }
}

TEST_F(FlatRangeRows, CoverTheWholeColumnOfAnAllZeroGrid) {
    for (int column = 0; column < 227; ++column) {
        EXPECT_EQ(rows(column).first, 0) << column;
        EXPECT_EQ(rows(column).last, 47) << column;
    }
}

TEST_F(FlatRangeRows, CoverTheRowsThatMatchThePeak) {
    at(10, 100) = at(11, 100) = at(12, 100) = 0.75f;
    const voxloc::RangeRows found = rows(10 * 227 + 100);
    EXPECT_EQ(found.first, 10);
    EXPECT_EQ(found.last, 12);
}

TEST_F(FlatRangeRows, StopAtTheFirstRowThatDiffers) {
    at(10, 100) = at(11, 100) = at(13, 100) = 0.75f;
    EXPECT_EQ(rows(10 * 227 + 100).last, 11);
}

TEST_F(FlatRangeRows, LookAtTheirOwnColumnOnly) {
    at(10, 100) = at(10, 101) = at(11, 99) = at(11, 101) = 0.75f;
    EXPECT_EQ(rows(10 * 227 + 100).last, 10);
}

TEST_F(FlatRangeRows, RunToTheLastRow) {
    at(46, 226) = at(47, 226) = 0.75f;
    EXPECT_EQ(rows(46 * 227 + 226).last, 47);
    EXPECT_EQ(rows(47 * 227 + 226).last, 47);
}

// Up to 1e-7 apart counts as equal, on either side and at the limit itself.
TEST_F(FlatRangeRows, TakeDifferencesUpToTheToleranceForEqual) {
    sum_.assign(sum_.size(), -1.0f);
    at(20, 50) = 0.0f;
    for (const float sign : {1.0f, -1.0f}) {
        at(21, 50) = sign * 1e-7f;
        EXPECT_EQ(rows(20 * 227 + 50).last, 21) << sign;
        at(21, 50) = sign * std::nextafter(1e-7f, 1.0f);
        EXPECT_EQ(rows(20 * 227 + 50).last, 20) << sign;
    }
}

// The run is compared with the peak, not from row to row.
TEST_F(FlatRangeRows, CompareWithThePeak) {
    sum_.assign(sum_.size(), -1.0f);
    at(20, 50) = 0.0f;
    at(21, 50) = -0.8e-7f;
    at(22, 50) = -1.6e-7f;
    EXPECT_EQ(rows(20 * 227 + 50).last, 21);
}

TEST_F(FlatRangeRows, WalkOverNaN) {
    sum_.assign(sum_.size(), -1.0f);
    at(20, 50) = 1.0f;
    at(21, 50) = NAN;
    EXPECT_EQ(rows(20 * 227 + 50).last, 21);
}

}  // namespace

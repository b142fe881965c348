#include "gridSearch.h"

#include <cmath>
#include <cstddef>

#include "dsplib/simd/simdLanes.h"
#include "grids.h"

namespace voxloc {

namespace {

constexpr int Width = simd::StreamLanes;
using Vector = simd::F32<Width>;
using Lanes = simd::Lanes<Width>;
static_assert(Lanes::GatherWindow <= GatherWindow, "vectors read past the kept correlations");

constexpr float LowestFloat = -3.4028235e38f;
constexpr float RowsPerPoint = 0.004405286f;  // 1/227, one row holds all azimuths
constexpr float FlatTolerance = 1e-7f;        // of the summed correlation

/** Half a point in: the constant is a little short, and would put a row's start into the row
 * before. */
int rowOf(int point) {
    return static_cast<int>(std::floor((static_cast<float>(point) + 0.5f) * RowsPerPoint));
}

/**
 * The whole vectors of the grid, and for what is left the last whole vector that ends with the
 * grid: summing a point twice changes nothing.
 */
template <std::size_t Pairs>
float sumPairs(const PairContribution* pairs, int points, float* sum, float* largest) {
    Vector best[Pairs];
    for (Vector& v : best) v = Lanes::splat(LowestFloat);
    Vector bestSum = Lanes::splat(LowestFloat);
    const auto sumAt = [&](int i) {
        Vector total = Lanes::gather(pairs[0].correlation, pairs[0].lags + i);
        best[0] = simd::larger(total, best[0]);
        for (std::size_t p = 1; p < Pairs; ++p) {
            const Vector value = Lanes::gather(pairs[p].correlation, pairs[p].lags + i);
            best[p] = simd::larger(value, best[p]);
            total = simd::add(total, value);
        }
        bestSum = simd::larger(total, bestSum);
        Lanes::store(sum + i, total);
    };
    for (int i = 0; i + Width <= points; i += Width) sumAt(i);
    sumAt(points - Width);
    for (std::size_t p = 0; p < Pairs; ++p) largest[p] = simd::largestLane(best[p]);
    return simd::largestLane(bestSum);
}

}  // namespace

float SP_SIMD_HERE::sumCorrelations(const PairContribution* pairs, int count, int points,
                                    float* sum, float* largest) {
    static_assert(MaxPairsPerMap == 8, "one case for each count");
    switch (count) {
        case 1:
            return sumPairs<1>(pairs, points, sum, largest);
        case 2:
            return sumPairs<2>(pairs, points, sum, largest);
        case 3:
            return sumPairs<3>(pairs, points, sum, largest);
        case 4:
            return sumPairs<4>(pairs, points, sum, largest);
        case 5:
            return sumPairs<5>(pairs, points, sum, largest);
        case 6:
            return sumPairs<6>(pairs, points, sum, largest);
        case 7:
            return sumPairs<7>(pairs, points, sum, largest);
        case 8:
            return sumPairs<8>(pairs, points, sum, largest);
        default:
            return LowestFloat;
    }
}

float SP_SIMD_HERE::largestOf(const float* sum, int points) {
    // Four maxima at a time, since each has to wait for the one before.
    Vector best[4];
    for (Vector& v : best) v = Lanes::splat(LowestFloat);
    const int whole = points - points % (4 * Width);
    for (int i = 0; i < whole; i += 4 * Width) {
        const float* at = sum + i;
        for (Vector& v : best) {
            v = simd::larger(Lanes::load(at), v);
            at += Width;
        }
    }
    float largest = simd::largestLane(
        simd::larger(simd::larger(best[0], best[1]), simd::larger(best[2], best[3])));
    for (int i = whole; i < points; ++i) largest = simd::larger(sum[i], largest);
    return largest;
}

int SP_SIMD_HERE::firstMaximum(const float* sum, int points, float largest) {
    if (!(largest > LowestFloat)) return 0;
    constexpr int block = 512;  // points looked at together until the right ones are found
    int index = 0;
    while (index + block <= points && largestOf(sum + index, block) < largest) index += block;
    while (index < points - 1 && sum[index] != largest) ++index;
    return index;
}

RangeRows SP_SIMD_HERE::flatRangeRows(const float* azimuthRangeSum, int peak) {
    RangeRows rows = {rowOf(peak), rowOf(peak)};
    for (int j = peak + AzimuthCount; j < AzimuthRangePoints; j += AzimuthCount) {
        if (std::fabs(azimuthRangeSum[j] - azimuthRangeSum[peak]) > FlatTolerance) break;
        rows.last = rowOf(j);
    }
    return rows;
}

}  // namespace voxloc

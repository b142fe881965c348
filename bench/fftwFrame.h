/**
 * The peer of voxloc_calculate: the localisation of a frame without the detectors, written on FFTW
 * single precision as an engineer would who wants it fast and has the library's transforms.
 *
 * What makes it fast: measured plans for complex transforms of half the size (faster than the
 * library's own real ones) on separate planes of real and imaginary parts, so that every pass runs
 * through contiguous floats; the split pass of the forward transform fused with the noise power and
 * the weights and limited to the bins that a pair uses; cross-spectrum, smoothing, phase transform
 * and inverse split in one pass a pair that writes only the bins that are not zero; all pairs of a
 * grid gathered in one pass that also finds the first maximum.
 *
 * What it leaves out: all detectors, whose decisions it is handed, the pairs' peak values, and the
 * damping of the loudspeaker's zone, which the geometry that it is compared on does not use.
 */
#ifndef VOXLOC_BENCH_FFTW_FRAME_H
#define VOXLOC_BENCH_FFTW_FRAME_H

#include <fftw3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "models/geometryModel.h"
#include "plainTables.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

struct PeerPosition {
    float azimuth, elevation, range;  // degrees, degrees, metres
    float quality;
};

/** What the module's detectors said about a frame. */
struct Decisions {
    bool voice, tdVoice, farEnd;
};

class FftwFrame {
  public:
    /** An array with three elevation and three azimuth pairs without loudspeaker damping. */
    explicit FftwFrame(const VoxlocArray& array);
    ~FftwFrame();
    FftwFrame(const FftwFrame&) = delete;
    FftwFrame& operator=(const FftwFrame&) = delete;

    /** frame: as for voxloc_calculate with 24 significant bits. */
    PeerPosition calculate(const float* frame, const Decisions& decisions);

  private:
    static constexpr int AnalysisSamples = 2 * FRAME_SAMPLES;
    static constexpr int AnalysisHalf = AnalysisSamples / 2;         // complex points
    static constexpr int CorrelationHalf = 4 * AnalysisSamples / 2;  // complex points, upsampled
    static constexpr int AzimuthCount = reference::Azimuths;
    static constexpr int AzimuthElevationPoints = reference::Elevations * AzimuthCount;
    static constexpr int AzimuthRangePoints = reference::RangeSteps * AzimuthCount;
    static constexpr int EndBin = 1452;  // one past the highest bin that is not 0
    static constexpr int GridPairs = 3;  // pairs a grid
    // A plane of a correlation: its even or its odd lags, and lag 16384, which is read, too.
    static constexpr int PaddedPlane = CorrelationHalf + 16;

    using Bins = std::array<float, EndBin>;
    struct Channel {
        alignas(64) Bins re, im, noisePower, weight;
        alignas(64) float older[FRAME_SAMPLES], newer[FRAME_SAMPLES];  // the analysis block
    };
    struct Pair {
        std::size_t first, second;
        int lowestBin;
        alignas(64) Bins re, im;  // smoothed cross-spectrum
        alignas(64) std::array<std::int32_t, EndBin> counter;
    };
    struct SplitTables {
        alignas(64) Bins aRe, aIm, bRe, bIm;
    };
    struct Peak {
        int index;
        float value;
    };
    struct FftwFree {
        void operator()(void* memory) const { fftwf_free(memory); }
    };
    using FftwBuffer = std::unique_ptr<float[], FftwFree>;

    void analyse(Channel& channel);
    void splitAndWeigh(Channel& channel);
    void combine(Pair& pair, float gate, std::int32_t timeoutLimit);
    void correlate(Pair* gridPairs, float gate, std::int32_t timeoutLimit);
    Peak search(const std::int16_t* places, int points, float* sums) const;
    float rangeOf(const Peak& peak) const;
    void append(const float* frame);

    int lowestBin;
    PlainTables tables;
    std::vector<Channel> channels;
    std::array<Pair, 2 * GridPairs> pairs;  // elevation pairs first
    SplitTables forward, inverse;
    alignas(64) float window[AnalysisSamples];  // with the scale of the samples
    FftwBuffer block, spectrum;                 // two planes of AnalysisHalf each
    FftwBuffer upsampled;     // two planes of CorrelationHalf each, zero but for the used bins
    FftwBuffer correlations;  // [GridPairs][2 planes][PaddedPlane]
    alignas(64) float azimuthRangeSums[AzimuthRangePoints];
    fftwf_plan forwardPlan, inversePlan;
};

}  // namespace voxloc_bench

#endif

#include "fftwFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "voxloc/voxloc.h"

// The planes that a pass reads and writes are different ones; without the hint the compiler gives
// up on telling so many of them apart.
#ifdef __clang__
#define INDEPENDENT_ITERATIONS _Pragma("clang loop vectorize(assume_safety)")
#else
#define INDEPENDENT_ITERATIONS _Pragma("GCC ivdep")
#endif

namespace voxloc_bench {

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr float DegreesPerRadian = 57.295776f;
constexpr float SampleScale = 0x1p-23f;

constexpr float RisingRate = 0.014121801f, FallingRate = 0.5981308f;  // of the noise power
constexpr float SilentPower = 1e-7f, NoiseMargin = 9.0f;
constexpr float WeightGain = 1.25f, LargestWeight = 0.5f, SmallestWeight = 1e-7f;
constexpr float SmallestMagnitude2 = 1e-14f;
constexpr float FlatTolerance = 1e-7f;
constexpr std::int32_t ShortTimeout = 2, SpeechTimeout = 35;  // frames

float* newBuffer(int floats) {
    auto* buffer =
        static_cast<float*>(fftwf_malloc(static_cast<std::size_t>(floats) * sizeof(float)));
    if (buffer == nullptr) std::abort();
    std::fill_n(buffer, floats, 0.0f);
    return buffer;
}

/** A transform of the planes at `in` and `in + inPlane` to those at `out` and `out + outPlane`. */
fftwf_plan newPlan(int points, float* in, int inPlane, float* out, int outPlane) {
    const fftwf_iodim size = {points, 1, 1};
    return fftwf_plan_guru_split_dft(1, &size, 0, nullptr, in, in + inPlane, out, out + outPlane,
                                     FFTW_PATIENT);
}

/** Lags to places in a correlation's two planes: even lags first. */
void lagsToPlaces(std::vector<std::int16_t>& lags, int plane) {
    for (std::int16_t& lag : lags) lag = static_cast<std::int16_t>(lag / 2 + (lag % 2) * plane);
}

}  // namespace

FftwFrame::FftwFrame(const VoxlocArray& array)
    : lowestBin(EndBin),
      tables(plainGrids(array)),
      channels(static_cast<std::size_t>(array.channels)),
      pairs(),
      block(newBuffer(AnalysisSamples)),
      spectrum(newBuffer(AnalysisSamples)),
      upsampled(newBuffer(2 * CorrelationHalf)),
      correlations(newBuffer(GridPairs * 2 * PaddedPlane)),
      forwardPlan(newPlan(AnalysisHalf, block.get(), AnalysisHalf, spectrum.get(), AnalysisHalf)),
      // With the planes exchanged a forward transform is an inverse one.
      inversePlan(newPlan(CorrelationHalf, upsampled.get() + CorrelationHalf, -CorrelationHalf,
                          correlations.get() + PaddedPlane, -PaddedPlane)) {
    if (array.elevationPairs != GridPairs || array.azimuthPairs != GridPairs ||
        array.attenuateLoudspeaker != 0) {
        std::abort();
    }
    std::fill_n(upsampled.get(), 2 * CorrelationHalf, 0.0f);  // planning writes to the buffers
    std::fill_n(correlations.get(), GridPairs * 2 * PaddedPlane, 0.0f);
    fillHoistedTables(array, tables);
    lagsToPlaces(tables.azimuthElevation, PaddedPlane);
    lagsToPlaces(tables.azimuthRange, PaddedPlane);
    for (std::size_t p = 0; p < pairs.size(); ++p) {
        const VoxlocPair pair =
            p < GridPairs ? array.elevationPair[p] : array.azimuthPair[p - GridPairs];
        pairs[p].first = static_cast<std::size_t>(pair.first);
        pairs[p].second = static_cast<std::size_t>(pair.second);
        std::uint16_t upper, lower;
        voxloc_setCutoffCoefficients(&array.microphone[pairs[p].first],
                                     &array.microphone[pairs[p].second], &upper, &lower);
        pairs[p].lowestBin = lower;
        lowestBin = std::min<int>(lowestBin, lower);
    }
    voxloc_generateHammingWindow(window);
    for (float& factor : window) factor *= SampleScale;
    for (std::size_t k = 0; k < EndBin; ++k) {
        const double angle = Pi * static_cast<double>(k) / AnalysisHalf;
        forward.aRe[k] = static_cast<float>(0.5 * (1.0 - std::sin(angle)));
        forward.aIm[k] = static_cast<float>(-0.5 * std::cos(angle));
        forward.bRe[k] = static_cast<float>(0.5 * (1.0 + std::sin(angle)));
        forward.bIm[k] = static_cast<float>(0.5 * std::cos(angle));
        // The factors of bin k at points k and CorrelationHalf - k of the half-size spectrum, with
        // the scale of the inverse transform.
        const double upsampledAngle = Pi * static_cast<double>(k) / CorrelationHalf;
        const double scale = 0.5 / CorrelationHalf;
        inverse.aRe[k] = static_cast<float>(scale * (1.0 - std::sin(upsampledAngle)));
        inverse.aIm[k] = static_cast<float>(-scale * std::cos(upsampledAngle));
        inverse.bRe[k] = static_cast<float>(scale * (1.0 + std::sin(upsampledAngle)));
        inverse.bIm[k] = static_cast<float>(-scale * std::cos(upsampledAngle));
    }
}

FftwFrame::~FftwFrame() {
    fftwf_destroy_plan(forwardPlan);
    fftwf_destroy_plan(inversePlan);
}

void FftwFrame::splitAndWeigh(Channel& channel) {
    const float* pointsRe = spectrum.get();
    const float* pointsIm = spectrum.get() + AnalysisHalf;
    INDEPENDENT_ITERATIONS
    for (int k = lowestBin; k < EndBin; ++k) {
        const auto b = static_cast<std::size_t>(k);
        const float zr = pointsRe[k], zi = pointsIm[k];
        const float yr = pointsRe[AnalysisHalf - k], yi = pointsIm[AnalysisHalf - k];
        const float re =
            zr * forward.aRe[b] - zi * forward.aIm[b] + yr * forward.bRe[b] + yi * forward.bIm[b];
        const float im =
            zi * forward.aRe[b] + zr * forward.aIm[b] + yr * forward.bIm[b] - yi * forward.bRe[b];
        channel.re[b] = re;
        channel.im[b] = im;
        const float power = re * re + im * im;
        float estimate = channel.noisePower[b];
        estimate += (power - estimate) * (estimate < power ? RisingRate : FallingRate);
        channel.noisePower[b] = estimate;
        float weight = (power - NoiseMargin * estimate) * WeightGain / power;
        weight = weight < LargestWeight ? weight : LargestWeight;
        weight = weight > 0.0f ? weight : 0.0f;
        channel.weight[b] = power > SilentPower ? weight : 0.0f;
    }
}

void FftwFrame::analyse(Channel& channel) {
    float* even = block.get();
    float* odd = block.get() + AnalysisHalf;
    constexpr int half = FRAME_SAMPLES / 2;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < half; ++i) {
        even[i] = channel.older[2 * i] * window[2 * i];
        odd[i] = channel.older[2 * i + 1] * window[2 * i + 1];
    }
    const float* newerWindow = window + FRAME_SAMPLES;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < half; ++i) {
        even[half + i] = channel.newer[2 * i] * newerWindow[2 * i];
        odd[half + i] = channel.newer[2 * i + 1] * newerWindow[2 * i + 1];
    }
    fftwf_execute(forwardPlan);
    splitAndWeigh(channel);
}

/** Cross-spectrum, smoothing, phase transform and inverse split in one pass. */
void FftwFrame::combine(Pair& pair, float gate, std::int32_t timeoutLimit) {
    const Channel& first = channels[pair.first];
    const Channel& second = channels[pair.second];
    float* lowRe = upsampled.get();
    float* lowIm = upsampled.get() + CorrelationHalf;
    float* highRe = upsampled.get() + CorrelationHalf;  // from the end downwards
    float* highIm = upsampled.get() + 2 * CorrelationHalf;
    // What a pair of wider spacing left below this pair's lowest bin.
    for (int k = lowestBin; k < pair.lowestBin; ++k) {
        lowRe[k] = lowIm[k] = highRe[-k] = highIm[-k] = 0.0f;
    }
    const float* aRe = inverse.aRe.data();
    const float* aIm = inverse.aIm.data();
    const float* bRe = inverse.bRe.data();
    const float* bIm = inverse.bIm.data();
    const float* firstRe = first.re.data();
    const float* firstIm = first.im.data();
    const float* secondRe = second.re.data();
    const float* secondIm = second.im.data();
    const float* firstWeight = first.weight.data();
    const float* secondWeight = second.weight.data();
    float* smoothedRe = pair.re.data();
    float* smoothedIm = pair.im.data();
    std::int32_t* counter = pair.counter.data();
    INDEPENDENT_ITERATIONS
    for (int k = pair.lowestBin; k < EndBin; ++k) {
        const float crossRe = firstRe[k] * secondRe[k] + firstIm[k] * secondIm[k];
        const float crossIm = firstIm[k] * secondRe[k] - firstRe[k] * secondIm[k];
        const float smaller = firstWeight[k] < secondWeight[k] ? firstWeight[k] : secondWeight[k];
        const float weight = gate * smaller;
        const std::int32_t held = counter[k] + 1;
        const std::int32_t count = weight < SmallestWeight ? held : 0;
        const bool kept = count < timeoutLimit;
        counter[k] = kept ? count : 0;
        const float keep = kept ? 1.0f : 0.0f;
        const float re = keep * (weight * crossRe + (1.0f - weight) * smoothedRe[k]);
        const float im = keep * (weight * crossIm + (1.0f - weight) * smoothedIm[k]);
        smoothedRe[k] = re;
        smoothedIm[k] = im;
        const float magnitude2 = re * re + im * im;
        const float perMagnitude =
            magnitude2 > SmallestMagnitude2 ? 1.0f / std::sqrt(magnitude2) : 0.0f;
        const float wr = re * perMagnitude, wi = im * perMagnitude;
        lowRe[k] = wr * aRe[k] + wi * aIm[k];
        lowIm[k] = wi * aRe[k] - wr * aIm[k];
        highRe[-k] = wr * bRe[k] - wi * bIm[k];
        highIm[-k] = -wr * bIm[k] - wi * bRe[k];
    }
}

/** Leaves the correlations of a grid's pairs side by side. */
void FftwFrame::correlate(Pair* gridPairs, float gate, std::int32_t timeoutLimit) {
    for (int p = 0; p < GridPairs; ++p) {
        combine(gridPairs[p], gate, timeoutLimit);
        float* correlation = correlations.get() + p * 2 * PaddedPlane;
        fftwf_execute_split_dft(inversePlan, upsampled.get() + CorrelationHalf, upsampled.get(),
                                correlation + PaddedPlane, correlation);
    }
}

/** All pairs of a grid in one pass; sums may be null. */
FftwFrame::Peak FftwFrame::search(const std::int16_t* places, int points, float* sums) const {
    const float* correlation = correlations.get();
    Peak peak = {0, -3.4028235e38f};
    float rowSums[AzimuthCount];
    for (int row = 0; row < points; row += AzimuthCount) {
        float* sum = sums != nullptr ? sums + row : rowSums;
        const std::int16_t* rowPlaces = places + row;
        for (int i = 0; i < AzimuthCount; ++i) {
            float value = correlation[rowPlaces[i]];
            for (int p = 1; p < GridPairs; ++p) {
                value += correlation[p * 2 * PaddedPlane + rowPlaces[p * points + i]];
            }
            sum[i] = value;
        }
        constexpr int lanes = 16;
        float largest[lanes];
        std::copy_n(sum, lanes, largest);
        for (int i = lanes; i + lanes <= AzimuthCount; i += lanes) {
            for (int lane = 0; lane < lanes; ++lane) {
                largest[lane] = sum[i + lane] > largest[lane] ? sum[i + lane] : largest[lane];
            }
        }
        float rowPeak = *std::max_element(largest, largest + lanes);
        for (int i = AzimuthCount / lanes * lanes; i < AzimuthCount; ++i) {
            rowPeak = std::max(rowPeak, sum[i]);
        }
        if (rowPeak > peak.value) {
            const auto index = std::find(sum, sum + AzimuthCount, rowPeak) - sum;
            peak = {row + static_cast<int>(index), rowPeak};
        }
    }
    return peak;
}

/** The middle of the rows where the sum stays as high as at its peak. */
float FftwFrame::rangeOf(const Peak& peak) const {
    int last = peak.index;
    for (int i = peak.index + AzimuthCount; i < AzimuthRangePoints; i += AzimuthCount) {
        if (std::fabs(azimuthRangeSums[i] - peak.value) > FlatTolerance) break;
        last = i;
    }
    return (tables.ranges[static_cast<std::size_t>(reference::rowOf(peak.index))] +
            tables.ranges[static_cast<std::size_t>(reference::rowOf(last))]) *
           0.5f;
}

/** The position rests on the two frames before the one that is handed in. */
void FftwFrame::append(const float* frame) {
    for (Channel& channel : channels) {
        std::memcpy(channel.older, channel.newer, sizeof channel.older);
        std::memcpy(channel.newer, frame, sizeof channel.newer);
        frame += FRAME_SAMPLES;
    }
}

PeerPosition FftwFrame::calculate(const float* frame, const Decisions& decisions) {
    for (Channel& channel : channels) analyse(channel);
    const float gate = decisions.tdVoice && !decisions.farEnd ? 1.0f : 0.0f;
    const std::int32_t timeout =
        decisions.voice && !decisions.farEnd ? SpeechTimeout : ShortTimeout;
    correlate(pairs.data(), gate, timeout);
    const Peak elevation = search(tables.azimuthElevation.data(), AzimuthElevationPoints, nullptr);
    correlate(pairs.data() + GridPairs, gate, timeout);
    const Peak azimuth = search(tables.azimuthRange.data(), AzimuthRangePoints, azimuthRangeSums);
    append(frame);
    return {
        tables.azimuths[static_cast<std::size_t>(azimuth.index % AzimuthCount)] * DegreesPerRadian,
        tables.elevations[static_cast<std::size_t>(elevation.index / AzimuthCount)] *
            DegreesPerRadian,
        rangeOf(azimuth), azimuth.value + elevation.value};
}

}  // namespace voxloc_bench

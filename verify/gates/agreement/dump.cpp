/**
 * Runs the scenario for every product, the complex FFT and the FIR engine, and writes every
 * result to a text file, bits in hexadecimal, for verify_agreement_compare to compare with the file
 * of another machine:
 *
 *     agreement_dump FILE MACHINE
 *
 * A line is a kind, a key, and words:
 *
 *     machine  NAME  fused|unfused
 *     table    PRODUCT NAME         fingerprint fingerprint-without-tiny-numbers
 *     frame    PRODUCT FRAME        content azimuth elevation range quality flags, then
 *                                   azimuth index, elevation index and the three margins
 *     stage    PRODUCT FRAME NAME   fingerprint fingerprint-without-tiny-numbers
 *     vector   NAME                 the floats of one FFT's or FIR filter's output; the inputs of
 *                                   those named tiny-... make denormal numbers on the way
 *     end
 */
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "choice.h"
#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/sp_fir_neon.h"
#include "fingerprint.h"
#include "scenario.h"
#include "track/noiseLevel.h"
#include "track/timeDomainVad.h"
#include "track/tracker.h"
#include "voxloc/voxloc.h"

namespace {

using namespace voxloc;

std::FILE* Dump;

#if defined(__FMA__) && !defined(SP_SIMD_SCALAR)
constexpr const char* Arithmetic = "fused";
#else
constexpr const char* Arithmetic = "unfused";
#endif

/** An array that is worth a line; named as in the source. */
struct Stage {
    const char* name;
    const float* values;
    int count;
};

void dumpStage(const char* kind, std::int32_t product, int frame, const Stage& stage) {
    const Fingerprint print = fingerprint(stage.values, static_cast<std::size_t>(stage.count));
    std::fprintf(Dump, "%s %d", kind, product);
    if (frame >= 0) std::fprintf(Dump, " %d", frame);
    std::fprintf(Dump, " %s %016" PRIx64 " %016" PRIx64 "\n", stage.name, print.exact,
                 print.withoutTiny);
}

void dumpTables(std::int32_t product) {
    const Tracker& tracker = moduleTracker();
    const TransformTables& tables = tracker.Tables;
    const Stage stages[] = {
        {"HammingWindow", tables.HammingWindow, AnalysisSamples},
        {"TwiddleFactors", tables.TwiddleFactors, AnalysisSamples},
        {"ATable", tables.ATable, AnalysisSamples},
        {"BTable", tables.BTable, AnalysisSamples},
        {"TwiddleFactorsUpsampled", tables.TwiddleFactorsUpsampled, CorrelationLags},
        {"ATableUpsampled", tables.ATableUpsampled, CorrelationLags},
        {"BTableUpsampled", tables.BTableUpsampled, CorrelationLags},
        {"Ranges", tracker.Ranges, RangeCount},
        {"AzimuthAngles", tracker.AzimuthAngles, AzimuthCount},
        {"ElevationAngles", tracker.ElevationAngles, ElevationCount},
    };
    for (const Stage& stage : stages) dumpStage("table", product, -1, stage);

    const auto dumpLags = [product](const char* name, const std::int16_t* lags, int count) {
        const std::vector<float> values(lags, lags + count);
        dumpStage("table", product, -1, {name, values.data(), count});
    };
    dumpLags("AzimuthElevationLookupTable", tracker.AzimuthElevationLookupTable,
             tracker.NumberOfElevationPairs * AzimuthElevationPoints);
    dumpLags("AzimuthRangeLookupTable", tracker.AzimuthRangeLookupTable,
             tracker.NumberOfAzimuthPairs * AzimuthRangePoints);
}

/** The frame's results in the order in which they are made; the first that differs is the cause. */
void dumpStages(std::int32_t product, int frame, const float* samples) {
    const Tracker& tracker = moduleTracker();
    const int pairs = numberOfPairs(tracker);
    const Stage stages[] = {
        {"input", samples, tracker.NumberOfChannels * FRAME_SAMPLES},
        {"EnvelopeOutput", tracker.TimeDomain.EnvelopeOutput, FRAME_SAMPLES},
        {"MedianOutput", tracker.TimeDomain.MedianOutput, FRAME_SAMPLES},
        {"FftResult", tracker.FftResult, tracker.NumberOfChannels * SpectrumFloats},
        {"NoisePowerEstimate", tracker.NoisePowerEstimate, tracker.NumberOfChannels * SpectrumBins},
        {"FrequencyWeight", tracker.FrequencyWeight, tracker.NumberOfChannels * SpectrumBins},
        {"SlowLevel", tracker.Noise.SlowLevel, SpectrumBins},
        {"NoiseLevel", tracker.Noise.NoiseLevel, SpectrumBins},
        {"Numerator", tracker.PreviousNumerator,
         pairs * SpectrumFloats},                           // swapped at the frame's end
        {"FftOutput", tracker.FftOutput, CorrelationLags},  // correlation of the last pair
        {"AzimuthElevationResult", tracker.AzimuthElevationResult, AzimuthElevationPoints},
        {"AzimuthRangeResult", tracker.AzimuthRangeResult, AzimuthRangePoints},
    };
    for (const Stage& stage : stages) dumpStage("stage", product, frame, stage);
}

void dumpFrame(std::int32_t product, int frame, Content content, const TrackerResult& result) {
    const Choice choice = choiceOfFrame(moduleTracker());
    std::fprintf(Dump, "frame %d %d %x", product, frame, static_cast<unsigned>(content));
    std::fprintf(Dump, " %08x %08x %08x %08x %08x", bitsOf(result.azimuth),
                 bitsOf(result.elevation), bitsOf(result.range), bitsOf(result.quality),
                 result.flags);
    std::fprintf(Dump, " %x %x %08x %08x %08x\n", static_cast<unsigned>(choice.azimuth),
                 static_cast<unsigned>(choice.elevation), bitsOf(choice.margins.azimuth),
                 bitsOf(choice.margins.elevation), bitsOf(choice.margins.range));
}

void dumpProduct(std::int32_t product) {
    voxloc_initialize(product);
    dumpTables(product);
    startScenario(product);
    for (int frame = 0; frame < ScenarioFrames; ++frame) {
        const ScenarioFrame input = nextScenarioFrame();
        TrackerResult result;
        voxloc_calculate(input.samples, 24, input.flags, &result);
        dumpFrame(product, frame, input.content, result);
        dumpStages(product, frame, input.samples);
    }
    endScenario();
    voxloc_destroy();
}

void dumpVector(const char* name, int size, int variant, const std::vector<float>& values) {
    std::fprintf(Dump, "vector %s-%d-%d", name, size, variant);
    for (const float value : values) std::fprintf(Dump, " %08x", bitsOf(value));
    std::fputc('\n', Dump);
}

/** Uniform between -size and size, a power of two. */
std::vector<float> randomSignal(int count, std::uint32_t seed, float size = 1.0f) {
    std::vector<float> signal;
    for (int i = 0; i < count; ++i) {
        const auto word = static_cast<std::int32_t>(nextRandom(seed));
        signal.push_back(static_cast<float>(word) * 0x1p-31f * size);
    }
    return signal;
}

/** Every size that the library knows, in both directions. */
void dumpTransforms() {
    for (int log2Size = 0, size = 1; size <= FFT_MAX; ++log2Size, size *= 2) {
        const std::vector<float> input = randomSignal(2 * size, static_cast<std::uint32_t>(size));
        std::vector<float> output(input.size());
        cfft_pow2_conjpair_splitrad_c89(size, log2Size, input.data(), output.data());
        dumpVector("fft", size, 0, output);
        cifft_pow2_conjpair_splitrad_c89(size, log2Size, input.data(), output.data());
        dumpVector("ifft", size, 0, output);
    }
}

/** Output counts that leave every remainder of the engine's blocks of 12, 16 and 32. */
void dumpFilter(int taps) {
    constexpr int mostOutputs = 131;
    const auto seed = static_cast<std::uint32_t>(taps);
    const std::vector<float> input = randomSignal(mostOutputs + taps - 1, seed);
    const std::vector<float> coefficients = randomSignal(taps, ~seed);
    for (int outputs = mostOutputs; outputs > mostOutputs - 32; --outputs) {
        std::vector<float> output(static_cast<std::size_t>(outputs));
        sp_fir_gen(input.data(), coefficients.data(), output.data(), taps, outputs);
        dumpVector("sp_fir_gen", taps, outputs, output);
    }

    std::vector<float> delayLine(static_cast<std::size_t>(taps), 0.0f);
    std::vector<float> output(mostOutputs);
    int position = 0;
    for (int done = 0, block = 1; done < mostOutputs; done += block, block = 2 * block + 1) {
        if (block > mostOutputs - done) block = mostOutputs - done;
        position = sp_fir_filter(input.data() + done, coefficients.data(), delayLine.data(),
                                 position, output.data() + done, taps, block);
    }
    dumpVector("sp_fir_filter", taps, position, output);
}

void dumpFilters() {
    for (int taps = 1; taps <= 20; ++taps) dumpFilter(taps);
    for (const int taps : {23, 24, 31, 32, 33, 48, 63, 100, 127}) dumpFilter(taps);
}

/** Inputs so small that some of the products and sums are denormal. */
void dumpTinyOutputs() {
    constexpr int taps = 24, outputs = 131, log2Size = 6;
    const std::vector<float> input = randomSignal(outputs + taps - 1, 1, 0x1p-64f);
    const std::vector<float> coefficients = randomSignal(taps, 2, 0x1p-64f);
    std::vector<float> output(outputs);
    sp_fir_gen(input.data(), coefficients.data(), output.data(), taps, outputs);
    dumpVector("tiny-sp_fir_gen", taps, outputs, output);

    const std::vector<float> points = randomSignal(2 << log2Size, 3, 0x1p-126f);
    std::vector<float> spectrum(points.size());
    cfft_pow2_conjpair_splitrad_c89(1 << log2Size, log2Size, points.data(), spectrum.data());
    dumpVector("tiny-fft", 1 << log2Size, 0, spectrum);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || (Dump = std::fopen(argv[1], "w")) == nullptr) {
        std::fputs("usage: agreement_dump FILE MACHINE\n", stderr);
        return EXIT_FAILURE;
    }
    std::fprintf(Dump, "machine %s %s\n", argv[2], Arithmetic);
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        dumpProduct(voxloc_getProduct(i)->type);
    }
    dumpTransforms();
    dumpFilters();
    dumpTinyOutputs();
    std::fputs("end\n", Dump);
    const bool failed = std::ferror(Dump) != 0;
    return std::fclose(Dump) == 0 && !failed ? EXIT_SUCCESS : EXIT_FAILURE;
}

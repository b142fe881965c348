#include "stages.h"

#include <chrono>
#include <type_traits>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/sp_fir_neon.h"
#include "track/UltraSoundDistortionDetection.h"
#include "track/crossSpectrum.h"
#include "track/frequencyDomainVad.h"
#include "track/gridSearch.h"
#include "track/noiseLevel.h"
#include "track/phaseTransform.h"
#include "track/timeDomainVad.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

std::array<std::uint64_t, StageCount> StageTicks;

namespace {

Stage current;
std::uint64_t lastChange;

std::uint64_t timeStamp() {
#ifdef __x86_64__
    return __builtin_ia32_rdtsc();  // a third of the price of the library's clock
#else
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

Stage changeTo(Stage next) {
    const std::uint64_t now = timeStamp();
    StageTicks[static_cast<std::size_t>(current)] += now - lastChange;
    lastChange = now;
    const Stage left = current;
    current = next;
    return left;
}

/** Its scope counts for a stage. */
class Within {
  public:
    explicit Within(Stage stage) : caller(changeTo(stage)) {}
    ~Within() { changeTo(caller); }
    Within(const Within&) = delete;
    Within& operator=(const Within&) = delete;

  private:
    Stage caller;
};

}  // namespace

double measureTick() {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const std::uint64_t first = timeStamp();
    while (Clock::now() - start < std::chrono::milliseconds(50)) {
    }
    const std::chrono::duration<double, std::micro> elapsed = Clock::now() - start;
    return elapsed.count() / static_cast<double>(timeStamp() - first);
}

void restartStages() {
    StageTicks = {};
    current = Stage::Remainder;
    lastChange = timeStamp();
}

void stopStages() {
    changeTo(Stage::Remainder);
}

}  // namespace voxloc_bench

// The build reads the symbols from the lines that begin with TIMED. One that no longer exists fails
// to link, a signature that has changed to compile. The names with two underscores are the
// linker's.
#define TIMED(symbol, function, stage, result, parameters, arguments)             \
    extern "C" decltype(function) __real_##symbol;                                \
    extern "C" result __wrap_##symbol parameters;                                 \
    static_assert(std::is_same_v<decltype(__wrap_##symbol), decltype(function)>); \
    result __wrap_##symbol parameters {                                           \
        const voxloc_bench::Within within(voxloc_bench::Stage::stage);            \
        return __real_##symbol arguments;                                         \
    }

using namespace voxloc;
using std::uint8_t;

// clang-format off
TIMED(voxloc_normalizeInput, voxloc_normalizeInput, Normalise, void,
      (const float* frame, float* out, uint32_t bits, int32_t channels), (frame, out, bits, channels))
TIMED(_ZN6voxloc24detectTimeDomainActivityEPKfPh, detectTimeDomainActivity, TimeDomainVoice, void,
      (const float* frame, uint8_t* voice), (frame, voice))
TIMED(sp_fir_gen, sp_fir_gen, Filters, void,
      (const float* x, const float* h, float* y, int taps, int n), (x, h, y, taps, n))
TIMED(voxloc_vectorMultiply, voxloc_vectorMultiply, Window, void,
      (const float* a, const float* b, float* out, int32_t n), (a, b, out, n))
TIMED(voxloc_realFft, voxloc_realFft, ForwardSplit, void,
      (int n, float* in, const float* w, float* out, int radix, const float* a, const float* b, float* work),
      (n, in, w, out, radix, a, b, work))
TIMED(sp_fftSPxSP, sp_fftSPxSP, ForwardTransform, void,
      (int n, float* x, const float* w, float* y, const unsigned char* br, int radix, int o, int m),
      (n, x, w, y, br, radix, o, m))
TIMED(_ZN6voxloc22updateFrequencyWeightsEPKfiPfS2_, updateFrequencyWeights, Weights, void,
      (const float* spectrum, int n, float* power, float* weight), (spectrum, n, power, weight))
TIMED(_ZN6voxloc19calculateNoiseLevelEPKfj, calculateNoiseLevel, NoiseLevel, const float*,
      (const float* spectra, unsigned freeze), (spectra, freeze))
TIMED(_ZN6voxloc29detectFrequencyDomainActivityEPKfS1_PhS2_, detectFrequencyDomainActivity, FrequencyDomainVoice, uint32_t,
      (const float* spectra, const float* noise, uint8_t* voice, uint8_t* sound),
      (spectra, noise, voice, sound))
TIMED(_ZN6voxloc26detectUltraSoundDistortionEPKfPh, detectUltraSoundDistortion, Ultrasound, void,
      (const float* spectra, uint8_t* distorted), (spectra, distorted))
TIMED(_ZN6voxloc19smoothCrossSpectrumERKNS_14MicrophonePairENS_13SmoothingGateERKNS_18MicrophoneSpectrumES6_PKfPfPh, smoothCrossSpectrum, SmoothedCrossSpectra, void,
      (const MicrophonePair& pair, SmoothingGate gate, const MicrophoneSpectrum& a, const MicrophoneSpectrum& b, const float* previous, float* out, uint8_t* counter),
      (pair, gate, a, b, previous, out, counter))
TIMED(_ZN6voxloc13correlateNearEPKfiiiS1_S1_PfS2_, correlateNear, PhaseTransformAndSplit, void,
      (const float* x, int begin, int end, int lags, const float* a, const float* b, float* work, float* out),
      (x, begin, end, lags, a, b, work, out))
TIMED(sp_ifft_ends, sp_ifft_ends, InverseTransform, void, (const float* x, float* y, int wanted), (x, y, wanted))
TIMED(_ZN6voxloc20attenuateLoudspeakerERKNS_14MicrophonePairEPf, attenuateLoudspeaker, LoudspeakerZone, void,
      (const MicrophonePair& pair, float* correlation), (pair, correlation))
TIMED(_ZN6voxloc15sumCorrelationsEPKNS_16PairContributionEiiPfS3_, sumCorrelations, Gather, float,
      (const PairContribution* pairs, int n, int points, float* sum, float* largest),
      (pairs, n, points, sum, largest))
TIMED(_ZN6voxloc12firstMaximumEPKfif, firstMaximum, Maximum, int,
      (const float* sum, int points, float largest), (sum, points, largest))
TIMED(voxloc_overlapInputChannels, voxloc_overlapInputChannels, Overlap, void,
      (float* block, const float* previous, const float* now, int32_t n), (block, previous, now, n))
// clang-format on

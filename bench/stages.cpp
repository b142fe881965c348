#include "stages.h"

#include <chrono>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "dsplib/sp_fir_neon.h"
#include "track/UltraSoundDistortionDetection.h"
#include "track/crossSpectrum.h"
#include "track/frameKernels.h"
#include "track/frameScaling.h"
#include "track/frequencyDomainVad.h"
#include "track/gridSearch.h"
#include "track/loudspeakerZone.h"
#include "track/noiseLevel.h"
#include "track/phaseTransform.h"
#include "track/timeDomainVad.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

std::array<std::uint64_t, StageCount> StageTicks;

namespace {

std::size_t current;
std::uint64_t lastChange;

std::uint64_t timeStamp() {
#ifdef __x86_64__
    return __builtin_ia32_rdtsc();  // a third of the price of the library's clock
#else
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

std::size_t changeTo(std::size_t next) {
    const std::uint64_t now = timeStamp();
    StageTicks[current] += now - lastChange;
    lastChange = now;
    const std::size_t left = current;
    current = next;
    return left;
}

/** Its scope counts for a stage. */
class Within {
  public:
    explicit Within(std::size_t stage) : caller(changeTo(stage)) {}
    ~Within() { changeTo(caller); }
    Within(const Within&) = delete;
    Within& operator=(const Within&) = delete;

  private:
    std::size_t caller;
};

/** A function of any signature, its calls counted for a stage. */
template <class Function, Function* real, std::size_t stage>
struct Timed;

template <class Result, class... Arguments, Result (*real)(Arguments...), std::size_t stage>
struct Timed<Result(Arguments...), real, stage> {
    static Result call(Arguments... arguments) {
        const Within within(stage);
        return real(arguments...);
    }
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
    current = 0;
    lastChange = timeStamp();
}

void stopStages() {
    changeTo(0);
}

}  // namespace voxloc_bench

// Of each listed function: the library's own under the name that the linker gives it, and the name
// that the linker gives to the calls, which the loader resolves to the wrapper. The names with two
// underscores are the linker's.
using namespace voxloc;
#define STAGE(name)
#define TIMED(stage, function, identifier, symbol)                           \
    extern decltype(function) real_##identifier __asm__("__real_" symbol);   \
    extern "C" decltype(&function) wrapperOf_##identifier() {                \
        using namespace voxloc_bench;                                        \
        return Timed<decltype(function), real_##identifier, stage>::call;    \
    }                                                                        \
    extern decltype(function) wrapped_##identifier __asm__("__wrap_" symbol) \
        __attribute__((ifunc("wrapperOf_" #identifier)));
#include "stageList.inc"

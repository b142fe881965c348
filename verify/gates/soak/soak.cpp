/**
 * Trackers that run for a long time: speech, noise, silence and bad samples in turns, minute after
 * minute, for each product; then set-up and release over and over.
 *
 *     soak MINUTES CYCLES
 *
 * Prints a table of what it has seen, and fails when memory grows, when a result or a counter is
 * not what it may be, or when the first minute after a new start is not the first minute again.
 */
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "kit/products.h"
#include "kit/talker.h"
#include "track/tracker.h"
#include "voxloc/voxloc.h"

namespace {

// A minute is eight turns of the same frames, taken for samples of more bits or of fewer: from 24
// dB below what the talker has to 24 dB above.
constexpr std::size_t TurnFrames = 176;
constexpr std::uint32_t BitsOfTurns[] = {24, 24, 22, 26, 24, 20, 24, 28};
constexpr std::size_t MinuteFrames = TurnFrames * std::size(BitsOfTurns);  // 60.07 s
constexpr long MinutesInAnHour = 60;

constexpr std::size_t BadFrame = 40;  // of each turn
constexpr std::size_t BadSamples = 3;

constexpr long MemoryTolerance = 512;  // KiB: what the system counts late

// The sanitiser keeps what is freed for a while, and finds at the end what is not.
#ifdef __SANITIZE_ADDRESS__
constexpr bool IsFreedMemoryKept = true;
#else
constexpr bool IsFreedMemoryKept = false;
#endif

int failures = 0;

[[gnu::format(printf, 2, 3)]] void demand(bool holds, const char* format, ...) {
    if (holds) return;
    constexpr int mostReported = 20;
    if (++failures > mostReported) return;
    va_list args;
    va_start(args, format);
    std::fputs("failed: ", stdout);
    std::vprintf(format, args);
    std::putchar('\n');
    va_end(args);
}

struct Memory {
    long resident;         // KiB
    unsigned long inHeap;  // bytes; 0 where nobody tells
};

Memory memoryNow() {
    long pages = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    const bool isRead = file != nullptr && std::fscanf(file, "%*d %ld", &pages) == 1;
    if (file != nullptr) std::fclose(file);
    demand(isRead, "/proc/self/statm cannot be read");
    constexpr long kibibytesPerPage = 4;
    return {pages * kibibytesPerPage, static_cast<unsigned long>(mallinfo2().uordblks)};
}

void demandNoGrowth(const Memory& before, const Memory& after, const char* what) {
    if (IsFreedMemoryKept) return;
    demand(after.resident - before.resident <= MemoryTolerance,
           "%s: resident memory grew by %ld KiB", what, after.resident - before.resident);
    demand(after.inHeap == before.inHeap, "%s: the heap held %lu bytes and holds %lu", what,
           before.inHeap, after.inHeap);
}

VoxlocTracker* newTracker(const VoxlocProduct& product, long* texts) {
    VoxlocTracker* tracker = voxloc_createProductTracker(product.type, nullptr);
    if (tracker == nullptr) {
        std::puts("failed: no tracker");
        std::exit(EXIT_FAILURE);
    }
    voxloc_setLog(
        tracker, [](void* context, const char*) { ++*static_cast<long*>(context); }, texts);
    return tracker;
}

/** Room noise, talkers, silence, the far end; a few samples that no converter gives. */
kit::Scenario turnOf(const VoxlocProduct& product) {
    voxloc_initialize(product.type);
    kit::Scenario turn = kit::mixedScenario(TurnFrames);
    voxloc_destroy();
    float* bad = turn.samples.data() + BadFrame * turn.frameSamples;
    bad[0] = NAN;
    bad[2047] = INFINITY;
    bad[turn.frameSamples - 1] = -1e30f;
    return turn;
}

void demandGoodResult(const VoxlocProduct& product, const TrackerResult& result) {
    const bool mayHaveNoAzimuth = product.type == PRODUCT_GANNET;  // beyond 90 degrees
    demand(std::isfinite(result.azimuth) || mayHaveNoAzimuth, "%s: azimuth", product.name);
    demand(std::isfinite(result.elevation), "%s: elevation", product.name);
    demand(result.range >= 0.5f && result.range <= 9.91f, "%s: range", product.name);
    const auto pairs =
        static_cast<float>(product.array.azimuthPairs + product.array.elevationPairs);
    demand(result.quality >= 0.0f && result.quality <= pairs, "%s: quality", product.name);
    demand((result.flags & ~0xbfu) == 0, "%s: flags", product.name);
}

/** What is kept from frame to frame: numbers, and counters within their limits. */
void demandGoodState(const VoxlocProduct& product, const voxloc::Tracker& tracker) {
    const auto demandNumbers = [&](const char* name, const float* values, int count) {
        demand(std::all_of(values, values + count, [](float v) { return std::isfinite(v); }),
               "%s: %s", product.name, name);
    };
    const auto demandWithin = [&](const char* name, long value, long most) {
        demand(value >= 0 && value <= most, "%s: %s is %ld", product.name, name, value);
    };
    const int channels = tracker.NumberOfChannels;
    demandNumbers("noise power", tracker.NoisePowerEstimate, channels * voxloc::SpectrumBins);
    demandNumbers("noise level", tracker.Noise.NoiseLevel, voxloc::SpectrumBins);
    demandNumbers("slow level", tracker.Noise.SlowLevel, voxloc::SpectrumBins);
    demandNumbers("median", tracker.TimeDomain.MedianOutput, FRAME_SAMPLES);
    demandNumbers("ultrasound", tracker.UltraSound.UltraSoundLevel, channels);
    demandWithin("NoiseDetectionCounter", tracker.Noise.NoiseDetectionCounter, 32);
    demandWithin("NoiseCountFromBoot", tracker.Noise.NoiseCountFromBoot, 40);
    demandWithin("HangCount", tracker.FrequencyDomain.HangCount, 34);
    demandWithin("AccCount", tracker.UltraSound.AccCount, 19);
    demandWithin("BlockedCounter", tracker.BlockedCounter, 99);
    demandWithin("frames of a spell", tracker.Silenced.framesLeft, voxloc::FramesBetweenSpells);
    const std::uint8_t* counters = tracker.TimeoutCounter;
    const int bins = voxloc::numberOfPairs(tracker) * voxloc::SpectrumBins;
    demandWithin("TimeoutCounter", *std::max_element(counters, counters + bins), 34);
}

std::vector<TrackerResult> playMinute(const VoxlocProduct& product, const kit::Scenario& turn,
                                      VoxlocTracker* tracker) {
    std::vector<TrackerResult> results;
    for (const std::uint32_t bits : BitsOfTurns) {
        for (std::size_t i = 0; i < turn.frames(); ++i) {
            TrackerResult result = {};
            voxloc_track(tracker, turn.frame(i), bits, turn.flags[i], &result);
            demandGoodResult(product, result);
            results.push_back(result);
        }
    }
    demandGoodState(product, tracker->tracker);
    return results;
}

void soakProduct(const VoxlocProduct& product, long minutes) {
    const kit::Scenario turn = turnOf(product);
    long texts = 0;
    VoxlocTracker* tracker = newTracker(product, &texts);
    const std::vector<TrackerResult> first = playMinute(product, turn, tracker);
    const Memory before = memoryNow();
    const std::clock_t start = std::clock();
    for (long minute = 1; minute < minutes; ++minute) playMinute(product, turn, tracker);
    const auto clocks = static_cast<double>(std::clock() - start);
    const Memory after = memoryNow();
    demandNoGrowth(before, after, product.name);

    const auto frames = static_cast<long>(MinuteFrames) * minutes;
    const auto silenced = static_cast<long>(voxloc_getTrackerSilencedSamples(tracker));
    const auto turns = static_cast<long>(std::size(BitsOfTurns)) * minutes;
    demand(silenced == turns * static_cast<long>(BadSamples), "%s: %ld samples silenced",
           product.name, silenced);
    demand(texts >= turns && texts <= 10 * turns, "%s: %ld texts", product.name, texts);
    voxloc_destroyTracker(tracker);

    long ignored = 0;
    tracker = newTracker(product, &ignored);
    const std::vector<TrackerResult> again = playMinute(product, turn, tracker);
    demand(std::memcmp(again.data(), first.data(), first.size() * sizeof first[0]) == 0,
           "%s: a new start gives another first minute", product.name);
    voxloc_destroyTracker(tracker);
    const auto timed = static_cast<double>(std::max(frames - long{MinuteFrames}, 1L));
    const double each = clocks / CLOCKS_PER_SEC * 1e6 / timed;  // microseconds
    std::printf("%-10s %8ld %7.1f %13ld %13ld %9ld %6ld\n", product.name, frames, each,
                before.resident, after.resident, silenced, texts);
}

/** A tone without a pause, through both ends of the voice detector's counter. */
void soakVoice() {
    constexpr int frames = 65600, firstVoice = 8, lastOfBurst = 32768, hangover = 34;
    constexpr int voiceAgain = firstVoice + 65536;
    long ignored = 0;
    const VoxlocProduct& product = *voxloc_findProduct(PRODUCT_FOXGLOVE);
    VoxlocTracker* tracker = newTracker(product, &ignored);
    std::vector<float> frame(static_cast<std::size_t>(product.array.channels) * FRAME_SAMPLES);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] = static_cast<float>(
            1e5 * std::sin(6.283185307179586 * 36.0 / 4096.0 * static_cast<double>(i % 2048)));
    }
    for (int i = 1; i <= frames; ++i) {
        TrackerResult result = {};
        voxloc_track(tracker, frame.data(), kit::SignificantBits, 1u << VOXLOC_INPUT_NOISE_FLAG,
                     &result);
        const bool isDue = (i >= firstVoice && i <= lastOfBurst + hangover) || i >= voiceAgain;
        demand((voxloc_getFlag(VOXLOC_FLAG_VOICE, result.flags) == 1) == isDue,
               "voice without a pause, frame %d", i);
    }
    voxloc_destroyTracker(tracker);
    std::printf("voice      %8d frames without a pause: %d with voice, none, and voice again\n",
                frames, lastOfBurst + hangover - firstVoice + 1);
}

/** The products in turn, each as the module and as a tracker of one's own. */
void soakCycles(long cycles) {
    const std::vector<VoxlocProduct> products = kit::products();
    const std::vector<float> frame(VOXLOC_MAX_CHANNELS * FRAME_SAMPLES, 1000.0f);
    Memory before = {};
    long ignored = 0;
    for (long i = 0; i < cycles; ++i) {
        if (i == cycles / 10) before = memoryNow();
        const VoxlocProduct& product = products[static_cast<std::size_t>(i) % products.size()];
        TrackerResult result = {};
        if (i / static_cast<long>(products.size()) % 2 == 0) {
            voxloc_initialize(product.type);
            voxloc_calculate(frame.data(), kit::SignificantBits, 0, &result);
            voxloc_destroy();
        } else {
            VoxlocTracker* tracker = newTracker(product, &ignored);
            voxloc_track(tracker, frame.data(), kit::SignificantBits, 0, &result);
            voxloc_destroyTracker(tracker);
        }
    }
    const Memory after = memoryNow();
    demandNoGrowth(before, after, "cycles");
    std::printf("cycles     %8ld %21ld %13ld\n", cycles, before.resident, after.resident);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s MINUTES CYCLES\n", argv[0]);
        return EXIT_FAILURE;
    }
    const long minutes = std::strtol(argv[1], nullptr, 10);
    const long cycles = std::strtol(argv[2], nullptr, 10);
    std::puts("             frames us each    begin (KiB)      end (KiB)  silenced  texts");
    if (minutes > 0) {
        for (const VoxlocProduct& product : kit::products()) soakProduct(product, minutes);
    }
    if (minutes >= MinutesInAnHour) soakVoice();
    if (cycles > 0) soakCycles(cycles);
    if (failures > 0) std::printf("%d failures\n", failures);
    return failures > 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

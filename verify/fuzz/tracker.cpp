// The module as any sequence of calls that keeps its preconditions, on frames of any bits: nothing
// is touched that should not be, a recording holds whole records, and after sound that converters
// give the results are those that the header promises.

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fuzz.h"
#include "voxloc/voxloc.h"

namespace {

constexpr int MostFrames = 5, MostCalls = 24;
constexpr std::size_t DrawnFloats = 96;
constexpr float FullScale = 16777216.0f;  // twice: no converter gives more
constexpr std::uint32_t KnownFlags = 0xBF;

/** What has been called. */
struct State {
    int product = -1;        // that the module is initialised for, or -1
    bool isOrdinary = true;  // all frames since then were such as converters give
    int frames = 0;
    int recording = -1;  // the file of the recording, or -1
};

bool areSamples(const std::vector<float>& frame) {
    return std::all_of(frame.begin(), frame.end(),
                       [](float sample) { return std::abs(sample) <= FullScale; });
}

/** A sample of any bits at any place; the rest of the frame may be sound. */
void spoil(InputReader& input, std::vector<float>& frame) {
    const auto place = input.take<std::uint32_t>() % frame.size();
    frame[place] = input.take<float>();
}

void checkResult(const State& state, const TrackerResult& result) {
    demand((result.flags & ~KnownFlags) == 0, "flags that there are");
    if (!state.isOrdinary) return;
    demand(std::abs(result.azimuth) <= 90.0f ||
               (state.product == PRODUCT_GANNET && std::isnan(result.azimuth)),
           "an azimuth");
    demand(std::abs(result.elevation) <= 90.0f, "an elevation");
    demand(result.range >= 0.49f && result.range <= 9.91f, "a range");
    demand(std::isfinite(result.quality), "a quality");
}

void calculate(InputReader& input, State& state) {
    if (state.product < 0 || state.frames >= MostFrames) return;
    ++state.frames;
    const std::uint32_t bits = input.below(4) == 0 ? input.take<std::uint32_t>()
                                                   : 16 + 8 * (input.take<std::uint8_t>() & 1);
    const std::uint32_t flags = input.take<std::uint32_t>();
    std::vector<float> frame =
        input.floats(voxloc_getNumberOfChannels() * FRAME_SAMPLES, DrawnFloats);
    if (input.below(3) == 0) spoil(input, frame);
    state.isOrdinary = state.isOrdinary && areSamples(frame) && (bits == 16 || bits == 24);
    TrackerResult result{};
    voxloc_calculate(frame.data(), bits, flags, &result);
    checkResult(state, result);
    float energies[VOXLOC_MAX_CHANNELS];
    voxloc_calculateSignalEnergy(frame.data(), bits,
                                 static_cast<std::int32_t>(voxloc_getNumberOfChannels()), energies);
}

/** Only whole records stand in the file that was recorded to. */
void checkRecording(State& state, std::size_t channels) {
    struct stat status {};
    demand(fstat(state.recording, &status) == 0, "the file of a recording");
    const auto size = static_cast<std::size_t>(status.st_size);
    demand(size >= 4 && (size - 4) % (8 + channels * FRAME_SAMPLES * sizeof(float)) == 0,
           "a recording holds whole records");
    close(state.recording);
    state.recording = -1;
}

void stopRecording(State& state) {
    const bool wasOpen = voxloc_record_isOpen() == 1;
    voxloc_record_stop();
    demand(voxloc_record_isOpen() == 0, "a recording that was stopped is not open");
    if (state.recording < 0) return;
    demand(wasOpen, "a recording is open until it is stopped");
    checkRecording(state, voxloc_getNumberOfChannels());
}

void startRecording(InputReader& input, State& state) {
    if (state.product < 0) return;  // it would be of another array than its frames
    stopRecording(state);
    const int kind = input.below(4);
    const char* const others[] = {"/dev/full", "/dev/null", "/no such folder/file"};
    if (kind > 0) {
        voxloc_record_start(others[kind - 1]);
        return;
    }
    state.recording = memfd_create("recording", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(state.recording);
    demand(voxloc_record_start(path.c_str()) == static_cast<int>(voxloc_getNumberOfChannels()),
           "a recording is started");
}

void destroy(State& state) {
    const bool wasInitialised = state.product >= 0;
    voxloc_destroy();
    state.product = -1;
    if (wasInitialised) demand(voxloc_record_isOpen() == 0, "the end ends a recording");
    if (state.recording >= 0) checkRecording(state, voxloc_getNumberOfChannels());
}

void initialise(InputReader& input, State& state) {
    destroy(state);
    const auto index = static_cast<std::uint32_t>(input.below(64)) % voxloc_getNumberOfProducts();
    state.product = voxloc_getProduct(index)->type;
    state.isOrdinary = true;
    voxloc_initialize(state.product);
}

void ask(InputReader& input, const State& state) {
    const std::uint32_t channels = voxloc_getNumberOfChannels();
    demand(channels <= VOXLOC_MAX_CHANNELS, "channels");
    voxloc_getUltraSoundLevel();
    voxloc_record_getLostFrames();
    if (state.product < 0) return;
    const Position* place = voxloc_getMicrophoneCoordinates(input.take<std::uint8_t>() % channels);
    demand(std::isfinite(place->x + place->y + place->z), "a microphone's place");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    State state;
    for (int call = 0; call < MostCalls && !input.isEmpty(); ++call) {
        switch (input.below(12)) {
            case 0:
                destroy(state);
                break;
            case 1:
                startRecording(input, state);
                break;
            case 2:
                stopRecording(state);
                break;
            case 3:
                ask(input, state);
                break;
            case 4:
            case 5:
                initialise(input, state);
                break;
            default:
                calculate(input, state);
        }
    }
    stopRecording(state);
    destroy(state);
    return 0;
}

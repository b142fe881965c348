// makeRecordings FOLDER COUNT: short recordings 00.rec, 01.rec ... of a talker at other places.
// Number 17 is long enough to be ended in the middle.

#include <voxloc/unittestGenerator.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int Frames = 8, LongFrames = 600, LongOne = 17;
const VoxlocArray* Listening = nullptr;

std::uint32_t channels() {
    return static_cast<std::uint32_t>(Listening->channels);
}

const Position* microphone(std::uint32_t channel) {
    return &Listening->microphone[channel];
}

bool record(const std::string& path, int number) {
    VoxlocTracker* tracker = voxloc_createProductTracker(PRODUCT_FOXGLOVE, nullptr);
    if (tracker == nullptr || voxloc_startRecording(tracker, path.c_str()) == 0) return false;
    Listening = voxloc_getArray(tracker);
    AudioGenerator* generator = createAudioGenerator(channels, microphone, 1);
    const float place[3] = {-0.8f + 0.04f * static_cast<float>(number), 0.0f, 2.5f};
    TrackerResult result;
    bool isGood = true;
    const int frames = number == LongOne ? LongFrames : Frames;
    for (int i = 0; i < frames; ++i) {
        isGood = isGood && voxloc_track(tracker, getNextFrame(place, 0, generator), 24, 0,
                                        &result) == nullptr;
    }
    destroyAudioGenerator(generator);
    voxloc_destroyTracker(tracker);
    return isGood;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    for (int i = 0; i < std::atoi(argv[2]); ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "/%02d.rec", i);
        if (!record(argv[1] + std::string(name), i)) return 1;
    }
    return 0;
}

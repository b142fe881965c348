// The whole tracker against the plain model in double precision, frame by frame, for every product:
// speech from two places, the far end, the noise flag, room noise with its beacon, and silence.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "models/trackerModel.h"
#include "trackerRuns.h"

namespace {

using reference::ModelResult;
using reference::TrackerModel;

struct Scene {
    int frames;
    int clip;         // 0 speech, 1 room noise, -1 silence
    float source[3];  // azimuth, elevation (radians), range (metres)
    std::uint32_t flags;
    std::uint32_t bits;
    bool isSpoilt = false;
};

// Room noise at two bits less is four times as loud, which the ultrasound detector hears.
const Scene Scenes[] = {
    {14, 0, {0.30f, 0.10f, 2.0f}, 0, 24},     {12, 0, {-0.45f, -0.15f, 4.0f}, 0, 24},
    {5, 0, {-0.45f, -0.15f, 4.0f}, 1, 24},    {6, 0, {-0.45f, -0.15f, 4.0f}, 2, 24},
    {24, 1, {0.10f, 0.05f, 3.0f}, 0, 22},     {3, -1, {0.0f, 0.0f, 1.0f}, 0, 24},
    {6, 0, {0.05f, 0.2f, 1.0f}, 3, 24},       {6, 0, {0.05f, 0.2f, 1.0f}, 0, 24},
    {6, 0, {0.05f, 0.2f, 1.0f}, 0, 24, true},
};

// What no converter gives, at both ends of a frame and within; the last value is just let through.
void spoil(std::vector<float>& frame) {
    constexpr float bad[] = {NAN,     INFINITY, -INFINITY, 3.4028235e38f, -1e15f,
                             5.37e8f, -5.37e8f, 1e20f,     5.36e8f};
    std::size_t at = 0;
    for (const float value : bad) {
        frame[at] = value;
        at = (at + 2047) % frame.size();
    }
}

class AgainstModel : public ::testing::TestWithParam<const VoxlocProduct*> {
  protected:
    // A product without elevation pairs searches the directions that are there from before.
    AgainstModel() { std::fill_n(tracker_.AzimuthElevationResult, 29737, 0.0f); }

    InitializedModule module_{GetParam()->type};
    voxloc::Tracker& tracker_ = voxloc::moduleTracker();
    TrackerModel model_{GetParam()->array, GetParam()->type == PRODUCT_ASTER};
};

INSTANTIATE_TEST_SUITE_P(Every, AgainstModel, ::testing::ValuesIn(allProducts()), ProductName());

template <std::size_t points>
int firstMaximum(const float (&sum)[points]) {
    return static_cast<int>(std::max_element(sum, sum + points) - sum);
}

// Equal to single precision; outside of the sines' range both are NaN.
void expectSame(float actual, double expected) {
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(actual)) << actual;
    } else {
        EXPECT_FLOAT_EQ(actual, static_cast<float>(expected));
    }
}

TEST_P(AgainstModel, GivesTheSameResultsFrameByFrame) {
    Clips clips;
    const std::vector<float> silence(8 * 2048);
    int frame = 0;
    std::uint32_t seen = 0;
    std::uint32_t unseen = 0;
    for (const Scene& scene : Scenes) {
        for (int i = 0; i < scene.frames; ++i, ++frame) {
            SCOPED_TRACE(frame);
            const float* audio =
                scene.clip < 0 ? silence.data() : clips.next(scene.source, scene.clip);
            std::vector<float> spoilt;
            if (scene.isSpoilt) {
                spoilt.assign(audio, audio + voxloc_getNumberOfChannels() * 2048);
                spoil(spoilt);
                audio = spoilt.data();
            }
            const ModelResult expected = model_.calculate(audio, scene.bits, scene.flags);
            TrackerResult result{NAN, NAN, NAN, NAN, 0xffffffffU};
            voxloc_calculate(audio, scene.bits, scene.flags, &result);

            EXPECT_EQ(result.flags, expected.flags);
            // No two points are so close that single precision confuses them.
            EXPECT_EQ(firstMaximum(tracker_.AzimuthElevationResult), model_.directions().peak);
            EXPECT_EQ(firstMaximum(tracker_.AzimuthRangeResult), model_.ranges().peak);
            expectSame(result.azimuth, expected.azimuth);
            expectSame(result.elevation, expected.elevation);
            expectSame(result.range, expected.range);
            EXPECT_LE(std::abs(static_cast<double>(result.quality) - expected.quality),
                      expected.qualityBound);
            EXPECT_LE(expected.qualityBound, 0.01);  // or it says nothing
            seen |= result.flags;
            unseen |= ~result.flags;
        }
    }
    EXPECT_EQ(seen, 0xbfU);            // every flag has been set
    EXPECT_EQ(unseen & 0xbfU, 0x3fU);  // and every one but the position's been clear
    EXPECT_EQ(model_.blockedFrames(), 0);
}

}  // namespace

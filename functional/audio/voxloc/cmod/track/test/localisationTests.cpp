#include <cmath>
#include <optional>

#include "console/eventlog.h"
#include "testSupport.h"

namespace voxloc_tests {

namespace {

constexpr float DegreesPerRadian = 57.295776f;
constexpr float AzimuthTolerance = 0.5f;  // degrees
constexpr float RangeTolerance = 0.5f;    // metres
constexpr int FramesPerPosition = 10;

struct QualityBounds {
    float lowest, highest;
};

struct Degrees {
    float azimuth, elevation, range;  // degrees, degrees, metres
};

/** A talker at one place, who moves to another. */
struct StableSpeaker {
    int product;
    Degrees first, second;
    float elevationTolerance;                                            // degrees
    std::optional<QualityBounds> firstQuality = {}, secondQuality = {};  // not examined if empty
};

void logPosition(float azimuth, float elevation, float range) {
    eventlog("Azimuth = %f, elevation = %f, range = %f\n", static_cast<double>(azimuth),
             static_cast<double>(elevation), static_cast<double>(range));
}

unsigned verifyQuality(float quality, QualityBounds bounds) {
    if (quality >= bounds.lowest && quality <= bounds.highest) return 0;
    eventlog("Quality check failed\n");
    // Ends in a backspace where a line end was meant; kept, logs are matched against it.
    eventlog("Quality = %f\b", static_cast<double>(quality));
    return 1;
}

unsigned findTalker(const Degrees& place, float elevationTolerance,
                    const std::optional<QualityBounds>& quality) {
    SourcePosition source = positionFromDegrees(place.azimuth, place.elevation, place.range);
    processFrames(FramesPerPosition, Speech, source);
    unsigned errors = verifyPosition(&LastResult, &source, elevationTolerance);
    if (quality) errors += verifyQuality(LastResult.quality, *quality);
    return errors;
}

unsigned stableSpeakerTest(const StableSpeaker& speaker) {
    setUp(speaker.product);
    unsigned errors = findTalker(speaker.first, speaker.elevationTolerance, speaker.firstQuality);
    errors += findTalker(speaker.second, speaker.elevationTolerance, speaker.secondQuality);
    tearDown();
    return errors;
}

}  // namespace

unsigned verifyPosition(const TrackerResult* calculated, SourcePosition* expected,
                        float elevationTolerance) {
    expected->azimuth *= DegreesPerRadian;
    expected->elevation *= DegreesPerRadian;
    const bool failed =
        std::fabs(calculated->azimuth - expected->azimuth) > AzimuthTolerance ||
        std::fabs(calculated->elevation - expected->elevation) > elevationTolerance ||
        std::fabs(calculated->range - expected->range) > RangeTolerance;
    if (!failed) return 0;
    eventlog("Position failed\n");
    eventlog("Calculated results:\n");
    logPosition(calculated->azimuth, calculated->elevation, calculated->range);
    eventlog("Expected results:\n");
    logPosition(expected->azimuth, expected->elevation, expected->range);
    return 1;
}

// clang-format off
//                                        product           first position (°, °, m)  second position          ±°
unsigned stableSpeakerTestAster() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_ASTER,    {-1.0f, -7.4f, 6.0f},    {15.0f, 4.2f, 5.6f},     0.35f,
                                           QualityBounds{0.865f, 0.875f}, QualityBounds{0.67f, 0.68f}});
}
unsigned stableSpeakerTestBramble() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_BRAMBLE,  {-0.5f, -7.4f, 6.5f},    {15.0f, 2.2f, 5.6f},     0.35f});
}
unsigned stableSpeakerTestCinder() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_CINDER,   {0.8f, -7.5f, 1.8f},     {-23.0f, -12.5f, 4.0f},  1.0f});
}
unsigned stableSpeakerTestDovetail() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_DOVETAIL, {8.8f, -4.5f, 1.8f},     {-14.2f, 10.0f, 7.5f},   1.0f});
}
unsigned stableSpeakerTestElmwood() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_ELMWOOD,  {0.82f, -5.5f, 1.9f},    {-25.0f, 4.9f, 3.6f},    0.5f});
}
unsigned stableSpeakerTestFoxglove() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_FOXGLOVE, {4.0f, 0.0f, 2.9f},      {-25.0f, 0.0f, 4.6f},    90.0f});
}
unsigned stableSpeakerTestGannet() {
    return stableSpeakerTest(StableSpeaker{PRODUCT_GANNET,   {10.0f, -15.0f, 2.0f},   {-12.0f, -20.0f, 4.5f},  3.0f});
}
// clang-format on

unsigned cinderElevationTest() {
    unsigned errors = 0;
    setUp(PRODUCT_CINDER);
    processFrames(FramesPerPosition, Speech, positionFromDegrees(-0.2f, -39.5f, 6.2f));
    if (LastResult.elevation > -39.0f) {
        eventlog("Cinder elevation test failed, elevation = %f\n",
                 static_cast<double>(LastResult.elevation));
        errors = 1;
    }
    tearDown();
    return errors;
}

}  // namespace voxloc_tests

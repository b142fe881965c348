// What the localisation tests feed the module with, what they check, and what they report.

#include <string>
#include <vector>

#include "kit/floatBits.h"
#include "kit/log.h"
#include "recordedModule.h"
#include "stableSpeakers.h"
#include "track/test/testSupport.h"
#include "voxloc/unittestGenerator.h"

namespace {

using namespace kit;
using namespace voxloc_tests;
using namespace recordedModule;

// --- verifyPosition

TEST(VerifyPosition, AllowsHalfADegreeOfAzimuthItsToleranceOfElevationAndHalfAMetre) {
    const struct {
        float azimuth, elevation, range, tolerance;
        unsigned errors;
    } rows[] = {{0.5f, 0, 4, 0.1f, 0},
                {next(0.5f), 0, 4, 0.1f, 1},
                {0.51f, 0, 4, 90, 1},
                {0, 0.35f, 4, 0.35f, 0},
                {0, next(0.35f), 4, 0.35f, 1},
                {0, 90, 4, 90, 0},
                {0, next(90), 4, 90, 1},
                {0, 0, 3.5f, 1, 0},
                {0, 0, 4.5f, 1, 0},
                {0, 0, previous(3.5f), 1, 1},
                {0, 0, next(4.5f), 1, 1},
                {10, 20, 9, 1, 1}};
    for (const auto& row : rows) {
        for (const float sign : {-1.0f, 1.0f}) {
            SCOPED_TRACE(testing::PrintToString(sign * row.azimuth) + " " +
                         testing::PrintToString(sign * row.elevation) + " " +
                         testing::PrintToString(row.range));
            const TrackerResult result = {sign * row.azimuth, sign * row.elevation, row.range, 0,
                                          0};
            SourcePosition expected = {0, 0, 4};
            const std::string log = logOf(
                [&] { EXPECT_EQ(verifyPosition(&result, &expected, row.tolerance), row.errors); });
            EXPECT_EQ(log.empty(), row.errors == 0);
        }
    }
}

TEST(VerifyPosition, ReportsBothPositionsInDegreesAndLeavesTheExpectedRecordSo) {
    const TrackerResult result = {1.5f, -2.25f, 3.125f, 0, 0};
    SourcePosition expected = {1, 0.5f, 2};
    EXPECT_EQ(logOf([&] { EXPECT_EQ(verifyPosition(&result, &expected, 1), 1u); }),
              "Position failed\n"
              "Calculated results:\n"
              "Azimuth = 1.500000, elevation = -2.250000, range = 3.125000\n"
              "Expected results:\n"
              "Azimuth = 57.295776, elevation = 28.647888, range = 2.000000\n");
    EXPECT_EQ(expected.azimuth, 57.295776f);
    EXPECT_EQ(expected.elevation, 28.647888f);
    EXPECT_EQ(expected.range, 2.0f);
}

// --- The stable-speaker tests

struct Quality {
    float first = 0.87f, second = 0.675f;
};

// A module that finds these positions, after the tenth and the twentieth frame only.
Script finding(const Degrees& first, const Degrees& second, Quality quality = {}) {
    return {[=](std::size_t frame) -> TrackerResult {
        const auto at = [](const Degrees& place, float value) {
            return TrackerResult{place.azimuth, place.elevation, place.range, value, 0};
        };
        if (frame == 10) return at(first, quality.first);
        if (frame == 20) return at(second, quality.second);
        return {180, 180, 180, 180, 0};
    }};
}

class StableSpeakerTest : public testing::TestWithParam<StableSpeaker> {
  protected:
    static Outcome runFinding(const Degrees& one, const Degrees& other, Quality quality = {}) {
        return run(GetParam().test, finding(one, other, quality));
    }

    const Degrees first = GetParam().first, second = GetParam().second;
};

TEST_P(StableSpeakerTest, HearsTheClipRunOnFromOnePositionToTheOther) {
    setUp(PRODUCT_BRAMBLE);  // as if a test had been left in the middle
    const auto [errors, log] = runFinding(first, second);
    EXPECT_EQ(errors, 0u);
    EXPECT_EQ(log, "");
    ASSERT_EQ(frames.size(), 20u);
    for (std::size_t i = 0; i < 20; i++) {
        SCOPED_TRACE(i);
        expectGenerated(frames[i], GetParam().product, 0, i < 10 ? first : second);
        // Microphone 0 hears the clip without a delay; a tenth of it, raised by a tenth of 2^23.
        EXPECT_EQ(frames[i].samples[100], 838860.8f + 0.1f * femaleSpeech[i * 2048 + 100]);
    }
    ASSERT_EQ(lifetime[0], "destroy");
    lifetime.erase(lifetime.begin());
    expectSetUps({GetParam().product});
}

TEST_P(StableSpeakerTest, CountsAnErrorForEachPositionThatIsWrong) {
    const Degrees wrong = {60, 0, 1};
    const Outcome outcome = runFinding(wrong, second);
    EXPECT_EQ(outcome.errors, 1u);
    EXPECT_EQ(outcome.log.rfind("Position failed\n", 0), 0u);
    EXPECT_EQ(runFinding(first, wrong).errors, 1u);
    EXPECT_EQ(runFinding(wrong, wrong).errors, 2u);
}

TEST_P(StableSpeakerTest, HasTheElevationToleranceOfItsGeometry) {
    const auto off = [](Degrees place, float by) {
        place.elevation += by;
        return place;
    };
    for (const float sign : {-1.0f, 1.0f}) {  // a thousandth of a degree either side of it
        const float inside = sign * (GetParam().tolerance - 1e-3f);
        const float outside = sign * (GetParam().tolerance + 1e-3f);
        EXPECT_EQ(runFinding(off(first, inside), off(second, inside)).errors, 0u);
        EXPECT_EQ(runFinding(off(first, outside), second).errors, 1u);
        EXPECT_EQ(runFinding(first, off(second, outside)).errors, 1u);
    }
}

TEST_P(StableSpeakerTest, QualityIsExaminedForAsterAlone) {
    for (const float quality : {0.0f, 100.0f, NotANumber}) {
        EXPECT_EQ(runFinding(first, second, {quality, quality}).errors,
                  GetParam().product == PRODUCT_ASTER ? 2u : 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(Geometries, StableSpeakerTest, testing::ValuesIn(StableSpeakers), nameOf);

TEST(AsterQuality, LiesInItsBounds) {
    const struct {
        Quality quality;
        unsigned errors;
    } rows[] = {
        {{0.865f, 0.67f}, 0},        {{0.875f, 0.68f}, 0},          {{previous(0.865f), 0.675f}, 1},
        {{next(0.875f), 0.675f}, 1}, {{0.87f, previous(0.67f)}, 1}, {{0.87f, next(0.68f)}, 1}};
    const StableSpeaker& aster = StableSpeakers[0];
    for (const auto& [quality, errors] : rows) {
        EXPECT_EQ(run(aster.test, finding(aster.first, aster.second, quality)).errors, errors)
            << quality.first << " " << quality.second;
    }
    EXPECT_EQ(run(aster.test, finding({60, 0, 1}, {60, 0, 1}, {0, 0})).errors, 4u);
}

TEST(AsterQuality, ReportEndsInABackspace) {
    const StableSpeaker& aster = StableSpeakers[0];
    EXPECT_EQ(run(aster.test, finding(aster.first, aster.second, {0.5f, 0.675f})).log,
              "Quality check failed\nQuality = 0.500000\b");
}

// --- Cinder's elevation

TEST(CinderElevation, HearsTenFramesOfSpeechFromBelowAndPassesUpToMinus39Degrees) {
    for (const float elevation : {-60.0f, -39.0f, next(-39), -38.9f}) {
        const auto [errors, log] =
            run(cinderElevationTest, {[=](std::size_t frame) {
                    return TrackerResult{99, frame == 10 ? elevation : 99, 99, 0, 0};
                }});
        EXPECT_EQ(errors, elevation > -39 ? 1u : 0u) << elevation;
        EXPECT_EQ(log, elevation > -39 ? "Cinder elevation test failed, elevation = " +
                                             std::to_string(elevation) + "\n"
                                       : "");
        ASSERT_EQ(frames.size(), 10u);
        for (const auto& frame : frames) {
            expectGenerated(frame, PRODUCT_CINDER, 0, {-0.2f, -39.5f, 6.2f});
        }
        expectSetUps({PRODUCT_CINDER});
    }
}

}  // namespace

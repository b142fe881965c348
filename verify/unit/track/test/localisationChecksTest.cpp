// What the localisation tests feed the module with, what they check, and what they report.

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "recordedModule.h"
#include "track/test/testSupport.h"
#include "track/test/tests.h"
#include "unit/track/trackSupport.h"

namespace {

using namespace voxloc_tests;
using recordedModule::frames;
using recordedModule::lifetime;
using trackSupport::Epsilon;
using trackSupport::logOf;
using trackSupport::next;
using trackSupport::previous;
using trackSupport::wide;

constexpr float DegreesPerRadian = 57.295776f;

struct Degrees {
    float azimuth, elevation, range;
};

// --- verifyPosition

class VerifyPositionTest : public testing::Test {
  protected:
    unsigned verify(float azimuth, float elevation, float range, float tolerance) {
        TrackerResult result = {azimuth, elevation, range, 0, 0};
        SourcePosition expected = {0, 0, 4};
        unsigned errors = 99;
        log = logOf([&] { errors = verifyPosition(&result, &expected, tolerance); });
        return errors;
    }

    std::string log;
};

TEST_F(VerifyPositionTest, AzimuthMayBeHalfADegreeOff) {
    for (const float tolerance : {0.1f, 90.0f}) {
        for (const float sign : {-1.0f, 1.0f}) {
            EXPECT_EQ(verify(sign * 0.5f, 0, 4, tolerance), 0u);
            EXPECT_EQ(log, "");
            EXPECT_EQ(verify(sign * next(0.5f), 0, 4, tolerance), 1u);
            EXPECT_EQ(verify(sign * 0.51f, 0, 4, tolerance), 1u);
        }
    }
}

TEST_F(VerifyPositionTest, ElevationMayBeItsToleranceOff) {
    for (const float tolerance : {0.35f, 1.0f, 90.0f}) {
        for (const float sign : {-1.0f, 1.0f}) {
            EXPECT_EQ(verify(0, sign * tolerance, 4, tolerance), 0u);
            EXPECT_EQ(verify(0, sign * next(tolerance), 4, tolerance), 1u);
        }
    }
}

TEST_F(VerifyPositionTest, RangeMayBeHalfAMetreOff) {
    for (const float range : {3.5f, 4.5f}) EXPECT_EQ(verify(0, 0, range, 1), 0u);
    for (const float range : {previous(3.5f), next(4.5f)}) EXPECT_EQ(verify(0, 0, range, 1), 1u);
}

TEST_F(VerifyPositionTest, OneErrorHoweverMuchIsWrong) {
    EXPECT_EQ(verify(10, 20, 9, 1), 1u);
}

TEST_F(VerifyPositionTest, ConvertsTheExpectedRecordToDegreesInPlace) {
    const TrackerResult result = {0, 0, 2, 0, 0};
    SourcePosition expected = {0.25f, -0.125f, 2};
    logOf([&] { verifyPosition(&result, &expected, 1); });
    EXPECT_EQ(expected.azimuth, 0.25f * DegreesPerRadian);
    EXPECT_EQ(expected.elevation, -0.125f * DegreesPerRadian);
    EXPECT_EQ(expected.range, 2.0f);
}

TEST_F(VerifyPositionTest, ReportsTheCalculatedAndTheExpectedPositionInDegrees) {
    const TrackerResult result = {1.5f, -2.25f, 3.125f, 0, 0};
    SourcePosition expected = {1, 0.5f, 2};
    log = logOf([&] { EXPECT_EQ(verifyPosition(&result, &expected, 1), 1u); });
    EXPECT_EQ(log,
              "Position failed\n"
              "Calculated results:\n"
              "Azimuth = 1.500000, elevation = -2.250000, range = 3.125000\n"
              "Expected results:\n"
              "Azimuth = 57.295776, elevation = 28.647888, range = 2.000000\n");
}

// --- The stable-speaker tests

struct Geometry {
    const char* name;
    unsigned (*test)();
    int product;
    Degrees first, second;
    float tolerance;
};

const Geometry Geometries[] = {
    {"Aster", stableSpeakerTestAster, 0, {-1, -7.4f, 6}, {15, 4.2f, 5.6f}, 0.35f},
    {"Bramble", stableSpeakerTestBramble, 1, {-0.5f, -7.4f, 6.5f}, {15, 2.2f, 5.6f}, 0.35f},
    {"Cinder", stableSpeakerTestCinder, 2, {0.8f, -7.5f, 1.8f}, {-23, -12.5f, 4}, 1},
    {"Dovetail", stableSpeakerTestDovetail, 5, {8.8f, -4.5f, 1.8f}, {-14.2f, 10, 7.5f}, 1},
    {"Elmwood", stableSpeakerTestElmwood, 4, {0.82f, -5.5f, 1.9f}, {-25, 4.9f, 3.6f}, 0.5f},
    {"Foxglove", stableSpeakerTestFoxglove, 6, {4, 0, 2.9f}, {-25, 0, 4.6f}, 90},
    {"Gannet", stableSpeakerTestGannet, 7, {10, -15, 2}, {-12, -20, 4.5f}, 3}};

void expectSource(const recordedModule::ProcessedFrame& frame, const Degrees& expected) {
    // A degree is rounded to a float, and so are the factor and the product.
    const double radians[2] = {wide(expected.azimuth) * M_PI / 180,
                               wide(expected.elevation) * M_PI / 180};
    for (std::size_t i = 0; i < 2; i++) {
        EXPECT_TRUE(std::fabs(wide(frame.source[i]) - radians[i]) <=
                    1.5 * Epsilon * std::fabs(radians[i]))
            << frame.source[i];
    }
    EXPECT_EQ(frame.source[2], expected.range);
}

void expectPlainSpeech(const recordedModule::ProcessedFrame& frame, int product) {
    EXPECT_EQ(frame.product, product);
    EXPECT_EQ(frame.clip, 0);
    EXPECT_TRUE(frame.offsetSpeech);
    EXPECT_EQ(frame.bits, 24u);
    EXPECT_EQ(frame.flags, 0u);
    EXPECT_EQ(frame.samples, frame.generated);
}

// A module that finds exactly this position, after the tenth and the twentieth frame only.
recordedModule::Script finding(const Degrees& first, const Degrees& second, float firstQuality,
                               float secondQuality) {
    return {[=](std::size_t frame) -> TrackerResult {
                if (frame == 10) {
                    return {first.azimuth, first.elevation, first.range, firstQuality, 0};
                }
                if (frame == 20) {
                    return {second.azimuth, second.elevation, second.range, secondQuality, 0};
                }
                return {180, 180, 180, 180, 0};
            },
            {},
            0};
}

class StableSpeakerTest : public testing::TestWithParam<Geometry> {
  protected:
    unsigned run(const Degrees& first, const Degrees& second, float firstQuality = 0.87f,
                 float secondQuality = 0.675f) {
        recordedModule::start(finding(first, second, firstQuality, secondQuality));
        unsigned errors = 99;
        log = logOf([&] { errors = GetParam().test(); });
        return errors;
    }

    std::string log;
};

TEST_P(StableSpeakerTest, HearsTenFramesFromEachPosition) {
    EXPECT_EQ(run(GetParam().first, GetParam().second), 0u);
    EXPECT_EQ(log, "");
    ASSERT_EQ(frames.size(), 20u);
    for (std::size_t i = 0; i < 20; i++) {
        SCOPED_TRACE(i);
        expectPlainSpeech(frames[i], GetParam().product);
        expectSource(frames[i], i < 10 ? GetParam().first : GetParam().second);
    }
}

TEST_P(StableSpeakerTest, ClipRunsOnAtTheSecondPosition) {
    run(GetParam().first, GetParam().second);
    ASSERT_EQ(frames.size(), 20u);
    // Microphone 0 hears the clip without a delay; 0.1 of it is offset by a tenth of full scale.
    for (std::size_t i = 0; i < 20; i++) {
        const float sample = femaleSpeech[i * 2048 + 100];
        EXPECT_EQ(frames[i].samples[100], 838860.8f + 0.1f * sample) << i;
    }
}

TEST_P(StableSpeakerTest, LeavesNothingBehind) {
    run(GetParam().first, GetParam().second);
    EXPECT_EQ(lifetime, (std::vector<std::string>{
                            "initialize " + std::to_string(GetParam().product), "destroy"}));
    EXPECT_FALSE(IsInitialized);
    EXPECT_EQ(AudioData, nullptr);
}

TEST_P(StableSpeakerTest, TakesOverFromATestThatWasLeftInTheMiddle) {
    recordedModule::start(finding({}, {}, 0, 0));
    setUp(PRODUCT_BRAMBLE);
    run(GetParam().first, GetParam().second);
    EXPECT_EQ(lifetime,
              (std::vector<std::string>{
                  "destroy", "initialize " + std::to_string(GetParam().product), "destroy"}));
}

TEST_P(StableSpeakerTest, CountsAnErrorForEachPositionThatIsWrong) {
    const Degrees wrong = {60, 0, 1};
    EXPECT_EQ(run(wrong, GetParam().second), 1u);
    EXPECT_EQ(log.rfind("Position failed\n", 0), 0u);
    EXPECT_EQ(run(GetParam().first, wrong), 1u);
    EXPECT_EQ(run(wrong, wrong), 2u);
}

TEST_P(StableSpeakerTest, HasTheElevationToleranceOfItsGeometry) {
    const auto shifted = [](Degrees position, float by) {
        position.elevation += by;
        return position;
    };
    const Geometry& geometry = GetParam();
    // A thousandth of a degree either side of it.
    for (const float sign : {-1.0f, 1.0f}) {
        const float inside = sign * (geometry.tolerance - 1e-3f);
        const float outside = sign * (geometry.tolerance + 1e-3f);
        EXPECT_EQ(run(shifted(geometry.first, inside), shifted(geometry.second, inside)), 0u);
        EXPECT_EQ(run(shifted(geometry.first, outside), geometry.second), 1u);
        EXPECT_EQ(run(geometry.first, shifted(geometry.second, outside)), 1u);
    }
}

INSTANTIATE_TEST_SUITE_P(Geometries, StableSpeakerTest, testing::ValuesIn(Geometries),
                         [](const testing::TestParamInfo<Geometry>& geometry) {
                             return std::string(geometry.param.name);
                         });

// --- Aster's quality

class AsterQualityTest : public testing::Test {
  protected:
    unsigned run(float firstQuality, float secondQuality) {
        const Geometry& aster = Geometries[0];
        recordedModule::start(finding(aster.first, aster.second, firstQuality, secondQuality));
        unsigned errors = 99;
        log = logOf([&] { errors = stableSpeakerTestAster(); });
        return errors;
    }

    std::string log;
};

TEST_F(AsterQualityTest, LiesInItsBounds) {
    EXPECT_EQ(run(0.865f, 0.67f), 0u);
    EXPECT_EQ(run(0.875f, 0.68f), 0u);
    EXPECT_EQ(run(0.8649f, 0.675f), 1u);
    EXPECT_EQ(run(0.8751f, 0.675f), 1u);
    EXPECT_EQ(run(0.87f, 0.6699f), 1u);
    EXPECT_EQ(run(0.87f, 0.6801f), 1u);
    EXPECT_EQ(run(0, 0), 2u);
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(run(notANumber, notANumber), 2u);
}

TEST_F(AsterQualityTest, ReportEndsInABackspace) {
    EXPECT_EQ(run(0.5f, 0.675f), 1u);
    EXPECT_EQ(log, "Quality check failed\nQuality = 0.500000\b");
}

TEST_F(AsterQualityTest, WrongPositionsAndQualitiesAreFourErrors) {
    recordedModule::start(finding({60, 0, 1}, {60, 0, 1}, 0, 0));
    unsigned errors = 0;
    logOf([&] { errors = stableSpeakerTestAster(); });
    EXPECT_EQ(errors, 4u);
}

TEST(OtherQualities, AreNotExamined) {
    for (const Geometry& geometry : Geometries) {
        if (geometry.product == PRODUCT_ASTER) continue;
        const float notANumber = std::numeric_limits<float>::quiet_NaN();
        for (const float quality : {0.0f, 100.0f, notANumber}) {
            recordedModule::start(finding(geometry.first, geometry.second, quality, quality));
            EXPECT_EQ(logOf([&] { EXPECT_EQ(geometry.test(), 0u) << geometry.name; }), "");
        }
    }
}

// --- Cinder's elevation

class CinderElevationTest : public testing::Test {
  protected:
    unsigned run(float elevation) {
        recordedModule::start({[=](std::size_t frame) -> TrackerResult {
                                   return {99, frame == 10 ? elevation : 99, 99, 0, 0};
                               },
                               {},
                               0});
        unsigned errors = 99;
        log = logOf([&] { errors = cinderElevationTest(); });
        return errors;
    }

    std::string log;
};

TEST_F(CinderElevationTest, HearsTenFramesOfSpeechFromBelow) {
    run(-39.5f);
    ASSERT_EQ(frames.size(), 10u);
    for (const auto& frame : frames) {
        expectPlainSpeech(frame, PRODUCT_CINDER);
        expectSource(frame, {-0.2f, -39.5f, 6.2f});
    }
    EXPECT_EQ(lifetime, (std::vector<std::string>{"initialize 2", "destroy"}));
    EXPECT_EQ(AudioData, nullptr);
}

TEST_F(CinderElevationTest, PassesUpToMinus39Degrees) {
    EXPECT_EQ(run(-60), 0u);
    EXPECT_EQ(run(-39), 0u);
    EXPECT_EQ(log, "");
    EXPECT_EQ(run(next(-39)), 1u);
    EXPECT_EQ(run(-38.9f), 1u);
    EXPECT_EQ(log, "Cinder elevation test failed, elevation = -38.900002\n");
}

}  // namespace

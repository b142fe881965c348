// The eighteen tests on the real module: how near it comes to the talker, what it logs, and that no
// test depends on what ran before it.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "track/test/testSupport.h"
#include "track/test/tests.h"
#include "unit/track/trackSupport.h"
#include "voxloc/unittestGenerator.h"

namespace {

using trackSupport::logOf;
using trackSupport::wide;

struct Degrees {
    double azimuth, elevation, range;
};

// How far off the position is, to the digits that are given; elevation may be of no interest.
struct Figures {
    double azimuth, elevation, range;
};
constexpr double AnyElevation = -1;

struct Geometry {
    const char* name;
    int product;
    Degrees position[2];
    Figures error[2];
};

// The errors of an independent model of the module, in degrees to two decimals and metres to one.
const Geometry Geometries[] = {
    {"Aster", PRODUCT_ASTER, {{-1, -7.4, 6}, {15, 4.2, 5.6}}, {{0.03, 0.05, 0}, {0.25, 0.07, 0}}},
    {"Bramble",
     PRODUCT_BRAMBLE,
     {{-0.5, -7.4, 6.5}, {15, 2.2, 5.6}},
     {{0.02, 0.05, 0}, {0.23, 0.09, 0.2}}},
    {"Cinder",
     PRODUCT_CINDER,
     {{0.8, -7.5, 1.8}, {-23, -12.5, 4}},
     {{0.48, 0.31, 0.1}, {0.22, 0.28, 0.2}}},
    {"Dovetail",
     PRODUCT_DOVETAIL,
     {{8.8, -4.5, 1.8}, {-14.2, 10, 7.5}},
     {{0.22, 0.26, 0.1}, {0.06, 0.26, 0}}},
    {"Elmwood",
     PRODUCT_ELMWOOD,
     {{0.82, -5.5, 1.9}, {-25, 4.9, 3.6}},
     {{0.01, 0.09, 0}, {0.06, 0.02, 0.5}}},
    {"Foxglove",
     PRODUCT_FOXGLOVE,
     {{4, 0, 2.9}, {-25, 0, 4.6}},
     {{0.18, AnyElevation, 0.4}, {0.06, AnyElevation, 0.3}}},
    {"Gannet",
     PRODUCT_GANNET,
     {{10, -15, 2}, {-12, -20, 4.5}},
     {{0.25, 1.94, 0.1}, {0.01, 0.28, 0}}}};

// A product initialised and heard through the public interface alone.
class Listener {
  public:
    explicit Listener(int product) {
        voxloc_initialize(product);
        generator_ =
            createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    }
    ~Listener() {
        destroyAudioGenerator(generator_);
        voxloc_destroy();
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    TrackerResult listen(int count, int clip, const Degrees& position) {
        const float source[3] = {static_cast<float>(position.azimuth * M_PI / 180),
                                 static_cast<float>(position.elevation * M_PI / 180),
                                 static_cast<float>(position.range)};
        TrackerResult result{};
        for (int frame = 0; frame < count; frame++) {
            voxloc_calculate(getNextFrame(source, clip, generator_), 24, 0, &result);
        }
        return result;
    }

  private:
    AudioGenerator* generator_;
};

// Half a unit of the last digit given, and the rounding of the values compared.
void expectRoundsTo(double expected, double actual, double unit) {
    EXPECT_TRUE(std::fabs(actual - expected) <= 0.5 * unit + 1e-5)
        << actual << " does not round to " << expected;
}

class FiguresTest : public testing::TestWithParam<Geometry> {};

TEST_P(FiguresTest, PositionsAreAsFarOffAsTheModelHasThem) {
    Listener listener(GetParam().product);
    for (std::size_t i = 0; i < 2; i++) {
        SCOPED_TRACE(i == 0 ? "first position" : "second position");
        const Degrees& position = GetParam().position[i];
        const Figures& error = GetParam().error[i];
        const TrackerResult result = listener.listen(10, 0, position);
        expectRoundsTo(error.azimuth, std::fabs(wide(result.azimuth) - position.azimuth), 0.01);
        expectRoundsTo(error.range, std::fabs(wide(result.range) - position.range), 0.1);
        if (error.elevation != AnyElevation) {
            expectRoundsTo(error.elevation, std::fabs(wide(result.elevation) - position.elevation),
                           0.01);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Geometries, FiguresTest, testing::ValuesIn(Geometries),
                         [](const testing::TestParamInfo<Geometry>& geometry) {
                             return std::string(geometry.param.name);
                         });

TEST(Figures, AsterQualities) {
    Listener listener(PRODUCT_ASTER);
    expectRoundsTo(0.8693, wide(listener.listen(10, 0, Geometries[0].position[0]).quality), 1e-4);
    expectRoundsTo(0.6747, wide(listener.listen(10, 0, Geometries[0].position[1]).quality), 1e-4);
}

TEST(Figures, UltraSoundLevelOfTheRoom) {
    Listener listener(PRODUCT_ASTER);
    listener.listen(24, 1, {-1, -7.4, 6});
    expectRoundsTo(-33.09, wide(voxloc_getUltraSoundLevel()), 0.01);
}

TEST(Figures, CinderElevation) {
    Listener listener(PRODUCT_CINDER);
    const TrackerResult result = listener.listen(10, 0, {-0.2, -39.5, 6.2});
    expectRoundsTo(-39.58, wide(result.elevation), 0.01);
}

// --- Independence of the tests

using TestFunction = unsigned (*)();

const std::vector<TestFunction> Tests = {voxloc_tests::stableSpeakerTestAster,
                                         voxloc_tests::stableSpeakerTestBramble,
                                         voxloc_tests::stableSpeakerTestCinder,
                                         voxloc_tests::stableSpeakerTestDovetail,
                                         voxloc_tests::stableSpeakerTestElmwood,
                                         voxloc_tests::stableSpeakerTestFoxglove,
                                         voxloc_tests::stableSpeakerTestGannet,
                                         voxloc_tests::vadOnTest,
                                         voxloc_tests::vadHangoverTest,
                                         voxloc_tests::timeDomainVadTest,
                                         voxloc_tests::soundActivityTest,
                                         voxloc_tests::signalEnergyTest,
                                         voxloc_tests::inputFlagTest,
                                         voxloc_tests::farEndVadTest,
                                         voxloc_tests::ultraSoundDistortionTest,
                                         voxloc_tests::roomNoiseTest,
                                         voxloc_tests::ultraSoundLevelTest,
                                         voxloc_tests::cinderElevationTest};

struct Outcome {
    unsigned errors;
    std::string log;
    bool operator==(const Outcome& other) const {
        return errors == other.errors && log == other.log;
    }
};

Outcome run(TestFunction test) {
    Outcome outcome{99, ""};
    outcome.log = logOf([&] { outcome.errors = test(); });
    return outcome;
}

// The outcome in a process in which nothing has run yet.
Outcome runAlone(TestFunction test) {
    Outcome outcome{99, ""};
    outcome.log = logOf([&] {
        const pid_t child = fork();
        if (child == 0) _exit(static_cast<int>(test()));
        int status = 0;
        if (waitpid(child, &status, 0) == child && WIFEXITED(status)) {
            outcome.errors = static_cast<unsigned>(WEXITSTATUS(status));
        }
    });
    return outcome;
}

TEST(Independence, EachTestHasTheSameOutcomeAloneAndInAnyOrder) {
    std::map<TestFunction, Outcome> alone;
    for (const TestFunction test : Tests) alone[test] = runAlone(test);
    for (std::size_t i = 0; i < Tests.size(); i++) {
        EXPECT_EQ(alone[Tests[i]].errors, 0u) << "test " << i << ": " << alone[Tests[i]].log;
    }

    std::vector<std::vector<TestFunction>> orders(2, Tests);
    std::reverse(orders[0].begin(), orders[0].end());
    std::shuffle(orders[1].begin(), orders[1].end(), std::mt19937(2));
    for (std::size_t order = 0; order < orders.size(); order++) {
        for (std::size_t i = 0; i < Tests.size(); i++) {
            const TestFunction test = orders[order][i];
            EXPECT_TRUE(run(test) == alone[test]) << "order " << order << " position " << i;
        }
    }
}

TEST(RunAllUnitTests, LogsItsProgressAndWhatTheTestsSay) {
    unsigned errors = 99;
    std::string log = logOf([&] { errors = voxloc_tests::runAllUnitTests(); });
    voxloc_tests::tearDown();
    EXPECT_EQ(errors, 0u);
    log = trackSupport::withoutDecimals(log);
    std::string expected;
    const auto add = [&expected](const std::string& text, const std::string& said = "",
                                 const std::string& endText = "") {
        expected += "Running " + text + "\n" + said + "Finished " +
                    (endText.empty() ? text : endText) + "\n";
    };
    add("stable speaker test");
    add("stable speaker bramble test");
    add("stable speaker cinder test");
    add("stable speaker dovetail test", "", "stable speaker cinder test");
    add("stable speaker elmwood test");
    add("stable speaker foxglove test");
    add("stable speaker gannet test");
    add("VAD on test");
    add("VAD hangover test");
    add("TD VAD test");
    add("SAD test");
    add("signal energy test");
    add("input flag test");
    add("FE VAD test");
    add("ultrasound test",
        "Warning: Ultrasound level is too high, channel: 3 ultrasound level: N neighborband "
        "level: N\n"
        "Ultrasound level is ok, ultrasound level: N neighborband level: N\n");
    add("room noise test");
    add("ultra sound level test", "Ultra sound level = N");
    add("cinder elevation test");
    expected += "\n\nTest summary: 0 error(s)\n\n";
    EXPECT_EQ(log, expected);
}

}  // namespace

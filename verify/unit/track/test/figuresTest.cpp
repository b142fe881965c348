// The eighteen tests on the real module: how near it comes to the talker, what it logs, and that no
// test depends on what ran before it.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "eighteenTests.h"
#include "kit/floatBits.h"
#include "kit/log.h"
#include "stableSpeakers.h"
#include "track/test/testSupport.h"
#include "voxloc/unittestGenerator.h"

namespace {

using kit::logOf;
using kit::wide;
using recordedModule::Degrees;

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
        const auto radians = [](float degrees) {
            return static_cast<float>(wide(degrees) * M_PI / 180);
        };
        const float source[3] = {radians(position.azimuth), radians(position.elevation),
                                 position.range};
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

// How far off the position is, to the digits that are given; elevation may be of no interest.
struct Errors {
    double azimuth, elevation, range;
};
constexpr double AnyElevation = -1;

// The errors of an independent model of the module at both places of each stable speaker, in
// degrees to two decimals and metres to one.
const Errors ErrorsOf[][2] = {
    {{0.03, 0.05, 0}, {0.25, 0.07, 0}},     {{0.02, 0.05, 0}, {0.23, 0.09, 0.2}},
    {{0.48, 0.31, 0.1}, {0.22, 0.28, 0.2}}, {{0.22, 0.26, 0.1}, {0.06, 0.26, 0}},
    {{0.01, 0.09, 0}, {0.06, 0.02, 0.5}},   {{0.18, AnyElevation, 0.4}, {0.06, AnyElevation, 0.3}},
    {{0.25, 1.94, 0.1}, {0.01, 0.28, 0}}};

void expectOff(const TrackerResult& result, const Degrees& place, const Errors& errors) {
    const auto distance = [](float a, float b) { return std::fabs(wide(a) - wide(b)); };
    expectRoundsTo(errors.azimuth, distance(result.azimuth, place.azimuth), 0.01);
    expectRoundsTo(errors.range, distance(result.range, place.range), 0.1);
    if (errors.elevation == AnyElevation) return;
    expectRoundsTo(errors.elevation, distance(result.elevation, place.elevation), 0.01);
}

TEST(Figures, PositionsAreAsFarOffAsTheModelHasThem) {
    for (std::size_t i = 0; i < std::size(StableSpeakers); i++) {
        const StableSpeaker& speaker = StableSpeakers[i];
        SCOPED_TRACE(speaker.name);
        Listener listener(speaker.product);
        const TrackerResult first = listener.listen(10, 0, speaker.first);
        const TrackerResult second = listener.listen(10, 0, speaker.second);
        expectOff(first, speaker.first, ErrorsOf[i][0]);
        expectOff(second, speaker.second, ErrorsOf[i][1]);
        if (speaker.product != PRODUCT_ASTER) continue;
        expectRoundsTo(0.8693, wide(first.quality), 1e-4);
        expectRoundsTo(0.6747, wide(second.quality), 1e-4);
    }
}

TEST(Figures, UltraSoundLevelOfTheRoom) {
    Listener listener(PRODUCT_ASTER);
    listener.listen(24, 1, {-1, -7.4f, 6});
    expectRoundsTo(-33.09, wide(voxloc_getUltraSoundLevel()), 0.01);
}

TEST(Figures, CinderElevation) {
    Listener listener(PRODUCT_CINDER);
    const TrackerResult result = listener.listen(10, 0, {-0.2f, -39.5f, 6.2f});
    expectRoundsTo(-39.58, wide(result.elevation), 0.01);
}

// --- Independence of the tests

using Outcome = std::pair<unsigned, std::string>;  // errors and log

Outcome run(unsigned (*test)()) {
    Outcome outcome(99, "");
    outcome.second = logOf([&] { outcome.first = test(); });
    return outcome;
}

// The outcome in a process in which nothing has run yet.
Outcome runAlone(unsigned (*test)()) {
    Outcome outcome(99, "");
    outcome.second = logOf([&] {
        const pid_t child = fork();
        if (child == 0) _exit(static_cast<int>(test()));
        int status = 0;
        if (waitpid(child, &status, 0) == child && WIFEXITED(status)) {
            outcome.first = static_cast<unsigned>(WEXITSTATUS(status));
        }
    });
    return outcome;
}

TEST(Independence, EachTestHasTheSameOutcomeAloneAndInAnyOrder) {
    std::vector<Outcome> alone;
    for (const EighteenTest& test : EighteenTests) {
        alone.push_back(runAlone(test.run));
        EXPECT_EQ(alone.back().first, 0u) << test.name << ": " << alone.back().second;
    }
    std::vector<std::size_t> order(EighteenTests.size());
    std::iota(order.rbegin(), order.rend(), std::size_t{0});
    for (int pass = 0; pass < 2; pass++) {
        for (const std::size_t i : order) {
            EXPECT_EQ(run(EighteenTests[i].run), alone[i]) << "pass " << pass;
        }
        std::shuffle(order.begin(), order.end(), std::mt19937(2));
    }
}

TEST(RunAllUnitTests, LogsItsProgressAndWhatTheTestsSay) {
    std::string expected;
    for (const EighteenTest& test : EighteenTests) {
        expected += test.progress(
            test.run == voxloc_tests::ultraSoundLevelTest ? "Ultra sound level = N"
            : test.run == voxloc_tests::ultraSoundDistortionTest
                ? "Warning: Ultrasound level is too high, channel: 3 ultrasound level: N "
                  "neighborband level: N\n"
                  "Ultrasound level is ok, ultrasound level: N neighborband level: N\n"
                : "");
    }
    const Outcome outcome = run(voxloc_tests::runAllUnitTests);
    voxloc_tests::tearDown();
    EXPECT_EQ(outcome.first, 0u);
    EXPECT_EQ(kit::withoutDecimals(outcome.second), expected + "\n\nTest summary: 0 error(s)\n\n");
}

}  // namespace

// What microphones hear in a simulated room.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <stdexcept>

#include "simulator/noise.h"
#include "simulator/simulator.h"

namespace {

const VoxlocArray& aster() {
    return voxloc_findProductByName("aster")->array;
}

Voice toneOf(double hertz, double amplitude) {
    auto samples = std::make_shared<std::vector<float>>();
    for (int n = 0; n < 48000; ++n) {
        samples->push_back(
            static_cast<float>(amplitude * std::sin(2 * M_PI * hertz / 48000.0 * n)));
    }
    return samples;
}

Scene sceneWith(const Voice& voice, double seconds) {
    Scene scene;
    scene.room = {{6, 5, 3}, 0.3};
    scene.place.origin = {1.2, 2.4, 1.3};
    scene.segments = {{voice, {20, 5, 2.5}, {20, 5, 2.5}, seconds}};
    return scene;
}

Scene freeScene(const Voice& voice, double seconds) {
    Scene scene = sceneWith(voice, seconds);
    scene.room.rt60 = 0.0;
    return scene;
}

double power(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float sample : samples) {
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    }
    return sum / static_cast<double>(samples.size());
}

double meanPower(const Recording& recording) {
    double sum = 0.0;
    for (const auto& samples : recording.channel) sum += power(samples);
    return sum / static_cast<double>(recording.channel.size());
}

Recording difference(const Recording& a, const Recording& b) {
    Recording rest = a;
    for (std::size_t c = 0; c < rest.channel.size(); ++c) {
        for (std::size_t n = 0; n < rest.channel[c].size(); ++n) {
            rest.channel[c][n] -= b.channel[c][n];
        }
    }
    return rest;
}

std::uint64_t fingerprint(const Recording& recording) {
    std::uint64_t hash = 14695981039346656037u;
    for (const auto& samples : recording.channel) {
        for (const float sample : samples) {
            std::uint32_t bits;
            std::memcpy(&bits, &sample, sizeof bits);
            hash = (hash ^ bits) * 1099511628211u;
        }
    }
    return hash;
}

TEST(Simulator, AFarTalkerIsHeardWithTheDelaysOfTheGeometry) {
    const Recording recording = simulate(aster(), freeScene(toneOf(500, 1e6), 0.5));
    const Scene scene = freeScene(nullptr, 0.5);
    const std::vector<Point> microphones = microphonesOf(aster(), scene);
    const Point talker = pointOf(scene.place, {20, 5, 2.5});
    for (std::size_t c = 0; c < microphones.size(); ++c) {
        const double metres = std::hypot(talker.x - microphones[c].x, talker.y - microphones[c].y,
                                         talker.z - microphones[c].z);
        const double late = metres * 48000.0 / 348.0;
        for (int n = 5000; n < 5100; ++n) {
            const double expected =
                1e6 / metres * std::sin(2 * M_PI * 500.0 / 48000.0 * (n - late));
            EXPECT_NEAR(expected,
                        static_cast<double>(recording.channel[c].at(static_cast<std::size_t>(n))),
                        1e-3 * 1e6 / metres);
        }
    }
}

TEST(Simulator, ASceneGivesTheSameSamplesOnEveryMachine) {
    Scene scene = sceneWith(builtInVoice(), 0.3);
    scene.noise = {20.0, 25.0, 15.0, {-40, 0, 1.5}};
    scene.segments.push_back({builtInVoice(), {20, 5, 2.5}, {22, 5, 2.5}, 0.05});
    const Recording recording = simulate(aster(), scene);
    EXPECT_EQ(fingerprint(simulate(aster(), scene)), fingerprint(recording));
    scene.seed = 2;
    EXPECT_NE(fingerprint(simulate(aster(), scene)), fingerprint(recording));
#ifdef __FMA__
    GTEST_SKIP() << "this build fuses products and sums";
#endif
    EXPECT_EQ(16930521126882705201u, fingerprint(recording));
}

TEST(Simulator, EachNoiseHasItsStatedRatio) {
    const Recording quiet = simulate(aster(), sceneWith(builtInVoice(), 1.0));
    for (int kind = 0; kind < 3; ++kind) {
        for (const double ratio : {20.0, 5.0}) {
            Scene scene = sceneWith(builtInVoice(), 1.0);
            scene.noise.pointPlace = {-40, 0, 1.5};
            (kind == 0   ? scene.noise.diffuseRatio
             : kind == 1 ? scene.noise.independentRatio
                         : scene.noise.pointRatio) = ratio;
            const Recording noise = difference(simulate(aster(), scene), quiet);
            EXPECT_NEAR(ratio, 10 * std::log10(meanPower(quiet) / meanPower(noise)), 0.01) << kind;
        }
    }
}

TEST(Simulator, DiffuseNoiseGoesTogetherAsTheDistanceSays) {
    const double metres = 0.1;
    const auto noise = diffuseNoise({{0, 0, 0}, {metres, 0, 0}}, 8 * 48000, 3);
    // Correlation of tones through a comb of one bin over all blocks, at 600, 1740 and 2600 Hz.
    for (const double hertz : {600.0, 1740.0, 2600.0}) {
        double cross = 0.0, first = 0.0, second = 0.0;
        for (std::size_t from = 0; from + 1024 <= noise[0].size(); from += 512) {
            double a[2] = {}, b[2] = {};
            for (std::size_t n = 0; n < 1024; ++n) {
                const double angle = 2 * M_PI * hertz / 48000.0 * static_cast<double>(n);
                const double window = std::sin(M_PI * (static_cast<double>(n) + 0.5) / 1024);
                const double x = window * static_cast<double>(noise[0][from + n]);
                const double y = window * static_cast<double>(noise[1][from + n]);
                a[0] += x * std::cos(angle), a[1] += x * std::sin(angle);
                b[0] += y * std::cos(angle), b[1] += y * std::sin(angle);
            }
            cross += a[0] * b[0] + a[1] * b[1];
            first += a[0] * a[0] + a[1] * a[1];
            second += b[0] * b[0] + b[1] * b[1];
        }
        const double x = 2 * M_PI * hertz * metres / 348.0;
        // About 500 independent blocks: three times 1/sqrt(500).
        EXPECT_NEAR(std::sin(x) / x, cross / std::sqrt(first * second), 0.13) << hertz;
    }
}

TEST(Simulator, AMovingTalkerIsHeardWithoutClicks) {
    constexpr double Hertz = 400.0;
    Scene scene = freeScene(toneOf(Hertz, 1e6), 1.0);
    scene.segments.front().to = {-20, 5, 2.5};
    const Recording recording = simulate(aster(), scene);
    const double nearest = 2.0;  // metres, to any microphone on the way
    const double turn = 2 * M_PI * Hertz / 48000.0;
    for (const auto& samples : recording.channel) {
        // A click would show in the second difference, far above the tone's own.
        for (std::size_t n = 1000; n + 1 < samples.size(); ++n) {
            const double bend =
                static_cast<double>(samples[n - 1] - 2 * samples[n] + samples[n + 1]);
            ASSERT_LE(std::fabs(bend), 1.1 * turn * turn * 1e6 / nearest + 4.0) << n;
        }
    }
}

TEST(Simulator, AMovingTalkerArrives) {
    Scene moving = freeScene(builtInVoice(), 1.0);
    moving.segments.front().to = {-20, 0, 3};
    moving.segments.push_back({builtInVoice(), {-20, 0, 3}, {-20, 0, 3}, 0.5});
    Scene still = freeScene(builtInVoice(), 1.5);
    still.segments.front().from = still.segments.front().to = {-20, 0, 3};
    const Recording a = simulate(aster(), moving), b = simulate(aster(), still);
    for (std::size_t n = 50000; n < 70000; ++n) {
        ASSERT_NEAR(static_cast<double>(b.channel[0][n]), static_cast<double>(a.channel[0][n]), 2);
    }
}

TEST(Simulator, AMicrophonesErrorsAreHeardInItsChannelAlone) {
    Scene scene = freeScene(builtInVoice(), 0.5);
    const Recording sound = simulate(aster(), scene);
    scene.errors.resize(6);
    scene.errors[2] = {{}, 4.0, -6.0, true};
    const Recording faulty = simulate(aster(), scene);
    const double factor = -std::pow(10.0, -6.0 / 20.0);
    for (std::size_t n = 4; n < sound.channel[2].size(); ++n) {
        ASSERT_NEAR(factor * static_cast<double>(sound.channel[2][n - 4]),
                    static_cast<double>(faulty.channel[2][n]), 1.01);
        ASSERT_EQ(sound.channel[3][n], faulty.channel[3][n]);
    }
}

TEST(Simulator, HalfASampleOfDelayIsBetweenTwoSamples) {
    Scene scene = freeScene(toneOf(3000, 1e6), 0.5);
    scene.errors.resize(6);
    const Recording sound = simulate(aster(), scene);
    scene.errors[0].delay = 1.5;
    const Recording late = simulate(aster(), scene);
    scene.errors[0].delay = 3.0;
    const Recording later = simulate(aster(), scene);
    const double half = 2 * std::cos(2 * M_PI * 3000.0 / 48000.0 * 1.5);
    for (std::size_t n = 2000; n < 10000; ++n) {
        ASSERT_NEAR(half * static_cast<double>(late.channel[0][n]),
                    static_cast<double>(sound.channel[0][n] + later.channel[0][n]), 1000);
    }
}

TEST(Simulator, AMicrophoneOffItsPlaceHearsAsFromThere) {
    VoxlocArray moved = aster();
    moved.microphone[1].y += 0.0625f;
    Scene scene = freeScene(builtInVoice(), 0.3);
    const Recording drawn = simulate(moved, scene);
    scene.errors.resize(6);
    scene.errors[1].offset.y = 0.0625;
    // The drawing holds floats, the offset a double: a hair's breadth.
    const Recording rest = difference(drawn, simulate(aster(), scene));
    for (const float sample : rest.channel[1]) ASSERT_LE(std::fabs(sample), 2.0f);
}

TEST(Simulator, UpsideDownTheArrayHearsTheMirroredTalker) {
    Scene scene = freeScene(builtInVoice(), 0.3);
    scene.segments.front().from = scene.segments.front().to = {20, 10, 2};
    const Point upright = pointOf(scene.place, {20, 10, 2});
    scene.place.roll = 180.0;
    const Point turned = pointOf(scene.place, {-20, -10, 2});
    EXPECT_NEAR(upright.x, turned.x, 1e-12);
    EXPECT_NEAR(upright.y, turned.y, 1e-12);
    EXPECT_NEAR(upright.z, turned.z, 1e-12);
    const std::vector<Point> microphones = microphonesOf(aster(), scene);
    EXPECT_NEAR(1.3 - 0.133, microphones[0].z, 1e-6);
    EXPECT_NEAR(2.4 - 0.3753, microphones[0].y, 1e-6);
}

TEST(Simulator, WhatIsOutsideTheRoomIsRefused) {
    Scene scene = sceneWith(builtInVoice(), 0.1);
    scene.segments.front().to.range = 7.0;
    EXPECT_THROW(simulate(aster(), scene), std::invalid_argument);
    scene = sceneWith(builtInVoice(), 0.1);
    scene.place.origin.y = 0.2;
    EXPECT_THROW(simulate(aster(), scene), std::invalid_argument);
    scene = sceneWith(nullptr, 0.1);
    scene.noise.diffuseRatio = 20.0;
    EXPECT_THROW(simulate(aster(), scene), std::invalid_argument);
}

TEST(Simulator, ErrorsAreDrawnWithinTheirLimits) {
    const MicrophoneError limit{{0.01, 0.02, 0.0}, 2.0, 3.0, false};
    const auto errors = drawErrors(8, limit, 5);
    for (const MicrophoneError& error : errors) {
        EXPECT_LE(std::fabs(error.offset.x), 0.01);
        EXPECT_EQ(0.0, error.offset.z);
        EXPECT_TRUE(error.delay >= 0.0 && error.delay <= 2.0);
        EXPECT_LE(std::fabs(error.gain), 3.0);
    }
    EXPECT_NE(errors[0].gain, errors[1].gain);
    EXPECT_EQ(errors[7].gain, drawErrors(8, limit, 5)[7].gain);
}

}  // namespace

// A sweep's places, its sounds, and what it makes of errors that are known.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "common/failure.h"
#include "sweep/figures.h"
#include "sweep/sounds.h"

namespace {

constexpr int FramesAtPlace = 36;
constexpr std::uint32_t VoiceOn = 1u << VOXLOC_FLAG_VOICE;

NamedArray arrayCalled(const char* name) {
    const VoxlocProduct& product = *voxloc_findProductByName(name);
    return {product.name, product.array, product.type};
}

/** Two places in a row, each found exactly in every frame. */
SweepRun perfectRun() {
    SweepRun run;
    run.array = arrayCalled("aster");
    run.places = {{10, 5, 2}, {-30, 0, 3}};
    for (std::int32_t place = 0; place < 2; ++place) {
        const Direction& at = run.places[static_cast<std::size_t>(place)];
        for (std::int32_t since = 0; since < FramesAtPlace; ++since) {
            SweepFrame frame;
            frame.place = place;
            frame.since = since;
            frame.result = {static_cast<float>(at.azimuth), static_cast<float>(at.elevation),
                            static_cast<float>(at.range), 0.75f, VoiceOn};
            frame.hasEstimate = true;
            frame.isTalking = true;
            run.frames.push_back(frame);
        }
    }
    return run;
}

SweepFrame& frameOf(SweepRun& run, int place, int since) {
    return run.frames[static_cast<std::size_t>(place * FramesAtPlace + since)];
}

TEST(Figures, APerfectTrackerHasNoErrors) {
    const SweepFigures figures = figuresOf(perfectRun(), FramesAtPlace);
    EXPECT_EQ(2u * (FramesAtPlace - SettlingFrames), figures.frameWithVoice.azimuth.count);
    EXPECT_EQ(2u * FramesAtPlace, figures.frameAlways.azimuth.count);
    EXPECT_EQ(2u, figures.halfWithVoice.azimuth.count);
    EXPECT_EQ(6u, figures.halfAlways.azimuth.count);
    for (const Spread* spread : {&figures.frameWithVoice.azimuth, &figures.frameAlways.elevation,
                                 &figures.halfWithVoice.azimuth, &figures.halfAlways.elevation}) {
        EXPECT_NEAR(0.0, spread->ninety, 1e-6);
        EXPECT_EQ(0.0, spread->gross);
        EXPECT_EQ(1.0, spread->closer);
    }
    EXPECT_EQ(1.0, figures.frameWithVoice.range.close);
    EXPECT_EQ(0.0, figures.foundMedian);
    EXPECT_EQ(0.0, figures.neverFound);
    EXPECT_EQ(1.0, figures.voiceHits);
}

TEST(Figures, AnglesAreWrapped) {
    EXPECT_NEAR(2.0, angleBetween(179.0, -179.0), 1e-12);
    EXPECT_NEAR(90.0, angleBetween(-45.0, 45.0), 1e-12);
}

TEST(Figures, TheNinetiethPercentileLeavesATenthOut) {
    std::vector<double> errors;
    for (int i = 1; i <= 10; ++i) errors.push_back(i % 2 == 0 ? i : -i);
    const Spread spread = angleSpread(errors);
    EXPECT_EQ(5.0, spread.median);
    EXPECT_EQ(9.0, spread.ninety);
    EXPECT_EQ(0.1, spread.close);
    EXPECT_EQ(0.0, spread.closer);
}

TEST(Figures, WhatIsNotANumberIsAGrossError) {
    const Spread spread = angleSpread({std::nan(""), 0.0, 0.1, 15.0});
    EXPECT_EQ(0.25, spread.gross);
    EXPECT_EQ(0.1, spread.median);
    EXPECT_EQ(std::numeric_limits<double>::infinity(), spread.ninety);
    EXPECT_TRUE(std::isnan(angleSpread({}).median));
}

TEST(Figures, OnlySettledFramesWithAVoiceCountAsSuch) {
    SweepRun run = perfectRun();
    frameOf(run, 0, SettlingFrames - 1).result.azimuth = 60.0f;
    frameOf(run, 0, SettlingFrames).result.azimuth = 60.0f;
    frameOf(run, 0, SettlingFrames).result.flags = 0;
    frameOf(run, 0, SettlingFrames + 1).hasEstimate = false;
    const SweepFigures figures = figuresOf(run, FramesAtPlace);
    EXPECT_EQ(0.0, figures.frameWithVoice.azimuth.gross);
    EXPECT_EQ(2u * (FramesAtPlace - SettlingFrames) - 2, figures.frameWithVoice.azimuth.count);
    EXPECT_NEAR(2.0 / (2 * FramesAtPlace - 1), figures.frameAlways.azimuth.gross, 1e-12);
    EXPECT_NEAR(1.0 / (2 * FramesAtPlace), figures.noEstimate, 1e-12);
}

TEST(Figures, AHalfSecondsMedianForgivesItsFewErrors) {
    SweepRun run = perfectRun();
    for (int k = 0; k < HalfSecond / 2 - 1; ++k) {
        frameOf(run, 1, SettlingFrames + k).result.azimuth = NAN;
    }
    EXPECT_EQ(0.0, figuresOf(run, FramesAtPlace).halfWithVoice.azimuth.gross);
    for (int k = 0; k < HalfSecond; ++k) {
        frameOf(run, 1, SettlingFrames + k).result.azimuth = NAN;
    }
    EXPECT_EQ(0.5, figuresOf(run, FramesAtPlace).halfWithVoice.azimuth.gross);
}

TEST(Figures, ATalkerIsFoundWhenThreeFramesInARowSaySo) {
    SweepRun run = perfectRun();
    for (const int since : {0, 1, 2, 3, 6}) frameOf(run, 1, since).result.azimuth = 10.0f;
    const SweepFigures figures = figuresOf(run, FramesAtPlace);
    EXPECT_EQ(7.0, figures.foundMedian);
    for (int since = 0; since < FramesAtPlace; since += 2) {
        frameOf(run, 1, since).result.azimuth = 10.0f;
    }
    EXPECT_EQ(1.0, figuresOf(run, FramesAtPlace).neverFound);
}

TEST(Figures, AFalseAlarmIsAVoiceInALongSilence) {
    SweepRun run = perfectRun();
    for (int since = 0; since < 10; ++since) frameOf(run, 0, since).isTalking = false;
    EXPECT_TRUE(std::isnan(figuresOf(run, FramesAtPlace).falseVoice));
    for (int since = 6; since < 10; ++since) frameOf(run, 0, since).isLongSilent = true;
    frameOf(run, 0, 9).result.flags = 0;
    EXPECT_EQ(0.75, figuresOf(run, FramesAtPlace).falseVoice);
}

TEST(Figures, QualityIsHeldAgainstTheErrorsOfItsFrames) {
    SweepRun run = perfectRun();
    for (int since = SettlingFrames; since < FramesAtPlace; ++since) {
        frameOf(run, 1, since).result.azimuth = 0.0f;
        frameOf(run, 1, since).result.quality = 0.32f;
    }
    const SweepFigures figures = figuresOf(run, FramesAtPlace);
    EXPECT_EQ(0.3, figures.bins.at(6).quality);
    EXPECT_EQ(0.5, figures.bins.at(6).share);
    EXPECT_NEAR(30.0, figures.bins.at(6).azimuth.median, 1e-5);
    EXPECT_EQ(0.7, figures.bins.at(10).quality);
    EXPECT_EQ(0.5, figures.bins.at(10).share);
    EXPECT_EQ(0.0, figures.bins.at(8).share);
    for (const QualityRow& row : figures.thresholds) {
        EXPECT_EQ(row.quality > 0.751 ? 0.0 : row.quality > 0.321 ? 0.5 : 1.0, row.share);
        if (row.share == 0.5) {
            EXPECT_NEAR(0.0, row.azimuth.ninety, 1e-5);
        }
    }
    EXPECT_NEAR(0.05, figures.thresholds.at(5).quality, 1e-12);
    EXPECT_NEAR(0.25, figures.thresholds.at(21).quality, 1e-12);
}

TEST(Figures, TheGeometrySaysWhatCannotBeTold) {
    SweepRun run = perfectRun();
    EXPECT_TRUE(figuresOf(run, FramesAtPlace).geometry.hasElevation);
    EXPECT_EQ(1.0, figuresOf(run, FramesAtPlace).geometry.toldShare);
    run.array = arrayCalled("foxglove");
    run.places[1].range = 9.0;
    const SweepFigures figures = figuresOf(run, FramesAtPlace);
    EXPECT_FALSE(figures.geometry.hasElevation);
    EXPECT_EQ(0u, figures.frameWithVoice.elevation.count);
    EXPECT_EQ(0.5, figures.geometry.toldShare);
    EXPECT_EQ(figures.frameWithVoice.range.count, 2 * figures.frameWithVoice.toldRange.count);
    // 0.52 m wide: a metre at 8 times its width is about a lag.
    EXPECT_NEAR(8 * 0.52, figures.geometry.toldTo, 1.0);
}

TEST(Places, AreWhereTheArrayLooksAndInTheRoom) {
    const VoxlocArray& array = voxloc_findProductByName("cinder")->array;
    const Room room{{6, 5, 3}, 0.3};
    const ArrayPlace at{{0.5, 2.2, 1.2}};
    PlaceChoice choice;
    choice.places = 300;
    const std::vector<Direction> places = placesOf(array, choice, room, at);
    EXPECT_EQ(300u, places.size());
    for (const Direction& place : places) {
        EXPECT_LE(std::fabs(place.azimuth), 0.7 * 46.6);
        EXPECT_TRUE(place.elevation >= -0.7 * 40.6 && place.elevation <= 0.7 * 10.5);
        EXPECT_TRUE(place.range >= 1 && place.range <= 5);
        const Point p = pointOf(at, place);
        EXPECT_TRUE(p.y > 0.29 && p.y < 4.71 && p.z > 0.29 && p.z < 2.71 && p.x < 5.71);
    }
    choice.seed = 2;
    EXPECT_NE(places[0].azimuth, placesOf(array, choice, room, at)[0].azimuth);
}

TEST(Places, AGridHasItsEnds) {
    const VoxlocArray& array = voxloc_findProductByName("cinder")->array;
    PlaceChoice choice;
    choice.azimuth = Span{-40, 40};
    choice.elevation = Span{-10, 0};
    choice.grid = GridSteps{5, 2, 1};
    const std::vector<Direction> places = placesOf(array, choice, {}, {});
    ASSERT_EQ(10u, places.size());
    EXPECT_EQ(-40, places.front().azimuth);
    EXPECT_EQ(-20, places[1].azimuth);
    EXPECT_EQ(40, places.back().azimuth);
    EXPECT_EQ(0, places.back().elevation);
    EXPECT_EQ(3, places.back().range);
    EXPECT_THROW(placesOf(array, choice, {{2, 2, 2}, 0.2}, {{0.5, 1, 1}}), BadData);
}

TEST(Sounds, GapsOfTheVoiceAreNoTalk) {
    SweepJob job;
    job.isSimulated = true;
    job.framesAtPlace = 30;
    auto voice = std::make_shared<std::vector<float>>(20 * FRAME_SAMPLES, 0.0f);
    // Ten frames of voice, ten of silence; the recording begins with a pause.
    for (std::size_t n = 0; n < 10 * FRAME_SAMPLES; ++n) (*voice)[n] = 1000.0f;
    job.voice = voice;
    const std::vector<bool> activity = activityOf(job, 1);
    ASSERT_EQ(30u + 2 * PauseFrames, activity.size());
    for (std::size_t k = 0; k < activity.size(); ++k) {
        const bool isPlayed = k >= PauseFrames && k < PauseFrames + 30;
        EXPECT_EQ(isPlayed && k % 20 < 10, activity[k]) << k;
    }
}

TEST(Sweep, FindsItsTalkersWhateverTheNumberOfThreads) {
    SweepJob job;
    job.choice.places = 12;
    job.framesAtPlace = 28;
    job.jobs = 1;
    const SweepRun one = sweep(arrayCalled("elmwood"), job);
    job.jobs = 3;
    const SweepRun three = sweep(arrayCalled("elmwood"), job);
    ASSERT_EQ(12u * 28 + 4 * PauseFrames, one.frames.size());
    ASSERT_EQ(one.frames.size(), three.frames.size());
    for (std::size_t k = 0; k < one.frames.size(); ++k) {
        ASSERT_EQ(one.frames[k].place, three.frames[k].place);
        ASSERT_EQ(one.frames[k].result.azimuth, three.frames[k].result.azimuth);
    }
    EXPECT_EQ(11, one.frames.back().place);
    EXPECT_LE(figuresOf(one, 28).frameWithVoice.azimuth.median, 1.0);
}

TEST(Sweep, ARoomMakesItHarder) {
    SweepJob job;
    job.choice.places = 4;
    job.framesAtPlace = 40;
    job.isSimulated = true;
    job.voice = builtInVoice();
    job.place.origin = {0.5, 2.2, 1.2};
    job.room.size = {6, 5, 3};
    const double free =
        figuresOf(sweep(arrayCalled("elmwood"), job), 40).frameWithVoice.azimuth.ninety;
    job.room.rt60 = 0.3;
    job.noise.diffuseRatio = 0.0;
    const double room =
        figuresOf(sweep(arrayCalled("elmwood"), job), 40).frameWithVoice.azimuth.ninety;
    EXPECT_LE(free, 2.0);
    EXPECT_GT(room, free);
}

}  // namespace

// Suggested pairs: what is chosen, and that a talker is found with it.

#include <gtest/gtest.h>
#include <voxloc/unittestGenerator.h>

#include <cmath>
#include <memory>
#include <string>

#include "arrays/suggest.h"
#include "common/failure.h"

namespace {

constexpr float Radian = 57.29578f;

std::string withMicrophones(const std::string& microphones) {
    return R"({"voxloc_array": 1, "name": "own", "microphones": [)" + microphones + "]}";
}

Suggestion suggested(const std::string& json) {
    return suggestPairs(draftFromJson(json, "own.json"), "own.json");
}

std::string refusal(const std::string& json) {
    try {
        suggested(json);
    } catch (const BadData& refused) {
        return refused.what();
    }
    return "not refused";
}

const std::string Desk = withMicrophones(
    "[0,-0.3,-0.07],[0,-0.1,-0.07],[0,0.1,-0.07],[0,0.3,-0.07],[0,0.3,0.07],[0,-0.3,0.07]");
const std::string Bar = withMicrophones("[0,-0.4,0],[0,-0.25,0],[0,0.25,0],[0,0.4,0]");
const std::string Wall = withMicrophones(
    "[0,-0.5,0.2],[0,0.5,0.2],[0,-0.5,-0.2],[0,0.5,-0.2],[0,0.05,0.2],"
    "[0,-0.1,0.2],[0,0.3,0.2],[0,-0.35,0.2]");

// The generator asks for the geometry by plain functions.
const VoxlocArray* Listening = nullptr;

std::uint32_t channelsOfListening() {
    return static_cast<std::uint32_t>(Listening->channels);
}

const Position* microphoneOfListening(std::uint32_t channel) {
    return &Listening->microphone[channel];
}

/** Where a tracker of the array sees a talker after ten frames. */
TrackerResult found(const VoxlocArray& array, float azimuth, float elevation, float range) {
    Listening = &array;
    const std::unique_ptr<AudioGenerator, void (*)(AudioGenerator*)> generator(
        createAudioGenerator(channelsOfListening, microphoneOfListening, 1), destroyAudioGenerator);
    const Tracker tracker = createTracker({"own", array, {}});
    const float place[3] = {azimuth / Radian, elevation / Radian, range};
    TrackerResult result = {};
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(nullptr, voxloc_track(tracker.get(), getNextFrame(place, 0, generator.get()), 24,
                                        0, &result));
    }
    return result;
}

void expectFound(const std::string& json, float azimuth, float elevation, float range) {
    SCOPED_TRACE(std::to_string(azimuth) + " " + std::to_string(range));
    const VoxlocArray array = suggested(json).named.array;
    const TrackerResult result = found(array, azimuth, elevation, range);
    EXPECT_NEAR(azimuth, result.azimuth, 1.0f);
    EXPECT_NEAR(range, result.range, 0.5f);
    if (array.elevationPairs > 0) {
        EXPECT_NEAR(elevation, result.elevation, 1.0f);
    }
}

TEST(Suggest, ATalkerIsFoundWithTheSuggestedPairs) {
    for (const std::string& json : {Desk, Wall}) {
        expectFound(json, 0.0f, 0.0f, 2.0f);
        expectFound(json, 20.0f, -4.0f, 2.5f);
        expectFound(json, -30.0f, 5.0f, 3.0f);
    }
    expectFound(Bar, 12.0f, 0.0f, 2.5f);
    expectFound(Bar, -30.0f, 0.0f, 2.0f);
}

TEST(Suggest, AzimuthPairsMixWidthsAndPlaces) {
    const VoxlocArray array = suggested(Desk).named.array;
    ASSERT_EQ(3, array.azimuthPairs);
    const auto expectPair = [&](int index, int first, int second) {
        EXPECT_EQ(first, array.azimuthPair[index].first) << index;
        EXPECT_EQ(second, array.azimuthPair[index].second) << index;
    };
    expectPair(0, 0, 3);  // the widest at one height, though a slanting one is wider
    expectPair(1, 0, 1);  // to the left
    expectPair(2, 2, 3);  // to the right
}

TEST(Suggest, ElevationPairsStandUprightWithAHorizontalOneAmongThem) {
    const VoxlocArray array = suggested(Desk).named.array;
    ASSERT_EQ(3, array.elevationPairs);
    EXPECT_EQ(0, array.elevationPair[0].first);
    EXPECT_EQ(5, array.elevationPair[0].second);
    EXPECT_EQ(3, array.elevationPair[1].first);
    EXPECT_EQ(4, array.elevationPair[1].second);
    EXPECT_EQ(0, array.elevationPair[2].first);
    EXPECT_EQ(3, array.elevationPair[2].second);
}

TEST(Suggest, AWideArrayGetsANarrowPairToo) {
    const VoxlocArray array =
        suggested(withMicrophones("[0,-1,0],[0,0,0],[0,0.15,0],[0,1,0]")).named.array;
    bool isNarrow = false;
    for (int i = 0; i < array.azimuthPairs; ++i) {
        isNarrow =
            isNarrow || (array.azimuthPair[i].first == 1 && array.azimuthPair[i].second == 2);
    }
    EXPECT_TRUE(isNarrow);
}

TEST(Suggest, WithoutHeightThereAreNoElevationPairsAndANoteSaysSo) {
    const Suggestion suggestion = suggested(Bar);
    EXPECT_EQ(0, suggestion.named.array.elevationPairs);
    ASSERT_EQ(1u, suggestion.notes.size());
    EXPECT_EQ("no two microphones differ in height: elevations mean nothing", suggestion.notes[0]);
}

TEST(Suggest, WhatTheFileSaysIsKept) {
    Json json = Json::parse(Desk);
    json["azimuth_pairs"] = Json::parse("[[2, 0]]");
    json["elevation_pairs"] = Json::array();
    json["voice_channels"] = Json::parse("[4, 5]");
    const VoxlocArray array = suggested(json.dump()).named.array;
    ASSERT_EQ(1, array.azimuthPairs);
    EXPECT_EQ(2, array.azimuthPair[0].first);
    EXPECT_EQ(0, array.elevationPairs);
    EXPECT_EQ(4, array.voiceChannels.first);
    EXPECT_EQ(4, array.noiseChannels.first);
    EXPECT_EQ(4, array.timeDomainVoiceChannel);
}

TEST(Suggest, TheVoiceIsHeardFarFromTheLoudspeaker) {
    Json json = Json::parse(Bar);
    EXPECT_EQ(1, suggested(json.dump()).named.array.voiceChannels.first);  // near the middle
    json["loudspeaker"] = {0.0, -0.35, 0.0};
    const VoxlocArray array = suggested(json.dump()).named.array;
    EXPECT_EQ(3, array.voiceChannels.first);
    EXPECT_EQ(2, array.voiceChannels.second);
}

TEST(Suggest, MicrophonesThatMakeNoPairAreRefused) {
    EXPECT_EQ("own.json: microphones: a pair takes two, there are 1",
              refusal(withMicrophones("[0,0,0]")));
    const std::string words =
        "own.json: microphones: no two of them lie along y, 1.03 cm to 14.8 m apart";
    EXPECT_EQ(words, refusal(withMicrophones("[0,0,0],[0,0,0.5]")));
    EXPECT_EQ(words, refusal(withMicrophones("[0,0,0],[0,0.01,0]")));
    EXPECT_EQ(words, refusal(withMicrophones("[0,0,0],[0,15,0]")));
    EXPECT_EQ("own.json: microphones[0]: has a coordinate beyond 100 m",
              refusal(withMicrophones("[0,1000,0],[0,1000.5,0]")));
}

TEST(Suggest, TheCompletedArrayIsOneThatCanBeRead) {
    for (const std::string& json : {Desk, Bar, Wall}) {
        const NamedArray named = suggested(json).named;
        EXPECT_EQ(arrayToText(named), arrayToText(arrayFromJson(arrayToText(named), "own.json")));
    }
}

}  // namespace

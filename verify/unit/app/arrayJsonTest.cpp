// The JSON form of an array: what is read back, and the words by which one is refused.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "arrays/arrayJson.h"
#include "common/failure.h"
#include "kit/floatBits.h"

namespace {

using kit::bitsOf;

const std::string Desk = R"({
    "voxloc_array": 1,
    "name": "desk",
    "microphones": [[0, -0.3, 0.1], [0, -0.1, 0.1], [0, 0.1, 0.1], [0, 0.3, 0.1], [0, 0.3, -0.1]],
    "azimuth_pairs": [[0, 3], [0, 1], [2, 3]],
    "elevation_pairs": [[3, 4], [0, 3]]})";

/** The desk with a field added or another value in the place of the field's. */
std::string deskWith(const std::string& field, const std::string& value) {
    Json json = Json::parse(Desk);
    json[field] = Json::parse(value);
    return json.dump();
}

std::string refusal(const std::string& text) {
    try {
        arrayFromJson(text, "desk.json");
    } catch (const BadData& refused) {
        return refused.what();
    }
    return "not refused";
}

void expectSameBits(const Position& one, const Position& other) {
    EXPECT_EQ(bitsOf(one.x), bitsOf(other.x));
    EXPECT_EQ(bitsOf(one.y), bitsOf(other.y));
    EXPECT_EQ(bitsOf(one.z), bitsOf(other.z));
}

void expectSameBits(const VoxlocArray& one, const VoxlocArray& other) {
    EXPECT_EQ(one.channels, other.channels);
    for (int c = 0; c < VOXLOC_MAX_CHANNELS; ++c) {
        expectSameBits(one.microphone[c], other.microphone[c]);
    }
    expectSameBits(one.loudspeaker, other.loudspeaker);
    EXPECT_EQ(one.attenuateLoudspeaker, other.attenuateLoudspeaker);
    EXPECT_EQ(one.azimuthPairs, other.azimuthPairs);
    EXPECT_EQ(0, std::memcmp(one.azimuthPair, other.azimuthPair, sizeof one.azimuthPair));
    EXPECT_EQ(one.elevationPairs, other.elevationPairs);
    EXPECT_EQ(0, std::memcmp(one.elevationPair, other.elevationPair, sizeof one.elevationPair));
    EXPECT_EQ(bitsOf(one.minimumAzimuth), bitsOf(other.minimumAzimuth));
    EXPECT_EQ(bitsOf(one.minimumElevation), bitsOf(other.minimumElevation));
    EXPECT_EQ(bitsOf(one.angleInterval), bitsOf(other.angleInterval));
    EXPECT_EQ(0, std::memcmp(&one.voiceChannels, &other.voiceChannels, 2 * sizeof(VoxlocPair)));
    EXPECT_EQ(one.timeDomainVoiceChannel, other.timeDomainVoiceChannel);
}

TEST(ArrayJson, EveryBuiltInArrayReadsBackToItsBits) {
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        const VoxlocProduct& product = *voxloc_getProduct(i);
        SCOPED_TRACE(product.name);
        const NamedArray printed = productArray(product.type);
        const NamedArray read = arrayFromJson(arrayToText(printed), "printed");
        EXPECT_EQ(product.name, read.name);
        EXPECT_EQ(product.type, read.product);
        expectSameBits(product.array, read.array);
    }
}

TEST(ArrayJson, AnyCoordinateReadsBackToItsBits) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> metres(-100.0f, 100.0f);
    NamedArray named = arrayFromJson(Desk, "desk.json");
    for (int round = 0; round < 2000; ++round) {
        for (Position& p : named.array.microphone)
            p = {metres(random), metres(random), 1e-7f * metres(random)};
        named.array.microphone[5] = named.array.microphone[6] = named.array.microphone[7] = {};
        named.array.loudspeaker = {metres(random), -0.0f, 1e-30f};
        named.array.attenuateLoudspeaker = 1;
        expectSameBits(named.array, draftFromJson(arrayToText(named), "printed").named.array);
    }
}

TEST(ArrayJson, AFileWithoutTheFieldsThatMayBeLeftOutGetsTheDocumentedOnes) {
    const NamedArray named = arrayFromJson(Desk, "desk.json");
    EXPECT_EQ("desk", named.name);
    EXPECT_FALSE(named.product.has_value());
    const VoxlocArray& array = named.array;
    EXPECT_EQ(5, array.channels);
    EXPECT_EQ(3, array.azimuthPairs);
    EXPECT_EQ(2, array.elevationPairs);
    EXPECT_EQ(-0.905f, array.minimumAzimuth);
    EXPECT_EQ(-0.52f, array.minimumElevation);
    EXPECT_EQ(0.008f, array.angleInterval);
    EXPECT_EQ(0, array.voiceChannels.first);
    EXPECT_EQ(1, array.voiceChannels.second);
    EXPECT_EQ(0, array.noiseChannels.first);
    EXPECT_EQ(1, array.noiseChannels.second);
    EXPECT_EQ(0, array.timeDomainVoiceChannel);
    EXPECT_EQ(0, array.attenuateLoudspeaker);
}

TEST(ArrayJson, AFileWithoutANameIsCalledByItsOwn) {
    Json json = Json::parse(Desk);
    json.erase("name");
    EXPECT_EQ("desk", arrayFromJson(json.dump(), "arrays/desk.json").name);
    EXPECT_EQ("array", arrayFromJson(json.dump(), std::string(81, 'a') + ".json").name);
}

TEST(ArrayJson, AnArrayWithoutElevationPairsIsTaken) {
    Json json = Json::parse(Desk);
    json.erase("elevation_pairs");
    EXPECT_EQ(0, arrayFromJson(json.dump(), "desk.json").array.elevationPairs);
}

TEST(ArrayJson, AKnownLoudspeakerCanBeLeftAlone) {
    Json json = Json::parse(Desk);
    json["loudspeaker"] = {0.0, 0.2, 0.0};
    EXPECT_EQ(1, arrayFromJson(json.dump(), "desk.json").array.attenuateLoudspeaker);
    json["attenuate_loudspeaker"] = false;
    const NamedArray named = arrayFromJson(json.dump(), "desk.json");
    EXPECT_EQ(0, named.array.attenuateLoudspeaker);
    EXPECT_EQ(0.2f, named.array.loudspeaker.y);
}

struct Refused {
    const char* field;
    const char* value;
    const char* words;  // after the name of the file
};

const Refused Fields[] = {
    {"voxloc_array", "2", "voxloc_array: must be 1"},
    {"voxloc_array", "\"1\"", "voxloc_array: must be a whole number"},
    {"name", "7", "name: must be a text in quotes"},
    {"name", "\"\"", "name: must be one line of 1 to 80 bytes"},
    {"name", "\"a\\nb\"", "name: must be one line of 1 to 80 bytes"},
    {"color", "7", "'color': is not a field here"},
    {"a\nb", "7", "'a?b': is not a field here"},
    {"microphones", "7", "microphones: must be a list in brackets"},
    {"microphones", "[]", "microphones: 0 is not 1 to 8"},
    {"microphones", "[1,1,1,1,1,1,1,1,1]", "microphones: has 9 entries, at most 8 are possible"},
    {"microphones", "[[0,0,0],[0,0]]",
     "microphones[1]: must be three numbers in metres: [x, y, z]"},
    {"microphones", "[[0,0,0],5]", "microphones[1]: must be three numbers in metres: [x, y, z]"},
    {"microphones", "[[0,\"1\",0]]", "microphones[0][1]: must be a number"},
    {"microphones", "[[0,0,null]]", "microphones[0][2]: must be a number"},
    {"microphones", "[[1e39,0,0]]", "microphones[0][0]: is beyond every sensible number"},
    {"microphones", "[[0,0,0],[0,0,100.5]]", "microphones[1]: has a coordinate beyond 100 m"},
    {"azimuth_pairs", "{}", "azimuth_pairs: must be a list in brackets"},
    {"azimuth_pairs", "[]", "azimuth_pairs: 0 is not 1 to 8"},
    {"azimuth_pairs", "[0,1]", "azimuth_pairs[0]: must be two channels: [0, 1]"},
    {"azimuth_pairs", "[[0,1,2]]", "azimuth_pairs[0]: must be two channels: [0, 1]"},
    {"azimuth_pairs", "[[0,1],[0,5]]", "azimuth_pairs[1][1]: 5 is not one of the channels"},
    {"azimuth_pairs", "[[-1,1]]", "azimuth_pairs[0][0]: -1 is not one of the channels"},
    {"azimuth_pairs", "[[0,1.5]]", "azimuth_pairs[0][1]: must be a whole number"},
    {"azimuth_pairs", "[[18446744073709551615,1]]",
     "azimuth_pairs[0][0]: 1000000 is not one of the channels"},
    {"azimuth_pairs", "[[-9223372036854775808,1]]",
     "azimuth_pairs[0][0]: -1000000 is not one of the channels"},
    {"azimuth_pairs", "[[2,2]]", "azimuth_pairs[0]: is one microphone twice"},
    {"azimuth_pairs", "[[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1],[0,1]]",
     "azimuth_pairs: has 9 entries, at most 8 are possible"},
    {"elevation_pairs", "[[0,5]]", "elevation_pairs[0][1]: 5 is not one of the channels"},
    {"elevation_pairs", "[[4,4]]", "elevation_pairs[0]: is one microphone twice"},
    {"elevation_pairs", "1", "elevation_pairs: must be a list in brackets"},
    {"grid", "[]", "grid: must be an object in braces"},
    {"grid", "{\"step\": 1}", "grid: 'step': is not a field here"},
    {"grid", "{\"sine_step\": \"1\"}", "grid: sine_step: must be a number"},
    {"grid", "{\"sine_step\": 0}", "grid: sine_step: 0 is not a positive step"},
    {"grid", "{\"sine_step\": 0.5}",
     "grid: sine_step: 0.5 takes the last of 227 azimuths beyond the sine of 90 degrees"},
    {"grid", "{\"lowest_azimuth_sine\": -1.5}", "grid: lowest_azimuth_sine: -1.5 is no sine"},
    {"grid", "{\"lowest_elevation_sine\": 2}", "grid: lowest_elevation_sine: 2 is no sine"},
    {"voice_channels", "7", "voice_channels: must be two channels: [0, 1]"},
    {"voice_channels", "[0,9]", "voice_channels[1]: 9 is not one of the channels"},
    {"noise_channels", "[8,0]", "noise_channels[0]: 8 is not one of the channels"},
    {"noise_channels", "[\"0\",0]", "noise_channels[0]: must be a whole number"},
    {"time_domain_voice_channel", "5", "time_domain_voice_channel: 5 is not one of the channels"},
    {"time_domain_voice_channel", "[1]", "time_domain_voice_channel: must be a whole number"},
    {"loudspeaker", "[1,2]", "loudspeaker: must be three numbers in metres: [x, y, z]"},
    {"loudspeaker", "[0,0,-1000]", "loudspeaker: has a coordinate beyond 100 m"},
    {"attenuate_loudspeaker", "1", "attenuate_loudspeaker: must be true or false"},
    {"attenuate_loudspeaker", "true", "attenuate_loudspeaker: needs the field loudspeaker"},
    {"product", "1", "product: must be a text in quotes"},
    {"product", "\"nobody\"", "product: no built-in array is called 'nobody'"},
    {"product", "\"aster\"",
     "product: this is not the built-in array aster any more: leave the field out of an array of "
     "your own"},
};

TEST(ArrayJson, EveryRefusalNamesTheField) {
    for (const Refused& one : Fields) {
        EXPECT_EQ(std::string("desk.json: ") + one.words, refusal(deskWith(one.field, one.value)))
            << one.field << " = " << one.value;
    }
}

TEST(ArrayJson, AMissingFieldIsNamed) {
    for (const char* field : {"voxloc_array", "microphones"}) {
        Json json = Json::parse(Desk);
        json.erase(field);
        EXPECT_EQ("desk.json: " + std::string(field) + ": is missing", refusal(json.dump()));
    }
    Json json = Json::parse(Desk);
    json.erase("azimuth_pairs");
    EXPECT_EQ("desk.json: azimuth_pairs: is missing; voxloc arrays suggest chooses pairs",
              refusal(json.dump()));
}

TEST(ArrayJson, PairsOutsideTheirSpacingAreRefused) {
    EXPECT_EQ("desk.json: azimuth_pairs[0]: has its microphones less than 1.03 cm apart",
              refusal(R"({"voxloc_array":1,"microphones":[[0,0,0],[0,0.0102,0]],
                         "azimuth_pairs":[[0,1]]})"));
    EXPECT_EQ("desk.json: azimuth_pairs[0]: has its microphones more than 14.8 m apart",
              refusal(R"({"voxloc_array":1,"microphones":[[0,0,0],[0,14.9,0]],
                         "azimuth_pairs":[[0,1]]})"));
}

TEST(ArrayJson, WhatIsNoObjectIsRefused) {
    EXPECT_EQ("desk.json: must be an object in braces", refusal("[1]"));
    EXPECT_EQ("desk.json: must be an object in braces", refusal("null"));
}

TEST(ArrayJson, ABrokenTextIsRefusedWithItsByte) {
    EXPECT_EQ("desk.json: is not JSON from byte 1 on", refusal(""));
    EXPECT_EQ("desk.json: is not JSON from byte 20 on", refusal(R"({"voxloc_array": 1,})"));
    EXPECT_EQ("desk.json: is not JSON from byte " + std::to_string(Desk.size()) + " on",
              refusal(Desk.substr(0, Desk.size() - 1)));
}

TEST(ArrayJson, ANumberThatNoDoubleHoldsIsRefused) {
    EXPECT_EQ("desk.json: holds a number beyond every sensible one",
              refusal(R"({"voxloc_array": 1e999})"));
}

TEST(ArrayJson, AFieldThatIsThereTwiceIsRefused) {
    EXPECT_EQ("desk.json: 'name': is there twice", refusal(R"({"name": "a", "name": "b"})"));
    EXPECT_EQ("desk.json: 'sine_step': is there twice",
              refusal(R"({"grid": {"sine_step": 1, "sine_step": 2}})"));
}

TEST(ArrayJson, BottomlessNestingIsRefused) {
    EXPECT_EQ("desk.json: is nested too deeply", refusal(std::string(100000, '[')));
}

}  // namespace

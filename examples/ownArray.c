/*
 * An array of one's own: four microphones in a row and one above them, described in a struct,
 * looked over, and given a talker to find. The test audio generator stands in for the microphones.
 */
#include <stdio.h>
#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

static const VoxlocArray Desk = {
    .channels = 5,
    .microphone = {{0, -0.30f, -0.12f},
                   {0, -0.10f, -0.12f},
                   {0, 0.10f, -0.12f},
                   {0, 0.30f, -0.12f},
                   {0, 0.10f, 0.12f}},
    .azimuthPairs = 3,
    .azimuthPair = {{0, 3}, {1, 2}, {0, 2}},
    .elevationPairs = 2,
    .elevationPair = {{2, 4}, {1, 2}},
    .minimumAzimuth = -0.9f,
    .minimumElevation = -0.5f,
    .angleInterval = 0.0075f,
    .voiceChannels = {1, 2},
    .noiseChannels = {1, 2},
    .timeDomainVoiceChannel = 2,
};

static uint32_t channels(void) {
    return (uint32_t)Desk.channels;
}

static const Position* microphone(uint32_t channel) {
    return &Desk.microphone[channel];
}

int main(void) {
    const float talker[3] = {-0.35f, 0.18f, 3.0f}; /* -20 degrees, 10 degrees up, 3 m */
    char reason[VOXLOC_REASON_SIZE];
    VoxlocArray wrong = Desk;
    wrong.azimuthPair[1].second = 5;
    if (!voxloc_checkArray(&wrong, reason)) printf("refused: %s\n", reason);

    VoxlocTracker* tracker = voxloc_createTracker(&Desk, reason);
    if (tracker == NULL) {
        fprintf(stderr, "%s\n", reason);
        return 1;
    }
    AudioGenerator* microphones = createAudioGenerator(channels, microphone, 1);
    TrackerResult found = {0};
    for (int frame = 0; frame < 20; ++frame) {
        voxloc_track(tracker, getNextFrame(talker, 0, microphones), 24, 0, &found);
    }
    if (voxloc_hasEstimate(tracker)) {
        printf("azimuth %.1f elevation %.1f\n", (double)found.azimuth, (double)found.elevation);
    }
    destroyAudioGenerator(microphones);
    voxloc_destroyTracker(tracker);
    return 0;
}

/*
 * Two arrays in one process, a thread each: every tracker is an object of its own, and the two
 * share nothing that changes. The test audio generator stands in for the microphones.
 */
#include <pthread.h>
#include <stdio.h>
#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

typedef struct Room {
    const char* product;
    float talker[3]; /* azimuth and elevation in radians, range in metres */
    TrackerResult found;
} Room;

/* The generator asks for its geometry without saying who asks. */
static _Thread_local const VoxlocArray* Listening;

static uint32_t channels(void) {
    return (uint32_t)Listening->channels;
}

static const Position* microphone(uint32_t channel) {
    return &Listening->microphone[channel];
}

static void* listen(void* argument) {
    Room* room = argument;
    VoxlocTracker* tracker =
        voxloc_createProductTracker(voxloc_findProductByName(room->product)->type, NULL);
    if (tracker == NULL) return NULL;
    Listening = voxloc_getArray(tracker);
    AudioGenerator* microphones = createAudioGenerator(channels, microphone, 1);
    for (int frame = 0; frame < 10; ++frame) {
        voxloc_track(tracker, getNextFrame(room->talker, 0, microphones), 24, 0, &room->found);
    }
    destroyAudioGenerator(microphones);
    voxloc_destroyTracker(tracker);
    return NULL;
}

int main(void) {
    Room rooms[2] = {{.product = "aster", .talker = {0.26f, 0.07f, 5.6f}},
                     {.product = "bramble", .talker = {-0.44f, 0.09f, 3.0f}}};
    pthread_t threads[2];
    for (int i = 0; i < 2; ++i) {
        if (pthread_create(&threads[i], NULL, listen, &rooms[i]) != 0) return 1;
    }
    for (int i = 0; i < 2; ++i) pthread_join(threads[i], NULL);
    for (int i = 0; i < 2; ++i) {
        printf("%s: azimuth %.1f elevation %.1f\n", rooms[i].product,
               (double)rooms[i].found.azimuth, (double)rooms[i].found.elevation);
    }
    return 0;
}

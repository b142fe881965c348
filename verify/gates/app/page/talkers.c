/*
 * Two talkers in turn, and pauses, before the microphones of aster: 20 seconds of raw 16-bit
 * samples on standard output. One microphone is weak.
 */
#include <math.h>
#include <stdio.h>
#include <voxloc/unittestGenerator.h>
#include <voxloc/voxloc.h>

enum { Frames = 470, Part = 94, Channels = 6, Weak = 4 };

static const float Talkers[2][3] = {{-0.5f, 0.1f, 1.8f}, {0.6f, 0.1f, 2.6f}};

int main(void) {
    static short out[Channels * FRAME_SAMPLES];
    unsigned noise = 1;
    voxloc_initialize(PRODUCT_ASTER);
    AudioGenerator* generator =
        createAudioGenerator(voxloc_getNumberOfChannels, voxloc_getMicrophoneCoordinates, 1);
    for (int frame = 0; frame < Frames; ++frame) {
        const int part = frame / Part;
        const float* in = getNextFrame(Talkers[part / 2 % 2], 0, generator);
        const float gain = part % 2 == 0 ? 0.6f / 256.0f : 0.0f;
        for (int c = 0; c < Channels; ++c) {
            for (int i = 0; i < FRAME_SAMPLES; ++i) {
                noise = noise * 1664525u + 1013904223u;
                const float hiss = (float)(noise >> 24) / 64.0f - 2.0f;
                const float sample = in[c * FRAME_SAMPLES + i] * gain + hiss;
                out[i * Channels + c] = (short)lrintf(c == Weak ? 0.1f * sample : sample);
            }
        }
        fwrite(out, sizeof out[0], Channels * FRAME_SAMPLES, stdout);
    }
    destroyAudioGenerator(generator);
    voxloc_destroy();
    return 0;
}

/*
 * The signal library by itself: a tone under a rustle is smoothed, and a transform says which tone
 * it was. Frequencies are in cycles per block of POINTS samples.
 */
#include <dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h>
#include <dsplib/sp_fir_neon.h>
#include <math.h>
#include <stdio.h>

#define LOG2_POINTS 9
#define POINTS (1 << LOG2_POINTS)
#define TAPS 4

static float power(const float* bin) {
    return bin[0] * bin[0] + bin[1] * bin[1];
}

int main(void) {
    static const float average[TAPS] = {0.25f, 0.25f, 0.25f, 0.25f};
    static float samples[POINTS + TAPS - 1], smooth[POINTS];
    static _Alignas(8) float signal[2 * POINTS], spectrum[2 * POINTS];
    const float cycle = 2 * 3.14159265f / POINTS;
    for (int i = 0; i < POINTS + TAPS - 1; ++i) {
        const float rustle = 2 * cosf(cycle * (float)((POINTS / 2 * i) % POINTS));
        samples[i] = sinf(cycle * (float)(37 * i % POINTS)) + rustle;
    }
    sp_fir_gen(samples, average, smooth, TAPS, POINTS);

    for (int i = 0; i < POINTS; ++i) signal[2 * i] = smooth[i];
    cfft_pow2_conjpair_splitrad_c89(POINTS, LOG2_POINTS, signal, spectrum);
    int loudest = 0;
    for (int bin = 1; bin <= POINTS / 2; ++bin) {
        if (power(spectrum + 2 * bin) > power(spectrum + 2 * loudest)) loudest = bin;
    }
    printf("%d cycles\n", loudest);
    return 0;
}

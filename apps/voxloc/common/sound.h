/** Sound as the tracker takes it: what readers, arrays, doctor and simulator must agree on. */
#ifndef VOXLOC_APP_COMMON_SOUND_H
#define VOXLOC_APP_COMMON_SOUND_H

constexpr int SampleRate = 48000;       // Hz
constexpr double LagRate = 192000.0;    // lags of the correlations a second
constexpr double SpeedOfSound = 348.0;  // metres a second

#endif

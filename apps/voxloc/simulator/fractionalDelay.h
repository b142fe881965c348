/** A unit pulse between two samples: a sinc under Kaiser's window. */
#ifndef VOXLOC_APP_SIMULATOR_FRACTIONAL_DELAY_H
#define VOXLOC_APP_SIMULATOR_FRACTIONAL_DELAY_H

#include <array>

constexpr int PulseTaps = 32;
constexpr int PulseMiddle = 15;  // the tap that the pulse is on, or comes after

using Pulse = std::array<float, PulseTaps>;

/** The pulse, `fraction` (0 to 1) of a sample after its middle. */
const Pulse& pulseAt(int step);

constexpr int PulseSteps = 256;  // of a sample; between two the pulse is drawn straight

/** Adds a pulse at `delay` (samples); `samples` must have room for its taps on both sides. */
inline void addPulse(float* samples, double delay, float gain) {
    const int whole = static_cast<int>(delay);
    const double steps = (delay - whole) * PulseSteps;
    const int step = static_cast<int>(steps);
    const float beyond = static_cast<float>(steps - step);
    const Pulse& before = pulseAt(step);
    const Pulse& after = pulseAt(step + 1);
    float* first = samples + (whole - PulseMiddle);
    const float gainAfter = gain * beyond, gainBefore = gain - gainAfter;
    for (std::size_t k = 0; k < PulseTaps; ++k) {
        first[k] += gainBefore * before[k] + gainAfter * after[k];
    }
}

#endif

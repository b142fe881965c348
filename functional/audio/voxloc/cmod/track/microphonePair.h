/** Two microphones whose signals are correlated, and what the correlation is used with. */
#ifndef VOXLOC_MICROPHONE_PAIR_H
#define VOXLOC_MICROPHONE_PAIR_H

#include <cstdint>

namespace voxloc {

struct MicrophonePair {
    std::int16_t firstMicrophone;
    std::int16_t secondMicrophone;
    std::int16_t* lookupTable;           // lag of each point of the pair's search grid
    std::uint16_t upperBin;              // highest spectrum bin in use
    std::uint16_t lowerBin;              // lowest spectrum bin in use
    std::uint16_t loudspeakerHalfWidth;  // lags; half width of the damped zone
    std::int16_t loudspeakerLag;         // lag of the loudspeaker's direct sound
    float loudspeakerGain;               // factor inside the zone; 1 without attenuation
};

}  // namespace voxloc

#endif

/** Spectra of some channels as the detectors are handed them, between guards. */
#ifndef VERIFY_KIT_GUARDED_SPECTRA_H
#define VERIFY_KIT_GUARDED_SPECTRA_H

#include <cstddef>

#include "guardedFloats.h"
#include "models/doubleFft.h"
#include "track/grids.h"

namespace kit {

/** All bins are 0 at first. */
class GuardedSpectra {
  public:
    explicit GuardedSpectra(std::size_t channels) : floats_(channels * Slot) {}

    void set(std::size_t channel, int bin, float real, float imaginary = 0.0f) {
        float* at = floats_.data() + channel * Slot + 2 * static_cast<std::size_t>(bin);
        at[0] = real;
        at[1] = imaginary;
    }
    /** One value in every float of a channel, or of all. */
    void fill(std::size_t channel, float value) {
        for (std::size_t i = 0; i < Slot; i++) floats_[channel * Slot + i] = value;
    }
    void fill(float value) {
        for (std::size_t c = 0; c < floats_.size() / Slot; c++) fill(c, value);
    }
    void clear() { fill(0.0f); }

    const float* data() const { return floats_.data(); }
    bool intact() const { return floats_.intact(); }

    /** A channel's bins in double precision. */
    reference::Spectrum channel(std::size_t index) const {
        reference::Spectrum bins;
        for (std::size_t i = index * Slot; i < (index + 1) * Slot; i += 2) {
            bins.emplace_back(floats_[i], floats_[i + 1]);
        }
        return bins;
    }

  private:
    static constexpr std::size_t Slot = voxloc::SpectrumFloats;

    reference::GuardedFloats floats_;
};

}  // namespace kit

#endif

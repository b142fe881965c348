/** Frames as spectra, and how far each of their bins is the talker's. */
#ifndef VOXLOC_APP_DOCTOR_SPECTRA_H
#define VOXLOC_APP_DOCTOR_SPECTRA_H

#include <complex>
#include <memory>
#include <vector>

#include <voxloc/voxloc.h>

#include "common/sound.h"

constexpr double BinWidth = 11.71875;  // Hz
// 400 Hz to 8 kHz: speech that rooms and microphones leave as it was.
constexpr int LowestBin = 34, HighestBin = 683;
constexpr int UsedBins = HighestBin - LowestBin + 1;
constexpr int LagsAround = 16384;  // of a correlation, all the way round
constexpr int LagsPerSample = 4;   // 192,000 lags a second
constexpr double MostBinWeight = 0.5;

struct Spectrum {
    std::vector<std::complex<float>> phase;  // of UsedBins, each of length 1, or 0 in silence
    std::vector<float> power;                // of full scale, unscaled transform
    std::vector<float> weight;               // 0 to 0.5: 0 in noise that stands still
};

/** Blocks of two frames under a window, one after the other. */
class SpectrumMaker {
  public:
    explicit SpectrumMaker(int channels);

    /** Channel-major samples within [-1, 1]. */
    const std::vector<Spectrum>& next(const std::vector<float>& frame);

  private:
    void transform(int channel);
    void weigh(Spectrum& spectrum, std::vector<float>& noise) const;

    int channels_;
    std::vector<float> window_, twiddles_, aTable_, bTable_, block_, result_, work_, previous_;
    std::vector<float> blocks_;
    std::vector<std::vector<float>> noise_;
    std::vector<Spectrum> spectra_;
    bool isFirst_ = true;
};

/** Cross-spectra of the used bins, back to lags. */
class Correlator {
  public:
    Correlator();

    /** `lags` to both sides of zero, the middle first written at `out[lags]`. */
    void correlate(const std::vector<std::complex<float>>& cross, int lags, float scale,
                   float* out);

  private:
    std::vector<float> twiddles_, aTable_, bTable_, spectrum_, scratch_;
};

#endif

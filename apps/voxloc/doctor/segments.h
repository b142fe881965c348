/** Half seconds of sound, as correlations of every two channels. */
#ifndef VOXLOC_APP_DOCTOR_SEGMENTS_H
#define VOXLOC_APP_DOCTOR_SEGMENTS_H

#include <complex>
#include <vector>

#include "doctor/spectra.h"

/** Pairs i < j of n channels, numbered row by row. */
int pairsOf(int channels);
int pairIndex(int channels, int i, int j);

/** Correlations of phases, 1 where two channels carry the same sound with that lag. */
struct SegmentTables {
    double seconds = 0.0;         // its middle, from the start of the input
    int channels = 0, lags = 0;   // lags to each side of zero
    std::vector<float> values;    // pair after pair, 2·lags + 1 each
    std::vector<float> likeness;  // of each pair: 1 where both channels carry the same, -1 turned

    const float* pair(int i, int j) const {
        return values.data() + static_cast<std::size_t>(pairIndex(channels, i, j)) *
                                   static_cast<std::size_t>(2 * lags + 1);
    }
    float* pair(int i, int j) {
        return const_cast<float*>(static_cast<const SegmentTables*>(this)->pair(i, j));
    }
};

/** Gathers frames to segments and keeps those in which the most stands out of the noise. */
class SegmentGatherer {
  public:
    SegmentGatherer(int channels, int lags);

    void add(const std::vector<Spectrum>& spectra, double seconds);

    /** Up to half a minute, in the order of time; ends the gathering. */
    std::vector<SegmentTables> finish();

  private:
    struct Gathered {
        SegmentTables tables;
        double weight = 0.0;  // of its bins: how far they stand out of the noise, 0 to 1
    };
    void accumulate(const std::vector<Spectrum>& spectra);
    void close();
    void keep(Gathered segment);
    SegmentTables tablesOf(double weight);

    int channels_, lags_, frames_ = 0;
    double firstSecond_ = 0.0, lastSecond_ = 0.0;
    std::vector<std::vector<std::complex<float>>> cross_;  // of each pair
    std::vector<double> weights_;                          // of each pair
    Correlator correlator_;
    std::vector<Gathered> gathered_;
};

constexpr double SegmentSeconds = 0.512;

#endif

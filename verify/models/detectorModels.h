/**
 * The four detectors in double precision, one plain loop per sentence of what they do. They share
 * nothing with the module.
 */
#ifndef VERIFY_REFERENCE_DETECTOR_MODELS_H
#define VERIFY_REFERENCE_DETECTOR_MODELS_H

#include <array>
#include <vector>

#include "doubleFft.h"

namespace reference {

/** Per-bin amplitude of the room noise in two channels. */
class NoiseLevelModel {
  public:
    const std::vector<double>& update(const Spectrum& first, const Spectrum& second, bool freeze);

  private:
    bool followsFast(double fast, double slow, double noise);

    std::vector<double> noise_ = std::vector<double>(2049);
    std::vector<double> fast_ = std::vector<double>(2049);
    std::vector<double> slow_ = std::vector<double>(2049);
    double remembered_ = 0.0;  // slow band sum when the level last changed
    int counter_ = 0;
    int startUp_ = 40;  // frames
};

/** Speech-band power against the noise level, with burst counters and a hangover. */
class FrequencyVoiceModel {
  public:
    struct Decision {
        bool voice, sound;
    };
    Decision update(const Spectrum& first, const Spectrum& second,
                    const std::vector<double>& noise);

  private:
    int temporal_ = 0;
    int burst_ = 0;
    int hang_ = 0;
};

/** Envelope of one channel's waveform against its running median; one frame late. */
class TimeVoiceModel {
  public:
    /** samples: the 2048 new samples of the channel. */
    bool update(const double* samples);

  private:
    std::vector<double> history_ = std::vector<double>(6144);
    double median_ = 0.0;
    double step_ = 1e-12;
    bool previous_ = true;
};

/** Power just below the top of the spectrum against its neighbour band, judged every 20 frames. */
class UltrasoundModel {
  public:
    bool update(const std::vector<Spectrum>& channels);

  private:
    std::array<double, 8> band_{};
    std::array<double, 8> neighbour_{};
    int frames_ = 0;
    double kept_ = -100.0;  // dB
};

}  // namespace reference

#endif

/** Frames in, a diagnosis of the array out. */
#ifndef VOXLOC_APP_DOCTOR_DOCTOR_H
#define VOXLOC_APP_DOCTOR_DOCTOR_H

#include <cstdint>
#include <vector>

#include "arrays/arrays.h"
#include "doctor/channelStatistics.h"
#include "doctor/diagnosis.h"
#include "doctor/geometryFaults.h"
#include "doctor/segments.h"
#include "doctor/spectra.h"
#include "readers/reader.h"

class Doctor {
  public:
    explicit Doctor(const NamedArray& array);

    /** A frame of as many channels as the array has. */
    void add(const InputFrame& frame);

    /** Once, after the last frame. */
    Diagnosis diagnose();

  private:
    void watchTracker(const InputFrame& frame);
    bool hasSpeech() const;
    ChannelSet judgeChannels(Diagnosis& diagnosis) const;
    void judgeGeometry(Diagnosis& diagnosis, ChannelSet used);
    void judgeTracker(Diagnosis& diagnosis) const;

    NamedArray array_;
    Tracker tracker_;
    Places places_;
    SpectrumMaker spectra_;
    SegmentGatherer gatherer_;
    ChannelStatistics statistics_;
    std::vector<float> samples_;
    std::uint64_t frames_ = 0, voiceFrames_ = 0, upsideDownFrames_ = 0, ultrasoundFrames_ = 0;
    double ultrasoundLevel_ = -200.0;  // dB, the highest that was flagged
};

#endif

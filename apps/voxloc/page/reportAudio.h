/** The sound of a run, compressed, for its page. */
#ifndef VOXLOC_APP_PAGE_REPORT_AUDIO_H
#define VOXLOC_APP_PAGE_REPORT_AUDIO_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "writers/output.h"

/**
 * Opus in Ogg, mono, about 36 kbit/s: 16 MB an hour, 21 as base64. Kept in a temporary file without
 * a name, so that memory does not grow with the run. Throws BadData.
 */
class ReportAudio {
  public:
    ReportAudio();
    ~ReportAudio();
    ReportAudio(const ReportAudio&) = delete;
    ReportAudio& operator=(const ReportAudio&) = delete;

    /** A frame of one microphone: FRAME_SAMPLES whole numbers of `bits` bits. */
    void add(const float* samples, std::uint32_t bits, std::uint64_t sample);

    /** Of the first frame, in samples of the input. */
    std::uint64_t firstSample() const { return firstSample_; }

    /** Ends the sound and writes it as an element of the page. */
    void write(Output& output);

  private:
    class Encoder;
    std::FILE* file_;
    std::unique_ptr<Encoder> encoder_;
    std::vector<float> scaled_;
    std::uint64_t firstSample_ = 0;
    bool isEmpty_ = true;
};

#endif

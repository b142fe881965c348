/** What a run comes to: how long, how much voice, who talked from when to when and where. */
#ifndef VOXLOC_APP_WRITERS_SUMMARY_H
#define VOXLOC_APP_WRITERS_SUMMARY_H

#include <cstdint>
#include <string>
#include <vector>

#include "arrays/arrayJson.h"
#include "common/record.h"

/** One talker at one place: frames with voice whose positions stay together. */
struct Turn {
    std::uint64_t firstFrame = 0, lastFrame = 0;
    float azimuth = 0.0f, elevation = 0.0f, range = 0.0f, quality = 0.0f;  // medians
};

struct Summary {
    std::uint64_t frames = 0, voiceFrames = 0;
    std::vector<Turn> turns;
};

/** Collects a run, record by record; its memory grows with the turns and not with the run. */
class Summarizer {
  public:
    void add(const Record& record);
    /** With the turn that is still open. */
    Summary summary() const;

  private:
    struct Place {
        float azimuth, elevation, range, quality;
    };
    void close();
    static Turn turnOf(std::uint64_t first, std::uint64_t last, const std::vector<Place>& places);

    Summary closed_;
    std::uint64_t first_ = 0, last_ = 0;
    std::vector<Place> places_;  // of the open turn, thinned out when it gets long
    std::uint64_t step_ = 1, skipped_ = 0;
    int away_ = 0;  // frames in a row that lie elsewhere
};

/** {"type": "summary", "frames", "seconds", "voice_share", "turns": [...]} */
Json summaryToJson(const Summary& summary);

/** A few lines for people. */
std::string summaryToText(const Summary& summary);

#endif

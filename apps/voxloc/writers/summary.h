/** What a run comes to: how long, how much voice, who talked from when to when and where. */
#ifndef VOXLOC_APP_WRITERS_SUMMARY_H
#define VOXLOC_APP_WRITERS_SUMMARY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "arrays/arrayJson.h"
#include "common/record.h"

/** One talker at one place: frames with voice whose positions stay together. */
struct Turn {
    std::uint64_t firstFrame = 0, lastFrame = 0;
    float azimuth = 0.0f, elevation = 0.0f, range = 0.0f,
          quality = 0.0f;  // medians; elevation: NaN when unknown
};

struct Summary {
    std::uint64_t frames = 0, voiceFrames = 0;
    std::vector<Turn> turns;
};

/** Collects a run, record by record; its memory grows with the turns and not with the run. */
class Summarizer {
  public:
    Summarizer() = default;
    /** Keeps the last `mostTurns` turns: a run without an end needs a bound. */
    explicit Summarizer(std::size_t mostTurns) : mostTurns_(mostTurns) {}
    void add(const Record& record);
    /** With the turn that is still open. */
    Summary summary() const;

  private:
    struct Place {
        std::uint64_t frame;
        float azimuth, elevation, range, quality;
    };
    /** Places of one talker; thinned out when they get many. */
    struct Stay {
        std::uint64_t first = 0, last = 0;
        std::vector<Place> places;
        std::uint64_t step = 1;
        void add(const Place& place);
        Turn turn() const;
    };
    bool isNear(const Place& place) const;
    void addPlace(const Place& place);
    void close();

    std::size_t mostTurns_ = SIZE_MAX;
    Summary closed_;
    Stay open_;
    std::vector<float> recent_;     // azimuths of the open turn, the newest last
    std::vector<Place> elsewhere_;  // since when the position lies away from the open turn
};

/** {"type": "summary", "frames", "seconds", "voice_share", "turns": [...]} */
Json summaryToJson(const Summary& summary);

/** A few lines for people. */
std::string summaryToText(const Summary& summary);

#endif

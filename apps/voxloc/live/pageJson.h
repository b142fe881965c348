/** The live page's data: what its script (page/live/live.js) takes apart. */
#ifndef VOXLOC_APP_LIVE_PAGE_JSON_H
#define VOXLOC_APP_LIVE_PAGE_JSON_H

#include <string>
#include <vector>

#include "arrays/arrays.h"
#include "live/feed.h"

struct LiveAbout {
    NamedArray array;
    std::string input;      // its name and what it gives
    std::string recording;  // the file's name without its folders, or empty
    std::size_t historyFrames = 0;
};

/** What does not change: {"array", "channels", "microphones": [[x, y, z], ...] ...}. */
std::string helloJson(const LiveAbout& about);

/**
 * One record as a list: frame, seconds, azimuth, elevation, range, quality, flag word, whether
 * there is an estimate, ultrasound level, levels. What is no number is null.
 */
void appendRecordJson(std::string& text, const Record& record);

std::string recordsJson(const std::vector<Record>& records);
std::string statusJson(const LiveStatus& status, int channels);
std::string markJson(const Mark& mark);

#endif

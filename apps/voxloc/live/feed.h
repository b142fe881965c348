/** What the tracker's thread hands to those who look on. */
#ifndef VOXLOC_APP_LIVE_FEED_H
#define VOXLOC_APP_LIVE_FEED_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "common/record.h"
#include "live/microphoneWatch.h"

enum class LiveState { Running, Waiting, Ended };

struct LiveStatus {
    LiveState state = LiveState::Running;
    std::string reason;  // while it waits for the device
    std::uint64_t overruns = 0, reopened = 0;
    std::uint32_t unrecordedFrames = 0;  // that the recording lacks
    MicrophoneWatch::States microphones = {};

    bool operator==(const LiveStatus& other) const;
};

struct Mark {
    std::uint64_t frame = 0;
    std::string label;
};

/**
 * Keeps the records of the last minutes. The one who adds never waits for those who look on: who is
 * slower than that loses the oldest records. Memory is taken once.
 */
class Feed {
  public:
    explicit Feed(std::size_t records);

    void add(const Record& record);
    void set(const LiveStatus& status);
    void mark(const std::string& label, std::uint64_t frame);
    /** No more comes; those who wait go on. */
    void close();

    /** Where one who looks on is. Begins before all that is kept. */
    struct Place {
        std::uint64_t record = 0, mark = 0, status = 0;
    };
    struct News {
        std::vector<Record> records;
        std::vector<Mark> marks;
        bool hasStatus = false;
        LiveStatus status;
        bool isClosed = false;
        bool isEmpty() const { return records.empty() && marks.empty() && !hasStatus; }
    };
    /** What came after that place, which moves on; waits for it that long. */
    News wait(Place& place, std::chrono::milliseconds longest);

    /** The number of the last frame. */
    std::uint64_t lastFrame() const;

  private:
    bool hasNews(const Place& place) const;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Record> records_;  // a ring; record n lies at n modulo its size
    std::uint64_t added_ = 0;
    std::vector<Mark> marks_;  // a ring, too
    std::uint64_t marked_ = 0;
    LiveStatus status_;
    std::uint64_t statusNumber_ = 1;
    bool isClosed_ = false;
};

#endif

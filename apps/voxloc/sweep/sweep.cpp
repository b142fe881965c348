#include "sweep/sweep.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

#include "common/failure.h"
#include "common/signals.h"
#include "sweep/sounds.h"

namespace {

constexpr int HoldsOn = 36;  // frames after which no detector speaks of what is over
constexpr std::uint32_t SampleBits = 24;

/** One tracker over one row of places. */
class Row {
  public:
    Row(const SweepRun& run, const SweepJob& job, std::size_t first)
        : run_(run), job_(job), first_(first) {
        const std::size_t last = std::min(run.places.size(), first + PlacesInARow);
        places_.assign(run.places.begin() + static_cast<std::ptrdiff_t>(first),
                       run.places.begin() + static_cast<std::ptrdiff_t>(last));
    }

    std::vector<SweepFrame> track() {
        const Tracker tracker = createTracker(run_.array);
        const std::vector<bool> activity = activityOf(job_, places_.size());
        std::vector<SweepFrame> frames;
        int silent = HoldsOn;
        const TakeFrame take = [&](int k, const float* samples) {
            SweepFrame frame;
            placeAt(k, frame);
            voxloc_track(tracker.get(), samples, SampleBits, 0, &frame.result);
            frame.hasEstimate = voxloc_hasEstimate(tracker.get()) != 0;
            frame.isTalking = activity[static_cast<std::size_t>(k)];
            silent = frame.isTalking ? 0 : silent + 1;
            frame.isLongSilent = silent > HoldsOn;
            frames.push_back(frame);
        };
        if (job_.isSimulated) {
            playInRoom(run_.array.array, job_, places_, job_.choice.seed + first_, take);
        } else {
            playPlainly(run_.array.array, job_, places_, take);
        }
        return frames;
    }

  private:
    void placeAt(int k, SweepFrame& frame) const {
        if (k < PauseFrames) return;
        const int last = static_cast<int>(places_.size()) - 1;
        const int place = std::min(last, (k - PauseFrames) / job_.framesAtPlace);
        frame.place = static_cast<std::int32_t>(first_) + place;
        frame.since = k - PauseFrames - place * job_.framesAtPlace;
    }

    const SweepRun& run_;
    const SweepJob& job_;
    std::size_t first_;
    std::vector<Direction> places_;
};

/** Rows on threads; the first failure is kept and thrown when all have ended. */
class Rows {
  public:
    Rows(const SweepRun& run, const SweepJob& job)
        : run_(run), job_(job), rows_((run.places.size() + PlacesInARow - 1) / PlacesInARow) {}

    std::vector<std::vector<SweepFrame>> track() {
        std::vector<std::thread> threads;
        const auto count = std::min(static_cast<std::size_t>(std::max(1, job_.jobs)), rows_.size());
        for (std::size_t i = 1; i < count; ++i) threads.emplace_back([this] { work(); });
        work();
        for (std::thread& thread : threads) thread.join();
        if (failure_) std::rethrow_exception(failure_);
        if (stopRequested()) throw Interrupted();
        return std::move(rows_);
    }

  private:
    void work() {
        try {
            for (std::size_t row = next_++; row < rows_.size() && !stopRequested(); row = next_++) {
                rows_[row] = Row(run_, job_, row * PlacesInARow).track();
            }
        } catch (...) {
            const std::lock_guard<std::mutex> guard(mutex_);
            if (!failure_) failure_ = std::current_exception();
            next_ = rows_.size();
        }
    }

    const SweepRun& run_;
    const SweepJob& job_;
    std::vector<std::vector<SweepFrame>> rows_;
    std::atomic<std::size_t> next_{0};
    std::mutex mutex_;
    std::exception_ptr failure_;
};

}  // namespace

SweepRun sweep(const NamedArray& array, const SweepJob& job) {
    SweepRun run;
    run.array = array;
    run.places = placesOf(array.array, job.choice, job.room, job.place);
    for (const auto& row : Rows(run, job).track()) {
        run.frames.insert(run.frames.end(), row.begin(), row.end());
    }
    return run;
}

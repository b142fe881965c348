#include "live/feed.h"

#include <algorithm>

namespace {

constexpr std::size_t MostMarks = 200;

/** What lies in a ring from `place` on, as far as it is still there. */
template <class Item>
std::vector<Item> after(const std::vector<Item>& ring, std::uint64_t added, std::uint64_t& place) {
    const std::uint64_t oldest = added > ring.size() ? added - ring.size() : 0;
    std::vector<Item> items;
    items.reserve(static_cast<std::size_t>(added - std::max(place, oldest)));
    for (std::uint64_t n = std::max(place, oldest); n < added; ++n) {
        items.push_back(ring[static_cast<std::size_t>(n % ring.size())]);
    }
    place = added;
    return items;
}

}  // namespace

bool LiveStatus::operator==(const LiveStatus& other) const {
    return state == other.state && reason == other.reason && overruns == other.overruns &&
           reopened == other.reopened && unrecordedFrames == other.unrecordedFrames &&
           microphones == other.microphones;
}

Feed::Feed(std::size_t records) : records_(records), marks_(MostMarks) {}

void Feed::add(const Record& record) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        records_[static_cast<std::size_t>(added_ % records_.size())] = record;
        ++added_;
    }
    changed_.notify_all();
}

void Feed::set(const LiveStatus& status) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (status == status_) return;
        status_ = status;
        ++statusNumber_;
    }
    changed_.notify_all();
}

void Feed::mark(const std::string& label, std::uint64_t frame) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        marks_[static_cast<std::size_t>(marked_ % marks_.size())] = {frame, label};
        ++marked_;
    }
    changed_.notify_all();
}

void Feed::close() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
}

bool Feed::hasNews(const Place& place) const {
    return isClosed_ || place.record < added_ || place.mark < marked_ ||
           place.status < statusNumber_;
}

Feed::News Feed::wait(Place& place, std::chrono::milliseconds longest) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, longest, [&] { return hasNews(place); });
    News news;
    news.records = after(records_, added_, place.record);
    news.marks = after(marks_, marked_, place.mark);
    news.hasStatus = place.status < statusNumber_;
    news.status = status_;
    place.status = statusNumber_;
    news.isClosed = isClosed_;
    return news;
}

std::uint64_t Feed::lastFrame() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return added_ == 0 ? 0
                       : records_[static_cast<std::size_t>((added_ - 1) % records_.size())].frame;
}

#include "live/arrayCheck.h"

#include <utility>

#include "common/record.h"
#include "common/text.h"
#include "doctor/doctor.h"

namespace {

constexpr double VoiceSeconds = 10.0, MostSeconds = 60.0;

double seconds(std::uint64_t frames) {
    return static_cast<double>(frames) * FRAME_SAMPLES / SampleRate;
}

}  // namespace

ArrayCheck::ArrayCheck(NamedArray array) : array_(std::move(array)) {}

ArrayCheck::~ArrayCheck() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

bool ArrayCheck::start() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isEnding_ || state_ == State::Gathering || state_ == State::Judging) return false;
    if (thread_.joinable()) thread_.join();  // it has left its last line that locks
    frames_.clear();
    heardFrames_ = voiceFrames_ = 0;
    diagnosis_.clear();
    state_ = State::Gathering;
    thread_ = std::thread([this] { examine(); });
    return true;
}

void ArrayCheck::add(const InputFrame& frame, bool isVoice) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (state_ != State::Gathering) return;
        frames_.push_back(frame);
        ++heardFrames_;
        voiceFrames_ += isVoice ? 1 : 0;
        if (seconds(voiceFrames_) >= VoiceSeconds || seconds(heardFrames_) >= MostSeconds) {
            state_ = State::Judging;
        }
    }
    changed_.notify_all();
}

/** The next frame for the doctor; false when all were there, or the run ends. */
bool ArrayCheck::next(InputFrame& frame) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock,
                  [this] { return isEnding_ || !frames_.empty() || state_ != State::Gathering; });
    if (isEnding_ || frames_.empty()) return false;
    frame = std::move(frames_.front());
    frames_.pop_front();
    return true;
}

void ArrayCheck::examine() {
    Doctor doctor(array_);
    InputFrame frame;
    while (next(frame)) doctor.add(frame);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (isEnding_) return;
    }
    std::string text = diagnosisJson("live", array_.name, doctor.diagnose());
    text.pop_back();  // the end of its line
    const std::lock_guard<std::mutex> lock(mutex_);
    diagnosis_ = std::move(text);
    state_ = State::Done;
}

std::string ArrayCheck::json() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const char* const names[] = {"idle", "gathering", "judging", "done"};
    std::string text =
        std::string(R"({"state":")") + names[static_cast<int>(state_)] + R"(","voice":)";
    appendFixed(text, seconds(voiceFrames_), 1);
    text += R"(,"needed":)";
    appendFixed(text, VoiceSeconds, 0);
    return text + R"(,"diagnosis":)" + (diagnosis_.empty() ? "null" : diagnosis_) + "}";
}

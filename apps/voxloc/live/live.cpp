#include "live/live.h"

#include <chrono>
#include <cmath>
#include <memory>
#include <utility>

#include "common/failure.h"
#include "common/signals.h"
#include "common/text.h"
#include "live/arrayCheck.h"
#include "live/feed.h"
#include "live/framer.h"
#include "live/markFile.h"
#include "live/pageJson.h"
#include "live/recordingFile.h"
#include "live/server.h"
#include "locate/locator.h"
#include "readers/farEnd.h"

namespace {

constexpr std::size_t HistoryFrames = 4219;  // three minutes
constexpr std::size_t MostTurns = 1000;      // of the summary
using Clock = std::chrono::steady_clock;

InputFormat inputOf(const CaptureFormat& format) {
    InputFormat input;
    input.name = format.name;
    input.kind = format.kind;
    input.channels = format.channels;
    input.rate = format.rate;
    return input;
}

void checkChannels(const LiveJob& job, const CaptureFormat& format, const NamedArray& array) {
    for (const int channel : job.read.channels) {
        if (channel < format.channels) continue;
        throw BadData(format.name + ": --channels names channel " + std::to_string(channel) +
                      ", the input has 0 to " + std::to_string(format.channels - 1));
    }
    const int channels =
        job.read.channels.empty() ? format.channels : static_cast<int>(job.read.channels.size());
    if (channels == array.array.channels) return;
    throw BadData(format.name + ": has " + std::to_string(channels) + " channels, array " +
                  array.name + " has " + std::to_string(array.array.channels) +
                  "; choose and order them with --channels");
}

std::string withoutFolders(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

class Listening {
  public:
    explicit Listening(LiveJob job);
    int run();

  private:
    static CaptureOptions withNeeds(const LiveJob& job, const NamedArray& array);
    void openServer();
    void openWriter();
    bool step();
    void take(std::size_t count);
    void publish(const Record& record);
    void noteLostFrames();
    void changed(CaptureEvent event);
    void noteMicrophones();
    void lost();
    void skipLostTime();
    bool isOver() const;
    void finishRecording();
    void finish();

    LiveJob job_;
    NamedArray array_;
    std::unique_ptr<Capture> capture_;
    FarEnd farEnd_;
    Framer framer_;
    Locator locator_;
    Feed feed_{HistoryFrames};
    LiveStatus status_;
    MicrophoneWatch watch_;
    Summarizer summarizer_{MostTurns};
    std::unique_ptr<RecordingFile> recording_;
    std::unique_ptr<MarkFile> marks_;
    std::unique_ptr<ArrayCheck> check_;
    std::unique_ptr<LiveServer> server_;
    std::unique_ptr<Output> output_;
    std::unique_ptr<RecordWriter> writer_;
    std::vector<float> samples_;
    std::uint64_t frames_ = 0;                // that were located
    std::uint64_t lostSamples_ = 0;           // as far as the clock tells
    std::optional<Clock::time_point> heard_;  // when the last samples came
    int exit_ = StatusSuccess;
};

CaptureOptions Listening::withNeeds(const LiveJob& job, const NamedArray& array) {
    CaptureOptions options = job.capture;
    options.neededChannels = array.array.channels;
    if (!job.read.channels.empty()) {
        options.neededChannels = 1;
        for (const int channel : job.read.channels) {
            options.neededChannels = std::max(options.neededChannels, channel + 1);
        }
    }
    return options;
}

Listening::Listening(LiveJob job)
    : job_(std::move(job)),
      array_(findArray(job_.array)),
      capture_(openCapture(withNeeds(job_, array_))),
      farEnd_(job_.farEnd.empty() ? FarEnd() : FarEnd::fromFile(job_.farEnd)),
      framer_(capture_->format().channels, job_.read.channels, job_.read.gain),
      locator_(array_) {
    checkChannels(job_, capture_->format(), array_);
    samples_.resize(FRAME_SAMPLES * static_cast<std::size_t>(capture_->format().channels));
    if (!job_.recording.empty()) {
        recording_ = std::make_unique<RecordingFile>(locator_.tracker(), job_.recording);
        marks_ = std::make_unique<MarkFile>(job_.recording);
    }
    if (job_.serve) openServer();
    if (job_.form) openWriter();
}

void Listening::openServer() {
    const CaptureFormat& format = capture_->format();
    LiveAbout about;
    about.array = array_;
    about.input =
        format.name + ", " + format.kind + ", " + std::to_string(format.channels) + " channels";
    about.recording = withoutFolders(job_.recording);
    about.historyFrames = HistoryFrames;
    LiveServerOptions options;
    options.address = *job_.serve;
    options.token = job_.token;
    options.hello = helloJson(about);
    options.channels = array_.array.channels;
    check_ = std::make_unique<ArrayCheck>(array_);
    options.check = check_.get();
    options.setMark = [this](const std::string& label) -> std::optional<std::uint64_t> {
        const std::uint64_t frame = feed_.lastFrame();
        if (marks_ == nullptr || !marks_->write(label, frame)) return {};
        feed_.mark(label, frame);
        return frame;
    };
    server_ = std::make_unique<LiveServer>(std::move(options), feed_);
    say("the page is at " + urlOf(server_->address()));
    if (job_.token) say("who opens it needs the token, once as /?token=TOKEN");
    if (!isLoopback(job_.serve->host)) {
        say("others on the network reach it; nothing is encrypted on its way");
    }
}

void Listening::openWriter() {
    output_ = std::make_unique<Output>("-");
    const RunHeader header{array_, inputOf(capture_->format()), job_.read, job_.farEnd, job_.clock};
    writer_ = std::make_unique<RecordWriter>(*job_.form, header, *output_);
    output_->flush();
}

bool Listening::isOver() const {
    return job_.duration &&
           static_cast<double>(frames_) * FRAME_SAMPLES >= *job_.duration * SampleRate;
}

int Listening::run() {
    try {
        while (step()) {
        }
    } catch (const BadData& damage) {
        say(damage.what());
        exit_ = StatusBadData;
    }
    // Ctrl-C ends whatever feeds the pipe, too, which may be seen first.
    if (stopRequested() && exit_ == StatusSuccess) exit_ = StatusInterrupted;
    finish();
    return exit_;
}

bool Listening::step() {
    if (isOver()) return false;
    if (stopRequested()) return false;
    const CaptureRead got = capture_->read(samples_.data(), framer_.wanted());
    if (got.event == CaptureEvent::Ended) return false;
    if (got.event == CaptureEvent::Samples) {
        take(got.count);
    } else {
        changed(got.event);
    }
    return true;
}

void Listening::take(std::size_t count) {
    heard_ = Clock::now();
    if (!framer_.add(samples_.data(), count)) return;
    InputFrame& frame = framer_.frame();
    frame.bits = capture_->format().form->bits;
    frame.sample = frames_ * FRAME_SAMPLES + lostSamples_;
    frame.flags = 0;
    if (farEnd_.isPlaying(frame.sample)) {
        voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &frame.flags);
    }
    Record record = locator_.locate(frame);
    // The frame of the recording, also when sound was lost before it.
    record.frame = frames_++;
    if (check_ != nullptr) check_->add(frame, has(record, VOXLOC_FLAG_VOICE));
    publish(record);
}

void Listening::publish(const Record& record) {
    if (writer_ != nullptr) {
        writer_->write(record);
        output_->flush();
    }
    feed_.add(record);
    summarizer_.add(record);
    watch_.add(record);
    noteMicrophones();
    noteLostFrames();
}

void Listening::noteLostFrames() {
    if (recording_ == nullptr || recording_->lostFrames() == status_.unrecordedFrames) return;
    status_.unrecordedFrames = recording_->lostFrames();
    exit_ = StatusBadData;
    feed_.set(status_);
}

void Listening::noteMicrophones() {
    const MicrophoneWatch::States& now = watch_.states();
    if (now == status_.microphones) return;
    for (std::size_t c = 0; c < now.size(); ++c) {
        if (now[c] == status_.microphones[c]) continue;
        say("microphone " + std::to_string(c) + " is " +
            (now[c] == MicrophoneState::Silent ? "silent"
             : now[c] == MicrophoneState::Weak ? "far weaker than the others"
                                               : "heard again"));
    }
    status_.microphones = now;
    feed_.set(status_);
}

void Listening::changed(CaptureEvent event) {
    switch (event) {
        case CaptureEvent::Gap:
            ++status_.overruns;
            say("overrun " + std::to_string(status_.overruns) +
                ": the device had more than was taken");
            skipLostTime();
            break;
        case CaptureEvent::Lost:
            lost();
            break;
        case CaptureEvent::Back:
            ++status_.reopened;
            status_.state = LiveState::Running;
            status_.reason.clear();
            say(capture_->format().name + " is back");
            skipLostTime();
            break;
        default:
            return;
    }
    feed_.set(status_);
}

void Listening::lost() {
    status_.state = LiveState::Waiting;
    status_.reason = capture_->reason();
    say(capture_->format().name + " is gone: " + status_.reason + "; waiting for it");
}

/** Times go on with the clock while sound is lost. What there is of a frame is no use. */
void Listening::skipLostTime() {
    if (!heard_) return;
    const double seconds = std::chrono::duration<double>(Clock::now() - *heard_).count();
    lostSamples_ += framer_.filled() + static_cast<std::uint64_t>(seconds * SampleRate);
    heard_ = Clock::now();
    framer_.drop();
}

void Listening::finishRecording() {
    if (recording_ == nullptr) return;
    recording_->finish();
    noteLostFrames();
    if (status_.unrecordedFrames > 0) {
        say(recording_->path() + " lacks " + std::to_string(status_.unrecordedFrames) + " frames");
    }
}

void Listening::finish() {
    status_.state = LiveState::Ended;
    feed_.set(status_);
    server_.reset();
    if (framer_.filled() > 0 && exit_ == StatusSuccess && !isOver()) {
        say("the last " + std::to_string(framer_.filled()) +
            " samples fill no frame and are left out");
    }
    finishRecording();
    if (writer_ == nullptr) return;
    writer_->finish(summarizer_.summary());
    output_->finish();
}

}  // namespace

int live(LiveJob job) {
    return Listening(std::move(job)).run();
}

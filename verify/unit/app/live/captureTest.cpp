#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/failure.h"
#include "live/capture.h"
#include "live/framer.h"
#include "live/reopening.h"
#include "live/resampledCapture.h"
#include "live/wavHeader.h"

namespace {

/** The read end of a pipe that holds those bytes and no more. */
class Pipe {
  public:
    explicit Pipe(const std::string& bytes) {
        EXPECT_EQ(pipe(ends_), 0);
        add(bytes);
    }
    ~Pipe() {
        close(ends_[0]);
        end();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void add(const std::string& bytes) {
        EXPECT_EQ(write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void end() {
        if (ends_[1] >= 0) close(ends_[1]);
        ends_[1] = -1;
    }
    int descriptor() const { return ends_[0]; }

  private:
    int ends_[2] = {-1, -1};
};

CaptureOptions raw(const char* form, int channels) {
    CaptureOptions options;
    options.device = "-";
    options.form = findRawForm(form);
    options.channels = channels;
    return options;
}

TEST(PipeCapture, GivesWhatIsThereAndKeepsTheRestOfASample) {
    Pipe pipe(std::string("\x01\x00\x02\x00\x03", 5));
    const auto capture = openPipe(pipe.descriptor(), raw("S16", 2));
    std::vector<float> samples(20, 0.0f);
    CaptureRead got = capture->read(samples.data(), 10);
    ASSERT_EQ(got.event, CaptureEvent::Samples);
    ASSERT_EQ(got.count, 1u);
    EXPECT_EQ(samples[0], 1.0f);
    EXPECT_EQ(samples[1], 2.0f);
    pipe.add(std::string("\x00\xff\xff", 3));
    got = capture->read(samples.data(), 10);
    ASSERT_EQ(got.count, 1u);
    EXPECT_EQ(samples[0], 3.0f);
    EXPECT_EQ(samples[1], -1.0f);
}

TEST(PipeCapture, DoesNotWaitForever) {
    Pipe pipe("");
    const auto capture = openPipe(pipe.descriptor(), raw("S16", 1));
    float sample;
    EXPECT_EQ(capture->read(&sample, 1).event, CaptureEvent::Nothing);
}

TEST(PipeCapture, EndsWithTheLengthOfTheHeader) {
    std::string wav("RIFF\x30\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\xbb\0\0\0\0\0\0\x02\0\x10\0",
                    36);
    wav += std::string("data\x02\0\0\0\x05\0LIST", 14);
    Pipe pipe(wav);
    const auto capture = openPipe(pipe.descriptor(), {"-", nullptr, 0, 48000, 1, false});
    float samples[4] = {};
    EXPECT_EQ(capture->read(samples, 4).count, 1u);
    EXPECT_EQ(samples[0], 5.0f);
    EXPECT_EQ(capture->read(samples, 4).event, CaptureEvent::Ended);
}

/** A header of little-endian fields. */
std::string wavHeader(int tag, int channels, int block, int bits, const std::string& more = "") {
    const auto two = [](int value) {
        return std::string{static_cast<char>(value & 255), static_cast<char>(value >> 8)};
    };
    const std::string format = two(tag) + two(channels) + std::string("\x80\xbb\0\0\0\0\0\0", 8) +
                               two(block) + two(bits) + more;
    return "RIFF" + std::string(4, '\0') + "WAVE" + "LIST" + std::string("\x03\0\0\0abc\0", 8) +
           "fmt " + two(static_cast<int>(format.size())) + two(0) + format + "data" +
           std::string("\0\0\0\x80", 4);
}

WavHeader readHeader(const std::string& bytes) {
    std::size_t at = 0;
    return readWavHeader([&](unsigned char* to, std::size_t count) {
        if (at + count > bytes.size()) throw BadData("short");
        std::memcpy(to, bytes.data() + at, count);
        at += count;
    });
}

TEST(WavHeader, NamesTheFormOfTheSamples) {
    EXPECT_STREQ(readHeader(wavHeader(1, 2, 4, 16)).form->name, "S16");
    EXPECT_STREQ(readHeader(wavHeader(1, 2, 6, 24)).form->name, "S24_3");
    EXPECT_STREQ(readHeader(wavHeader(1, 2, 8, 24)).form->name, "S24");
    EXPECT_STREQ(readHeader(wavHeader(1, 2, 8, 32)).form->name, "S32");
    EXPECT_STREQ(readHeader(wavHeader(3, 2, 8, 32)).form->name, "F32");
    const std::string extension("\x16\0\x18\0\0\0\0\0\x01\0", 10);
    EXPECT_STREQ(readHeader(wavHeader(0xfffe, 2, 8, 32, extension)).form->name, "S32");
}

TEST(WavHeader, OfAProgramThatRecordsKnowsNoLength) {
    const WavHeader header = readHeader(wavHeader(1, 6, 12, 16));
    EXPECT_EQ(header.channels, 6);
    EXPECT_EQ(header.rate, 48000);
    EXPECT_FALSE(header.bytes);
}

TEST(WavHeader, RefusesWhatItDoesNotUnderstand) {
    EXPECT_THROW(readHeader(std::string(64, 'x')), BadData);
    EXPECT_THROW(readHeader(wavHeader(1, 0, 4, 16)), BadData);
    EXPECT_THROW(readHeader(wavHeader(2, 2, 4, 16)), BadData);
    EXPECT_THROW(readHeader(wavHeader(1, 2, 2, 8)), BadData);
    EXPECT_THROW(readHeader("RIFF1234WAVEdata" + std::string(4, '\0')), BadData);
    EXPECT_THROW(readHeader("RIFF1234WAVELIST" + std::string(4, '\xff')), BadData);
    EXPECT_THROW(readHeader("RIFF1234WAVEfmt " + std::string("\x04\0\0\0\1\0\1\0", 8)), BadData);
}

TEST(Framer, MapsChannelsAndFillsFramesAcrossReads) {
    Framer framer(3, {2, 0}, 0.0);
    std::vector<float> interleaved;
    for (int n = 0; n < FRAME_SAMPLES; ++n) {
        for (int c = 0; c < 3; ++c) interleaved.push_back(static_cast<float>(10 * n + c));
    }
    EXPECT_FALSE(framer.add(interleaved.data(), 1000));
    EXPECT_EQ(framer.wanted(), FRAME_SAMPLES - 1000u);
    EXPECT_TRUE(framer.add(interleaved.data() + 3000, FRAME_SAMPLES - 1000));
    const std::vector<float>& samples = framer.frame().samples;
    ASSERT_EQ(samples.size(), 2u * FRAME_SAMPLES);
    for (std::size_t n = 0; n < FRAME_SAMPLES; ++n) {
        ASSERT_EQ(samples[n], interleaved[3 * n + 2]) << n;
        ASSERT_EQ(samples[FRAME_SAMPLES + n], interleaved[3 * n]) << n;
    }
}

TEST(Framer, DropsWhatDoesNotContinue) {
    Framer framer(1, {}, 0.0);
    const std::vector<float> old(100, 1.0f), fresh(FRAME_SAMPLES, 2.0f);
    framer.add(old.data(), old.size());
    framer.drop();
    EXPECT_EQ(framer.filled(), 0u);
    EXPECT_TRUE(framer.add(fresh.data(), fresh.size()));
    EXPECT_EQ(framer.frame().samples, fresh);
}

TEST(Framer, AppliesTheGain) {
    Framer framer(1, {}, 20.0);
    const std::vector<float> samples(FRAME_SAMPLES, 3.0f);
    framer.add(samples.data(), samples.size());
    EXPECT_FLOAT_EQ(framer.frame().samples[0], 30.0f);
}

/** Gives what a list says. */
class ListedCapture : public Capture {
  public:
    ListedCapture(std::vector<CaptureEvent> events, CaptureFormat format)
        : events_(std::move(events)), format_(std::move(format)) {}
    const CaptureFormat& format() const override { return format_; }
    std::string reason() const override { return "pulled out"; }
    CaptureRead read(float* samples, std::size_t count) override {
        if (next_ == events_.size()) return {CaptureEvent::Ended, 0};
        const CaptureEvent event = events_[next_++];
        if (event != CaptureEvent::Samples) return {event, 0};
        std::fill_n(samples, count * static_cast<std::size_t>(format_.channels), 1000.0f);
        return {event, count};
    }

  private:
    std::vector<CaptureEvent> events_;
    CaptureFormat format_;
    std::size_t next_ = 0;
};

CaptureFormat mono(int rate = 48000) {
    return {"test", "test", 1, rate, findRawForm("S16")};
}

TEST(Reopening, TriesAgainLessAndLessOftenUntilTheDeviceIsBack) {
    int opens = 0;
    std::chrono::milliseconds slept(0);
    std::vector<long> triedAt;
    const auto open = [&]() -> std::unique_ptr<Capture> {
        if (opens++ > 0) triedAt.push_back(static_cast<long>(slept.count()));
        if (opens > 1 && opens < 8) throw BadData("no such device");
        const CaptureEvent first = opens == 1 ? CaptureEvent::Lost : CaptureEvent::Samples;
        return std::make_unique<ListedCapture>(std::vector<CaptureEvent>{first}, mono());
    };
    ReopeningCapture capture(open, [&](std::chrono::milliseconds time) { slept += time; });
    float sample;
    EXPECT_EQ(capture.read(&sample, 1).event, CaptureEvent::Lost);
    EXPECT_EQ(capture.reason(), "pulled out");
    CaptureEvent event = CaptureEvent::Nothing;
    for (int i = 0; i < 1000 && event == CaptureEvent::Nothing; ++i) {
        const auto before = slept;
        event = capture.read(&sample, 1).event;
        ASSERT_LE((slept - before).count(), CaptureWait);
    }
    EXPECT_EQ(event, CaptureEvent::Back);
    EXPECT_EQ(triedAt, (std::vector<long>{200, 600, 1400, 3000, 6200, 9400, 12600}));
    EXPECT_EQ(capture.read(&sample, 1).event, CaptureEvent::Samples);
}

TEST(Reopening, WaitsOnWhileAnotherDeviceIsThere) {
    int opens = 0;
    const auto open = [&]() -> std::unique_ptr<Capture> {
        const CaptureFormat format = ++opens == 2 ? mono(44100) : mono();
        return std::make_unique<ListedCapture>(std::vector<CaptureEvent>{CaptureEvent::Lost},
                                               format);
    };
    ReopeningCapture capture(open, [](std::chrono::milliseconds) {});
    float sample;
    capture.read(&sample, 1);
    EXPECT_EQ(capture.read(&sample, 1).event, CaptureEvent::Nothing);
    EXPECT_EQ(opens, 2);
    EXPECT_EQ(capture.reason(), "another device has come instead");
    while (opens < 3) capture.read(&sample, 1);
    EXPECT_EQ(capture.read(&sample, 1).event, CaptureEvent::Lost);
}

TEST(ResampledCapture, GivesAsMuchSoundAtTheTrackersRate) {
    const std::vector<CaptureEvent> seconds(100, CaptureEvent::Samples);
    const auto capture = resampled(std::make_unique<ListedCapture>(seconds, mono(16000)));
    EXPECT_EQ(capture->format().rate, 48000);
    std::vector<float> samples(2048);
    std::size_t total = 0;
    float last = 0.0f;
    for (int i = 0; i < 10000; ++i) {
        const CaptureRead got = capture->read(samples.data(), samples.size());
        if (got.event == CaptureEvent::Ended) break;
        total += got.count;
        if (total > 100000 && total < 150000) last = samples[0];
    }
    EXPECT_NEAR(static_cast<double>(total), 100.0 * 683.0 * 3.0, 2.0);
    EXPECT_NEAR(last, 1000.0f, 1.0f);
}

}  // namespace

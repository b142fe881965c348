#include "page/reportAudio.h"

#include <cmath>

#include <sndfile.h>

#include "common/failure.h"
#include "common/record.h"
#include "page/base64.h"
#include "page/oggPages.h"

/** libsndfile's encoder on a file. */
class ReportAudio::Encoder {
  public:
    explicit Encoder(std::FILE* file) {
        SF_INFO format = {};
        format.samplerate = SampleRate;
        format.channels = 1;
        format.format = SF_FORMAT_OGG | SF_FORMAT_OPUS;
        SF_VIRTUAL_IO io = {length, seek, read, write, tell};
        sound_ = sf_open_virtual(&io, SFM_WRITE, &format, file);
        if (sound_ == nullptr)
            throw BadData(std::string("cannot compress: ") + sf_strerror(nullptr));
        // libsndfile spreads 0 to 1 over 256 down to 6 kbit/s a channel.
        double compression = 0.86;
        sf_command(sound_, SFC_SET_COMPRESSION_LEVEL, &compression, sizeof compression);
    }
    ~Encoder() { sf_close(sound_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    void add(const std::vector<float>& samples) {
        const auto count = static_cast<sf_count_t>(samples.size());
        if (sf_writef_float(sound_, samples.data(), count) != count) {
            throw BadData(std::string("cannot compress the sound: ") + sf_strerror(sound_));
        }
    }

  private:
    static std::FILE* fileOf(void* context) { return static_cast<std::FILE*>(context); }
    static sf_count_t tell(void* context) { return ftello(fileOf(context)); }
    static sf_count_t seek(sf_count_t offset, int whence, void* context) {
        fseeko(fileOf(context), offset, whence);
        return tell(context);
    }
    static sf_count_t length(void* context) {
        const sf_count_t here = tell(context);
        const sf_count_t end = seek(0, SEEK_END, context);
        seek(here, SEEK_SET, context);
        return end;
    }
    static sf_count_t read(void* to, sf_count_t size, void* context) {
        return static_cast<sf_count_t>(
            std::fread(to, 1, static_cast<std::size_t>(size), fileOf(context)));
    }
    static sf_count_t write(const void* from, sf_count_t size, void* context) {
        return static_cast<sf_count_t>(
            std::fwrite(from, 1, static_cast<std::size_t>(size), fileOf(context)));
    }

    SNDFILE* sound_;
};

ReportAudio::ReportAudio() : file_(std::tmpfile()) {
    if (file_ == nullptr) throw cannot("make", "a temporary file for the sound");
    encoder_ = std::make_unique<Encoder>(file_);
}

ReportAudio::~ReportAudio() {
    encoder_.reset();
    std::fclose(file_);
}

void ReportAudio::add(const float* samples, std::uint32_t bits, std::uint64_t sample) {
    if (isEmpty_) firstSample_ = sample;
    isEmpty_ = false;
    const float scale = std::ldexp(1.0f, 1 - static_cast<int>(bits));
    scaled_.clear();
    for (int i = 0; i < FRAME_SAMPLES; ++i) {
        // What is no number would stay in the encoder's state.
        const float value = samples[i] * scale;
        scaled_.push_back(std::isfinite(value) ? std::fmax(-1.0f, std::fmin(1.0f, value)) : 0.0f);
    }
    encoder_->add(scaled_);
}

void ReportAudio::write(Output& output) {
    encoder_.reset();
    if (std::fflush(file_) != 0 || std::ferror(file_) != 0) {
        throw cannot("write", "the temporary file of the sound");
    }
    std::rewind(file_);
    output.write("<script type=\"application/octet-stream\" id=\"sound\">");
    std::vector<unsigned char> page, bytes;
    std::string text;
    const auto writeBytes = [&](std::size_t count) {
        text.clear();
        appendBase64(text, bytes.data(), count);
        output.write(text);
        bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    };
    while (readOggPage(file_, page)) {
        bytes.insert(bytes.end(), page.begin(), page.end());
        writeBytes(bytes.size() / 3 * 3);  // no padding but at the end
    }
    writeBytes(bytes.size());
    if (std::ferror(file_) != 0) throw cannot("read", "the temporary file of the sound");
    output.write("</script>\n");
}

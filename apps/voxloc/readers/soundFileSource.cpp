#include "readers/soundFileSource.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "common/failure.h"
#include "common/text.h"

namespace {

constexpr float FullScale24 = 8388608.0f;  // 2^23

struct CloseSound {
    void operator()(SNDFILE* sound) const { sf_close(sound); }
};

std::string kindOf(int format) {
    SF_FORMAT_INFO about = {};
    about.format = format & SF_FORMAT_TYPEMASK;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &about, sizeof about) != 0) return "sound file";
    return about.name;
}

/** Significant bits of whole numbers; 0 for floats. */
std::uint32_t bitsOf(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return 8;
        case SF_FORMAT_PCM_24:
            return 24;
        case SF_FORMAT_PCM_32:
            return 32;
        case SF_FORMAT_FLOAT:
        case SF_FORMAT_DOUBLE:
        case SF_FORMAT_VORBIS:
        case SF_FORMAT_OPUS:
            return 0;
        default:
            return 16;
    }
}

/**
 * Bytes of sound that the header promises and the file lacks, from what the library noted while it
 * opened the file: "data : 1000 (should be 900)". Programs that write to a pipe promise the most
 * that fits; that is no damage.
 */
long long missingBytes(SNDFILE* sound) {
    std::array<char, 8192> log = {};
    sf_command(sound, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    for (const std::string& line : split(log.data(), '\n')) {
        const std::size_t should = line.find("(should be ");
        if (line.compare(0, 4, "data") != 0 || should == std::string::npos) continue;
        const std::size_t colon = line.find(':');
        const auto promised =
            integerFrom(trimmed(std::string_view(line).substr(colon + 1, should - colon - 1)));
        const std::string_view rest = std::string_view(line).substr(should + 11);
        const auto found = integerFrom(rest.substr(0, rest.find(')')));
        constexpr long long Unknown = 0x7fff0000;  // from here on it is a promise of a pipe
        if (promised && found && *promised > *found && *promised < Unknown) {
            return *promised - *found;
        }
    }
    return 0;
}

class SoundFileSource : public SampleSource {
  public:
    explicit SoundFileSource(const std::string& path) : name_(path) {
        descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor_ < 0) throw cannot("open", path);
        sound_.reset(sf_open_fd(descriptor_, SFM_READ, &about_, 1));
        if (sound_ == nullptr) {
            throw BadData(path + ": is neither a recording nor a sound file (" +
                          sf_strerror(nullptr) + ")");
        }
        const std::uint32_t bits = bitsOf(about_.format);
        isFloat_ = bits == 0;
        format_.kind = kindOf(about_.format);
        format_.channels = about_.channels;
        format_.rate = about_.samplerate;
        format_.bits = isFloat_ ? 24 : bits;
        format_.length = static_cast<std::uint64_t>(about_.frames);
        missing_ = missingBytes(sound_.get());
    }

    const SampleFormat& format() const override { return format_; }

    std::size_t read(float* samples, std::size_t count) override {
        const auto wanted = static_cast<sf_count_t>(count);
        const sf_count_t taken = isFloat_ ? readFloats(samples, wanted) : readInts(samples, wanted);
        done_ += taken;
        if (taken == 0) failIfDamaged();
        return static_cast<std::size_t>(taken);
    }

  private:
    sf_count_t readFloats(float* samples, sf_count_t count) {
        const sf_count_t taken = sf_readf_float(sound_.get(), samples, count);
        for (sf_count_t i = 0; i < taken * about_.channels; ++i) samples[i] *= FullScale24;
        return taken;
    }

    sf_count_t readInts(float* samples, sf_count_t count) {
        words_.resize(static_cast<std::size_t>(count * about_.channels));
        const sf_count_t taken = sf_readf_int(sound_.get(), words_.data(), count);
        // The library puts every width into the high bits.
        const std::int64_t unit = std::int64_t{1} << (32 - format_.bits);
        for (sf_count_t i = 0; i < taken * about_.channels; ++i) {
            const std::int64_t whole = words_[static_cast<std::size_t>(i)] / unit;
            samples[i] = static_cast<float>(whole);
        }
        return taken;
    }

    void failIfDamaged() const {
        const off_t here = lseek(descriptor_, 0, SEEK_CUR);
        const std::string at = name_ + ": damaged at byte " + std::to_string(here) + ": ";
        if (missing_ > 0) {
            throw BadData(at + "the file ends, " + std::to_string(missing_) +
                          " bytes of sound are missing");
        }
        if (done_ < about_.frames) {
            throw BadData(at + "reading stops after " + std::to_string(done_) + " of " +
                          std::to_string(about_.frames) + " samples a channel");
        }
        if (sf_error(sound_.get()) != SF_ERR_NO_ERROR) {
            throw BadData(at + sf_strerror(sound_.get()));
        }
    }

    std::string name_;
    int descriptor_ = -1;  // closed with the sound
    SF_INFO about_ = {};
    std::unique_ptr<SNDFILE, CloseSound> sound_;
    SampleFormat format_;
    bool isFloat_ = false;
    long long missing_ = 0;
    sf_count_t done_ = 0;
    std::vector<int> words_;
};

}  // namespace

std::unique_ptr<SampleSource> openSoundFile(const std::string& path) {
    return std::make_unique<SoundFileSource>(path);
}

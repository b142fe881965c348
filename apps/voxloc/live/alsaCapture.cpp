#include <alsa/asoundlib.h>
#include <array>
#include <chrono>
#include <vector>

#include "common/failure.h"
#include "live/capture.h"

namespace {

constexpr snd_pcm_uframes_t PeriodSamples = 512;    // a divisor of the frame: its end is a period's
constexpr snd_pcm_uframes_t BufferSamples = 48000;  // what a stalled machine may be late by
constexpr std::chrono::seconds LongestSilence(5);   // without samples; then the device is lost

struct AlsaForm {
    const char* name;
    snd_pcm_format_t alsa;
};
// The finest first.
constexpr std::array<AlsaForm, 5> AlsaForms{{{"S32", SND_PCM_FORMAT_S32_LE},
                                             {"S24", SND_PCM_FORMAT_S24_LE},
                                             {"S24_3", SND_PCM_FORMAT_S24_3LE},
                                             {"S16", SND_PCM_FORMAT_S16_LE},
                                             {"F32", SND_PCM_FORMAT_FLOAT_LE}}};

void keepQuiet(const char*, int, const char*, int, const char*, ...) {}

struct ClosePcm {
    void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
using Pcm = std::unique_ptr<snd_pcm_t, ClosePcm>;

class AlsaCapture : public Capture {
  public:
    explicit AlsaCapture(const CaptureOptions& options) : options_(options) {
        snd_lib_error_set_handler(keepQuiet);  // what it would say is in our message
        format_.name = options.device;
        open();
        snd_pcm_hw_params_t* hardware;
        snd_pcm_hw_params_alloca(&hardware);
        choose(hardware);
        check(snd_pcm_hw_params(pcm_.get(), hardware), "set up");
        setWakeUp();
        check(snd_pcm_start(pcm_.get()), "start");
        step_ = format_.form->bytes * static_cast<unsigned>(format_.channels);
        heard_ = std::chrono::steady_clock::now();
    }

    const CaptureFormat& format() const override { return format_; }
    std::string reason() const override { return reason_; }

    CaptureRead read(float* samples, std::size_t count) override {
        const int ready = snd_pcm_wait(pcm_.get(), CaptureWait);
        if (ready < 0) return failed(ready);
        if (ready == 0) return nothing();
        bytes_.resize(count * step_);
        const snd_pcm_sframes_t got = snd_pcm_readi(pcm_.get(), bytes_.data(), count);
        if (got < 0) return failed(static_cast<int>(got));
        if (got == 0) return nothing();
        heard_ = std::chrono::steady_clock::now();
        const auto whole = static_cast<std::size_t>(got);
        unpack(*format_.form, bytes_.data(), whole * unsigned(format_.channels), samples);
        return {CaptureEvent::Samples, whole};
    }

  private:
    void check(int error, const char* doWhat) const {
        if (error >= 0) return;
        throw BadData(std::string("cannot ") + doWhat + " the capture device " + options_.device +
                      ": " + snd_strerror(error));
    }

    void open() {
        snd_pcm_t* pcm = nullptr;
        // Without SND_PCM_NONBLOCK it would wait for a busy device.
        check(snd_pcm_open(&pcm, options_.device.c_str(), SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK),
              "open");
        pcm_.reset(pcm);
    }

    void choose(snd_pcm_hw_params_t* hardware) {
        snd_pcm_t* pcm = pcm_.get();
        check(snd_pcm_hw_params_any(pcm, hardware), "set up");
        check(snd_pcm_hw_params_set_rate_resample(pcm, hardware, 0), "set up");
        check(snd_pcm_hw_params_set_access(pcm, hardware, SND_PCM_ACCESS_RW_INTERLEAVED), "set up");
        chooseForm(hardware);
        chooseChannels(hardware);
        unsigned rate = static_cast<unsigned>(options_.rate);
        check(snd_pcm_hw_params_set_rate_near(pcm, hardware, &rate, nullptr), "set the rate of");
        format_.rate = static_cast<int>(rate);
        snd_pcm_uframes_t period = PeriodSamples;
        check(snd_pcm_hw_params_set_period_size_near(pcm, hardware, &period, nullptr), "set up");
        snd_pcm_uframes_t buffer = BufferSamples;
        check(snd_pcm_hw_params_set_buffer_size_near(pcm, hardware, &buffer), "set up");
    }

    void chooseForm(snd_pcm_hw_params_t* hardware) {
        for (const AlsaForm& form : AlsaForms) {
            const RawForm* const raw = findRawForm(form.name);
            if (options_.form != nullptr && options_.form != raw) continue;
            if (snd_pcm_hw_params_set_format(pcm_.get(), hardware, form.alsa) < 0) continue;
            format_.form = raw;
            format_.kind = std::string("ALSA ") + form.name;
            return;
        }
        throw BadData("the capture device " + options_.device + " does not give " +
                      (options_.form != nullptr ? options_.form->name : "S16, S24, S32 or F32") +
                      " samples");
    }

    void chooseChannels(snd_pcm_hw_params_t* hardware) {
        unsigned most = 0;
        check(snd_pcm_hw_params_get_channels_max(hardware, &most), "set up");
        const unsigned first = static_cast<unsigned>(
            options_.channels > 0 ? options_.channels : options_.neededChannels);
        const unsigned last = options_.channels > 0 ? first : most;
        for (unsigned channels = first; channels <= last && channels <= MostChannels; ++channels) {
            if (snd_pcm_hw_params_set_channels(pcm_.get(), hardware, channels) < 0) continue;
            format_.channels = static_cast<int>(channels);
            return;
        }
        throw BadData("the capture device " + options_.device + " does not give " +
                      std::to_string(first) + " channels; it has up to " + std::to_string(most));
    }

    void setWakeUp() {
        snd_pcm_sw_params_t* software;
        snd_pcm_sw_params_alloca(&software);
        check(snd_pcm_sw_params_current(pcm_.get(), software), "set up");
        check(snd_pcm_sw_params_set_avail_min(pcm_.get(), software, PeriodSamples), "set up");
        check(snd_pcm_sw_params(pcm_.get(), software), "set up");
    }

    CaptureRead nothing() {
        if (std::chrono::steady_clock::now() - heard_ < LongestSilence) return {};
        reason_ = "it gives no samples";
        return {CaptureEvent::Lost, 0};
    }

    CaptureRead failed(int error) {
        if (error == -EAGAIN || error == -EINTR) return nothing();
        const bool isOverrun = error == -EPIPE || error == -ESTRPIPE;
        if (isOverrun && snd_pcm_prepare(pcm_.get()) >= 0 && snd_pcm_start(pcm_.get()) >= 0) {
            return {CaptureEvent::Gap, 0};
        }
        reason_ = snd_strerror(error);
        return {CaptureEvent::Lost, 0};
    }

    static constexpr unsigned MostChannels = 256;

    CaptureOptions options_;
    CaptureFormat format_;
    Pcm pcm_;
    std::size_t step_ = 0;  // bytes of one sample of every channel
    std::vector<unsigned char> bytes_;
    std::chrono::steady_clock::time_point heard_;
    std::string reason_;
};

}  // namespace

std::unique_ptr<Capture> openAlsa(const CaptureOptions& options) {
    return std::make_unique<AlsaCapture>(options);
}

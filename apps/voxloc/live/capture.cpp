#include "live/capture.h"

#include <unistd.h>
#include <thread>

#include "common/failure.h"
#include "common/record.h"
#include "live/reopening.h"
#include "live/resampledCapture.h"

namespace {

std::unique_ptr<Capture> openSource(const CaptureOptions& options) {
    if (options.device == "-") return openPipe(STDIN_FILENO, options);
    const auto sleep = [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); };
    return std::make_unique<ReopeningCapture>([options] { return openAlsa(options); }, sleep);
}

}  // namespace

std::unique_ptr<Capture> openCapture(const CaptureOptions& options) {
    std::unique_ptr<Capture> source = openSource(options);
    const int rate = source->format().rate;
    if (rate == SampleRate) return source;
    const std::string what = source->format().name + " gives " + std::to_string(rate) + " Hz";
    if (options.strict) throw BadData(what + ", not 48000 Hz");
    say(what + ", which is resampled to 48000 Hz");
    return resampled(std::move(source));
}

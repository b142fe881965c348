#include "live/liveCommand.h"

#include <memory>

#include "common/failure.h"
#include "common/optionTexts.h"
#include "live/live.h"

namespace {

struct Arguments {
    LiveJob job;
    std::string input, device, form, channels, clock, raw, serve, tokenFile;
    double duration = 0.0;
};

void setInput(Arguments& arguments) {
    CaptureOptions& capture = arguments.job.capture;
    if (arguments.input.empty() == arguments.device.empty()) {
        throw WrongUsage("live takes a device (--capture DEVICE) or - for standard input");
    }
    if (!arguments.input.empty() && arguments.input != "-") {
        throw WrongUsage("live takes - for standard input; locate reads files");
    }
    capture.device = arguments.device.empty() ? arguments.input : arguments.device;
    if (!arguments.raw.empty()) capture.form = findRawForm(arguments.raw);
    if (capture.device == "-" && capture.form != nullptr && capture.channels == 0) {
        throw WrongUsage("--raw needs --raw-channels");
    }
}

std::optional<RecordForm> formOf(const Arguments& arguments) {
    if (arguments.form.empty() && !arguments.serve.empty()) return {};
    if (arguments.form == "csv") return RecordForm::Csv;
    if (arguments.form == "jsonl") return RecordForm::JsonLines;
    return RecordForm::Text;
}

void setServe(Arguments& arguments) {
    LiveJob& job = arguments.job;
    if (!arguments.tokenFile.empty()) job.token = readToken(arguments.tokenFile);
    if (arguments.serve.empty()) return;
    job.serve = serveAddressFrom(arguments.serve);
    if (!isLoopback(job.serve->host) && !job.token) {
        throw WrongUsage("others could listen in at " + job.serve->host +
                         ": --serve outside this machine needs --token-file");
    }
}

int runLive(Arguments& arguments) {
    LiveJob& job = arguments.job;
    setInput(arguments);
    setServe(arguments);
    job.form = formOf(arguments);
    job.read.channels = channelsFrom(arguments.channels);
    job.clock = clockFrom(arguments.clock);
    if (arguments.duration > 0.0) job.duration = arguments.duration;
    return live(std::move(job));
}

void addInputOptions(CLI::App& command, Arguments& arguments) {
    LiveJob& job = arguments.job;
    command.add_option("input", arguments.input, "- for standard input: WAV, or raw with --raw");
    command.add_option("--capture", arguments.device, "An ALSA device, such as hw:1 or default");
    command
        .add_option("-a,--array", job.array,
                    "The array: a built-in one by its name, or a file NAME.json")
        ->required();
    command.add_option("--channels", arguments.channels,
                       "Channels of the input, one a microphone: 3,0,1,2");
    command.add_option("--gain", job.read.gain, "Decibels on every sample")
        ->check(CLI::Range(-120.0, 120.0));
    command.add_option("--far-end", job.farEnd,
                       "CSV of the seconds in which the loudspeaker plays: from,to");
    command
        .add_option("--raw", arguments.raw,
                    "Samples are S16, S24, S24_3, S32 or F32, little-endian, without a header; of "
                    "a device, the form to ask for")
        ->check(CLI::IsMember({"S16", "S24", "S24_3", "S32", "F32"}));
    command
        .add_option("--raw-channels", job.capture.channels, "Channels of raw samples or a device")
        ->check(CLI::Range(1, 1024));
    command.add_option("--raw-rate", job.capture.rate, "Rate of raw samples or a device in Hz")
        ->check(CLI::Range(8000, 768000));
    command.add_flag("--strict", job.capture.strict, "Refuse what does not run at 48 kHz");
}

void addOutputOptions(CLI::App& command, Arguments& arguments) {
    LiveJob& job = arguments.job;
    command
        .add_option("-f,--format", arguments.form,
                    "Print records as text, csv or jsonl; with --serve only when asked for")
        ->check(CLI::IsMember({"text", "csv", "jsonl"}));
    command.add_option("--clock", arguments.clock,
                       "Times of the wall from this one on: now, or 2026-11-21T10:00:00Z");
    command.add_option("--record", job.recording, "Record to this file; marks go beside it");
    command.add_option("--duration", arguments.duration, "End after so many seconds of sound")
        ->check(CLI::Range(0.001, 1e9));
    command.add_option(
        "--serve", arguments.serve,
        "Show a page at [ADDRESS:]PORT; on this machine alone unless told otherwise");
    command.add_option("--token-file", arguments.tokenFile,
                       "The first line of the file is what opens the page");
}

}  // namespace

void addLiveCommand(CLI::App& program, int& status) {
    CLI::App* command = program.add_subcommand("live", "Says who talks from where, now");
    command->footer(
        "Example: arecord -D hw:1 -f S16_LE -c 6 -r 48000 | "
        "voxloc live - --array aster --serve 8080");
    const auto arguments = std::make_shared<Arguments>();
    addInputOptions(*command, *arguments);
    addOutputOptions(*command, *arguments);
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runLive(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}

#include "live/liveCommand.h"

#include <memory>

#include "common/failure.h"
#include "common/optionTexts.h"
#include "live/live.h"
#include "readers/inputOptions.h"

namespace {

struct Arguments {
    LiveJob job;
    InputOptions input;
    std::string source, device, form, serve, tokenFile;
    double duration = 0.0;
};

void setInput(Arguments& arguments) {
    const ReadOptions& read = arguments.input.read;
    CaptureOptions& capture = arguments.job.capture;
    if (arguments.source.empty() == arguments.device.empty()) {
        throw WrongUsage("live takes a device (--capture DEVICE) or - for standard input");
    }
    if (!arguments.source.empty() && arguments.source != "-") {
        throw WrongUsage("live takes - for standard input; locate reads files");
    }
    capture.device = arguments.device.empty() ? arguments.source : arguments.device;
    if (!read.rawFormat.empty()) capture.form = findRawForm(read.rawFormat);
    capture.channels = read.rawChannels;
    capture.rate = read.rawRate;
    capture.strict = read.strict;
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
    job.array = arguments.input.array;
    job.farEnd = arguments.input.farEnd;
    job.read = readOptionsFrom(arguments.input);
    job.clock = clockFrom(arguments.input.clock);
    if (arguments.duration > 0.0) job.duration = arguments.duration;
    return live(std::move(job));
}

void addSourceOptions(CLI::App& command, Arguments& arguments) {
    command.add_option("input", arguments.source, "- for standard input: WAV, or raw with --raw");
    command.add_option("--capture", arguments.device, "An ALSA device, such as hw:1 or default");
    addInputOptions(command, arguments.input);
    command.get_option("--array")->required();
    // Here they say what to ask of a device, too.
    command.get_option("--raw")->description(
        "Samples are S16, S24, S24_3, S32 or F32, little-endian, without a header; of a device, "
        "the form to ask for");
    command.get_option("--raw-channels")->description("Channels of raw samples or a device");
    command.get_option("--raw-rate")->description("Rate of raw samples or a device in Hz");
}

void addOutputOptions(CLI::App& command, Arguments& arguments) {
    LiveJob& job = arguments.job;
    command
        .add_option("-f,--format", arguments.form,
                    "Print records as text, csv or jsonl; with --serve only when asked for")
        ->check(CLI::IsMember({"text", "csv", "jsonl"}));
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
    addSourceOptions(*command, *arguments);
    addOutputOptions(*command, *arguments);
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runLive(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}

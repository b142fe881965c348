#include "locate/locateCommand.h"

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "common/failure.h"
#include "common/optionTexts.h"
#include "locate/locate.h"

namespace {

struct Arguments {
    std::vector<std::string> files;
    LocateJob job;
    std::string form, channels, clock;
    double end = 0.0;
    bool hasEnd = false;
};

bool endsIn(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

RecordForm formOf(const Arguments& arguments) {
    std::string form = arguments.form;
    if (form.empty() && endsIn(arguments.job.output, ".csv")) form = "csv";
    if (form.empty() && endsIn(arguments.job.output, ".jsonl")) form = "jsonl";
    if (form == "csv") return RecordForm::Csv;
    if (form == "jsonl") return RecordForm::JsonLines;
    return RecordForm::Text;
}

int runLocate(Arguments& arguments) {
    LocateJob& job = arguments.job;
    if (arguments.files.size() != 1) throw WrongUsage("locate takes one file");
    job.input = arguments.files.front();
    job.form = formOf(arguments);
    job.read.channels = channelsFrom(arguments.channels);
    job.clock = clockFrom(arguments.clock);
    if (arguments.hasEnd) job.read.end = arguments.end;
    job.showsProgress = isatty(STDERR_FILENO) != 0;
    return locate(job);
}

void addOptions(CLI::App& command, Arguments& arguments) {
    LocateJob& job = arguments.job;
    command.add_option("files", arguments.files, "Recordings or sound files; - is standard input")
        ->required();
    command.add_option("-a,--array", job.array,
                       "The array: a built-in one by its name, or a file NAME.json");
    command.add_option("-o,--output", job.output, "Where the records go; - is standard output");
    command.add_option("-f,--format", arguments.form, "text, csv or jsonl")
        ->check(CLI::IsMember({"text", "csv", "jsonl"}));
    command.add_option("--channels", arguments.channels,
                       "Channels of the input, one a microphone: 3,0,1,2");
    command.add_option("--gain", job.read.gain, "Decibels on every sample")
        ->check(CLI::Range(-120.0, 120.0));
    command.add_option("--far-end", job.farEnd,
                       "CSV of the seconds in which the loudspeaker played: from,to");
    command.add_option("--start", job.read.start, "Begin at this second, down to a whole frame")
        ->check(CLI::Range(0.0, 1e9));
    command.add_option("--end", arguments.end, "Stop at this second")
        ->check(CLI::Range(0.0, 1e9))
        ->each([&arguments](const std::string&) { arguments.hasEnd = true; });
    command.add_option("--clock", arguments.clock,
                       "Times of the wall from this one on: now, or 2026-11-21T10:00:00Z");
    command.add_flag("--strict", job.read.strict, "Refuse what does not run at 48 kHz");
    command
        .add_option("--raw", job.read.rawFormat,
                    "The input is raw samples: S16, S24, S24_3, S32 or F32, little-endian")
        ->check(CLI::IsMember({"S16", "S24", "S24_3", "S32", "F32"}));
    command.add_option("--raw-channels", job.read.rawChannels, "Channels of raw samples")
        ->check(CLI::Range(1, 1024));
    command.add_option("--raw-rate", job.read.rawRate, "Rate of raw samples in Hz");
}

}  // namespace

void addLocateCommand(CLI::App& program, int& status) {
    CLI::App* command =
        program.add_subcommand("locate", "Says for each frame of a recording who talks from where");
    command->footer("Example: voxloc locate meeting.wav --array aster --format csv -o meeting.csv");
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*command, *arguments);
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runLocate(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}

#include "locate/locateCommand.h"

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "common/failure.h"
#include "common/optionTexts.h"
#include "locate/locate.h"
#include "locate/locateReport.h"
#include "many/manyOptions.h"
#include "readers/inputOptions.h"

namespace {

struct Arguments {
    std::vector<std::string> files;
    LocateJob job;
    InputOptions input;
    ReportOptions report;
    std::string form;
    double end = 0.0;
    bool hasEnd = false, hidesProgress = false;
    ManyOptions many;
    const CLI::App* command = nullptr;
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

int runMany(const Arguments& arguments) {
    const RecordForm form = arguments.form.empty() ? RecordForm::JsonLines : formOf(arguments);
    const bool showsProgress = isatty(STDERR_FILENO) != 0 && !arguments.hidesProgress;
    return locateFiles(*arguments.command, arguments.many, {arguments.files, form, showsProgress});
}

int runLocate(Arguments& arguments) {
    LocateJob& job = arguments.job;
    if (arguments.files.size() != 1 || !arguments.many.folder.empty()) return runMany(arguments);
    job.input = arguments.files.front();
    job.form = formOf(arguments);
    job.array = arguments.input.array;
    job.farEnd = arguments.input.farEnd;
    job.read = readOptionsFrom(arguments.input);
    job.clock = clockFrom(arguments.input.clock);
    if (arguments.hasEnd) job.read.end = arguments.end;
    job.showsProgress = isatty(STDERR_FILENO) != 0 && !arguments.hidesProgress;
    checkReportOptions(arguments.report, job);
    LocateReport report(arguments.report, job.output);
    return report.statusAfter(locate(job, report.observer()));
}

void addReportOptions(CLI::App& command, ReportOptions& options) {
    addPageOptions(command, options.page);
    command.add_option("--compare", options.compare,
                       "Compare with this run (CSV or JSON lines), frame by frame");
    command
        .add_option("--tolerance", options.tolerance,
                    "Degrees that --compare allows, 0 without; each also allows 0.1 m of range and "
                    "0.02 of quality")
        ->check(CLI::Range(0.0, 360.0));
}

void addOptions(CLI::App& command, Arguments& arguments) {
    ReadOptions& read = arguments.input.read;
    command.add_option("files", arguments.files, "Recordings or sound files; - is standard input")
        ->required();
    addInputOptions(command, arguments.input);
    command.add_option("-o,--output", arguments.job.output,
                       "Where the records go; - is standard output");
    command.add_option("-f,--format", arguments.form, "text, csv or jsonl")
        ->check(CLI::IsMember({"text", "csv", "jsonl"}));
    command.add_option("--start", read.start, "Begin at this second, down to a whole frame")
        ->check(CLI::Range(0.0, 1e9));
    command.add_option("--end", arguments.end, "Stop at this second")
        ->check(CLI::Range(0.0, 1e9))
        ->each([&arguments](const std::string&) { arguments.hasEnd = true; });
    command.add_flag("--no-progress", arguments.hidesProgress, "Never show how far the run is");
    addManyOptions(command, arguments.many);
}

}  // namespace

void addLocateCommand(CLI::App& program, int& status) {
    CLI::App* command =
        program.add_subcommand("locate", "Says for each frame of a recording who talks from where");
    command->footer("Example: voxloc locate meeting.wav --array aster --format csv -o meeting.csv");
    const auto arguments = std::make_shared<Arguments>();
    arguments->command = command;
    addOptions(*command, *arguments);
    addReportOptions(*command, arguments->report);
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runLocate(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}

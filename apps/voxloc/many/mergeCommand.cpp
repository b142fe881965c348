#include "many/mergeCommand.h"

#include <memory>

#include "common/failure.h"
#include "many/merge.h"

namespace {

struct Arguments {
    std::vector<std::string> runs;
    std::string output = "-";
};

int runMerge(Arguments& arguments) {
    Output output(arguments.output);
    const int status = mergeRuns(arguments.runs, output);
    output.finish();
    return status;
}

}  // namespace

void addMergeCommand(CLI::App& program, int& status) {
    CLI::App* command =
        program.add_subcommand("merge", "Joins finished runs of locate into one file");
    command->footer("Example: voxloc merge runs -o all.jsonl");
    const auto arguments = std::make_shared<Arguments>();
    command
        ->add_option("runs", arguments->runs,
                     "Runs in CSV or JSON lines, or folders with such runs below them")
        ->required();
    command->add_option("-o,--output", arguments->output,
                        "Where the merged runs go; - is standard output");
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runMerge(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}

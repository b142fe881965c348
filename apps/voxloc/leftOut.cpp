// In the place of pages, runs of many files and merge where VOXLOC_APP_EXTRAS is off. Their options
// are not in the help, and whoever gives one is told why.

#include <CLI/CLI.hpp>

#include "common/failure.h"
#include "many/manyOptions.h"
#include "many/mergeCommand.h"
#include "page/runPage.h"

namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw WrongUsage("this voxloc was built for a board, without " + what);
}

/** A group without a name is not in the help. */
constexpr const char* Hidden = "";

}  // namespace

void addPageOptions(CLI::App& command, PageOptions& options) {
    command.add_option("--report", options.file)->group(Hidden);
    command.add_flag("--embed-audio", options.embedsAudio)->group(Hidden);
}

std::unique_ptr<RunPage> beginPage(const PageOptions&, const RunHeader&, const std::string&) {
    refuse("--report");
}

void addManyOptions(CLI::App& command, ManyOptions& options) {
    command.add_option("--output-dir", options.folder)->group(Hidden);
    command.add_option("-j,--jobs", options.jobs)->group(Hidden);
    command.footer(command.get_footer() +
                   "\nThis program was built for a board: without --report, without --output-dir "
                   "for many files, without merge.");
}

int locateFiles(const CLI::App&, const ManyOptions&, const ManyInput&) {
    refuse("--output-dir and several files in one call");
}

void addMergeCommand(CLI::App& program, int& status) {
    CLI::App* command = program.add_subcommand("merge")->group(Hidden)->prefix_command();
    command->callback(
        [&status] { status = guarded([](void*) -> int { refuse("merge"); }, nullptr); });
}

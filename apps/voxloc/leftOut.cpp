// In the place of pages, runs of many files, merge and sweep where VOXLOC_APP_EXTRAS is off. Their
// options are not in the help, and whoever gives one is told why.

#include <CLI/CLI.hpp>

#include "common/failure.h"
#include "many/manyOptions.h"
#include "many/mergeCommand.h"
#include "page/runPage.h"
#include "sweep/sweepCommand.h"

namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw WrongUsage("this voxloc was built for a board, without " + what);
}

/** A group without a name is not in the help. */
constexpr const char* Hidden = "";

/** A subcommand that says that it is left out; `name` lives as long as the program. */
void addLeftOut(CLI::App& program, const char* name, int& status) {
    CLI::App* command = program.add_subcommand(name)->group(Hidden)->prefix_command();
    command->callback([&status, name] {
        status = guarded([](void* what) -> int { refuse(static_cast<const char*>(what)); },
                         const_cast<char*>(name));
    });
}

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
                   "for many files, without merge and sweep.");
}

int locateFiles(const CLI::App&, const ManyOptions&, const ManyInput&) {
    refuse("--output-dir and several files in one call");
}

void addMergeCommand(CLI::App& program, int& status) {
    addLeftOut(program, "merge", status);
}

void addSweepCommand(CLI::App& program, int& status) {
    addLeftOut(program, "sweep", status);
}

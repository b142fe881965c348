#include <string>

#include <voxloc/voxloc.h>
#include <CLI/CLI.hpp>

#include "arrays/arraysCommand.h"
#include "common/failure.h"
#include "common/signals.h"
#include "doctor/doctorCommand.h"
#include "live/liveCommand.h"
#include "locate/locateCommand.h"
#include "many/mergeCommand.h"
#include "sweep/sweepCommand.h"

namespace {

int run(CLI::App& program, int argc, char** argv, const int& status) {
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // --help and --version come this way, too.
        return program.exit(error) == 0 ? StatusSuccess : StatusWrongUsage;
    }
    return status;
}

struct CommandLine {
    int argc;
    char** argv;
};

int runProgram(const CommandLine& line) {
    CLI::App program("Finds the active talker in multichannel microphone audio.", "voxloc");
    program.set_version_flag("--version", std::string("voxloc ") + voxloc_getVersion());
    program.require_subcommand(1);
    program.failure_message(CLI::FailureMessage::simple);
    int status = StatusSuccess;
    addLocateCommand(program, status);
    addLiveCommand(program, status);
    addArraysCommand(program, status);
    addMergeCommand(program, status);
    addSweepCommand(program, status);
    addDoctorCommand(program, status);
    return run(program, line.argc, line.argv, status);
}

}  // namespace

int main(int argc, char** argv) {
    catchSignals();
    CommandLine line{argc, argv};
    return guarded(
        [](void* context) { return runProgram(*static_cast<const CommandLine*>(context)); }, &line);
}

#include "many/manyOptions.h"

#include <algorithm>
#include <array>
#include <thread>

#include <CLI/CLI.hpp>

#include "common/failure.h"
#include "many/locateMany.h"

namespace {

constexpr int MostJobs = 1024;

/** Each names one file of results, or plays with the one input. */
constexpr std::array<const char*, 5> ForOneFile{"output", "report", "compare", "tolerance",
                                                "embed-audio"};
/** Said to each process in other words. */
constexpr std::array<const char*, 6> NotPassedOn{"output-dir",  "jobs", "format",
                                                 "no-progress", "help", "files"};

template <std::size_t Count>
bool isAmong(const std::array<const char*, Count>& names, const std::string& name) {
    return std::any_of(names.begin(), names.end(), [&](const char* one) { return name == one; });
}

/** Without its dashes. */
std::string nameOf(const CLI::Option& option) {
    return option.get_lnames().empty() ? option.get_name() : option.get_lnames().front();
}

void appendOption(const CLI::Option& option, const std::string& name,
                  std::vector<std::string>& words) {
    if (option.get_items_expected_max() == 0) {
        words.push_back("--" + name);
        return;
    }
    for (const std::string& value : option.results()) {
        words.push_back(std::string("--").append(name).append("=").append(value));
    }
}

}  // namespace

void addManyOptions(CLI::App& command, ManyOptions& options) {
    command.add_option("--output-dir", options.folder,
                       "Write a run for each file below this folder; finished ones are skipped");
    command.add_option("-j,--jobs", options.jobs, "Files that are located at the same time")
        ->check(CLI::Range(1, MostJobs));
}

int locateFiles(const CLI::App& command, const ManyOptions& options, const ManyInput& input) {
    if (options.folder.empty()) {
        throw WrongUsage("several files take --output-dir, below which each gets its run");
    }
    ManyJob job;
    for (const CLI::Option* option : command.get_options()) {
        if (option->count() == 0) continue;
        const std::string name = nameOf(*option);
        if (isAmong(ForOneFile, name)) {
            throw WrongUsage("--" + name + " takes one file, not --output-dir");
        }
        if (!isAmong(NotPassedOn, name)) appendOption(*option, name, job.options);
    }
    job.files = input.files;
    job.folder = options.folder;
    job.form = input.form;
    job.showsProgress = input.showsProgress;
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    job.jobs = options.jobs > 0 ? options.jobs : std::clamp(processors, 1, MostJobs);
    return locateMany(job);
}

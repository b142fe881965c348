#include "many/locateMany.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>

#include "common/failure.h"
#include "common/signals.h"
#include "common/table.h"
#include "common/text.h"
#include "many/process.h"
#include "many/runFile.h"
#include "writers/output.h"

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds Glance(5);  // between looks at what has ended

/** One input on its way. */
struct Task {
    std::string input, run;
    std::string unfinished;  // where its process writes
    std::string outcome;     // a word for the table
    bool isBad = false;
};

std::string hostName() {
    std::array<char, 256> host = {};
    gethostname(host.data(), host.size() - 1);
    return host.data();
}

/** Not the name of any other process's file, on this machine or another that shares the folder. */
std::string unfinishedName(const std::string& run) {
    return run + "." + hostName() + "-" + std::to_string(getpid()) + ".running";
}

/** What processes of this machine left of a run when they were killed. */
void removeLeftovers(const std::string& run) {
    const std::string begin = fs::path(run).filename().string() + "." + hostName() + "-";
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(run).parent_path(), error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind(begin, 0) != 0) continue;
        const std::string rest = name.substr(begin.size());
        const auto process = integerFrom(rest.substr(0, rest.find('.')));
        const bool isOurs = rest.find(".running") != std::string::npos;
        if (!isOurs || !process || *process <= 0) continue;
        if (kill(static_cast<pid_t>(*process), 0) == 0 || errno != ESRCH) continue;
        fs::remove(entry.path(), error);
    }
}

std::vector<Task> tasksOf(const ManyJob& job) {
    std::vector<Task> tasks;
    std::map<std::string, std::string> inputOfRun;
    for (const std::string& input : job.files) {
        if (input == "-") throw WrongUsage("standard input is no file among several");
        const std::string run = runPath(job.folder, input, job.form);
        const auto [other, isNew] = inputOfRun.emplace(run, input);
        if (!isNew) throw WrongUsage(other->second + " and " + input + " are one file");
        tasks.push_back({input, run, unfinishedName(run), "", false});
    }
    return tasks;
}

/** A name comes after two dashes: its own would begin an option. */
std::vector<std::string> argumentsOf(const ManyJob& job, const Task& task) {
    std::vector<std::string> arguments{"locate"};
    arguments.insert(arguments.end(), job.options.begin(), job.options.end());
    const char* form = job.form == RecordForm::Text ? "text" : extensionOf(job.form);
    for (const std::string& word : {std::string("--no-progress"), std::string("--format=") + form,
                                    "--output=" + task.unfinished, std::string("--"), task.input}) {
        arguments.push_back(word);
    }
    return arguments;
}

void rename(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) throw cannot("write", to);
}

class Crowd {
  public:
    Crowd(const ManyJob& job, std::vector<Task>& tasks) : job_(job), tasks_(tasks) {}

    void run() {
        for (std::size_t next = 0; next < tasks_.size() || !running_.empty();) {
            if (stopRequested()) {
                next = tasks_.size();
                stopAll();
            }
            while (next < tasks_.size() && running_.size() < static_cast<std::size_t>(job_.jobs)) {
                start(tasks_[next++]);
            }
            collect();
        }
        clearProgress();
    }

  private:
    void start(Task& task) {
        std::error_code error;
        if (fs::exists(task.run, error)) {
            task.outcome = "was there";
            ++done_;
            return;
        }
        fs::create_directories(fs::path(task.run).parent_path(), error);
        if (error) {
            say("cannot write " + task.run + ": " + error.message());
            finish(task, StatusBadData);
            return;
        }
        removeLeftovers(task.run);
        running_[startSelf(argumentsOf(job_, task))] = &task;
    }

    void collect() {
        const Ended ended = findEnded();
        const auto found = running_.find(ended.process);
        if (ended.process == 0 || found == running_.end()) {
            if (!running_.empty()) std::this_thread::sleep_for(Glance);
            return;
        }
        Task& task = *found->second;
        running_.erase(found);
        finish(task, ended.status);
    }

    /** Only what came to its end gets the name of a finished run. */
    void finish(Task& task, int status) {
        const bool isThere = access(task.unfinished.c_str(), F_OK) == 0;
        ++done_;
        task.isBad = status != StatusSuccess;
        if (!task.isBad && isThere) {
            rename(task.unfinished, task.run);
            std::remove((task.run + ".damaged").c_str());
            task.outcome = "finished";
        } else if (status == StatusBadData && isThere) {
            rename(task.unfinished, task.run + ".damaged");
            task.outcome = "damaged";
        } else {
            std::remove(task.unfinished.c_str());
            std::remove((task.unfinished + ".part").c_str());
            task.isBad = true;
            task.outcome = stopRequested() ? "stopped" : "failed";
            if (status > 2 && !stopRequested()) {
                say(task.input + ": its process ended with status " + std::to_string(status));
            }
        }
        showProgress();
    }

    void stopAll() {
        if (wereStopped_) return;
        wereStopped_ = true;
        for (const auto& one : running_) kill(one.first, SIGTERM);
    }

    void showProgress() {
        if (!job_.showsProgress) return;
        std::fprintf(stderr, "\r\033[K%zu of %zu files", done_, tasks_.size());
        isOnScreen_ = true;
    }

    void clearProgress() {
        if (isOnScreen_) std::fputs("\r\033[K", stderr);
    }

    const ManyJob& job_;
    std::vector<Task>& tasks_;
    std::map<pid_t, Task*> running_;
    std::size_t done_ = 0;
    bool wereStopped_ = false, isOnScreen_ = false;
};

/** Frames, seconds, share of voice and turns of a finished run; nothing of one in text. */
std::vector<std::string> rowOf(const Task& task, RecordForm form) {
    std::vector<std::string> row{task.input, task.outcome.empty() ? "not begun" : task.outcome};
    const bool isRun = task.outcome == "finished" || task.outcome == "was there";
    if (!isRun || form == RecordForm::Text) return row;
    try {
        const Json summary = readRunEnds(task.run).summary;
        row.push_back(summary.at("frames").dump());
        row.push_back(fixed(summary.at("seconds").get<double>(), 1));
        row.push_back(fixed(100.0 * summary.at("voice_share").get<double>(), 0));
        row.push_back(std::to_string(summary.at("turns").size()));
    } catch (const std::exception& failure) {
        say(failure.what());
        row[1] = "no run";
    }
    return row;
}

void printTable(const std::vector<Task>& tasks, RecordForm form) {
    Table table("llrrrr", {"file", "outcome", "frames", "seconds", "voice %", "turns"});
    for (const Task& task : tasks) table.add(rowOf(task, form));
    Output output("-");
    output.write(table.text());
    output.finish();
}

}  // namespace

int locateMany(const ManyJob& job) {
    std::vector<Task> tasks = tasksOf(job);
    Crowd(job, tasks).run();
    printTable(tasks, job.form);
    if (stopRequested()) return StatusInterrupted;
    const auto isGood = [](const Task& task) { return !task.isBad; };
    return std::all_of(tasks.begin(), tasks.end(), isGood) ? StatusSuccess : StatusBadData;
}

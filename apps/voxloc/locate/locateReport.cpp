#include "locate/locateReport.h"

#include <cstdio>

void checkReportOptions(const ReportOptions& options, const LocateJob& job) {
    if (options.page.embedsAudio && options.page.file.empty()) {
        throw WrongUsage("--embed-audio needs a page to go into; give its file with --report");
    }
    if (options.tolerance && options.compare.empty()) {
        throw WrongUsage("--tolerance needs a run to compare with; give it with --compare");
    }
    if (options.compare == "-" && job.input == "-") {
        throw WrongUsage("standard input cannot be both the sound and the run to compare with");
    }
    if (!options.page.file.empty() && options.page.file == job.output) {
        throw WrongUsage("--report and the records go to the same place; give one another file");
    }
}

LocateReport::LocateReport(const ReportOptions& options, const std::string& recordsOutput)
    : options_(options), recordsOnStandardOutput_(recordsOutput == "-") {
    if (options_.compare.empty()) return;
    comparer_.emplace(options_.compare, options_.tolerance.value_or(0.0));
    isComparing_ = true;
}

LocateObserver LocateReport::observer() {
    return {[this](const RunHeader& header) { begin(header); },
            [this](const Record& record, const InputFrame& frame) { add(record, frame); },
            [this](const Summary& summary) { end(summary); }};
}

int LocateReport::statusAfter(int status) const {
    return status == StatusSuccess && (hasFailed_ || !agrees_) ? StatusBadData : status;
}

/** Whether the step succeeded; else says why not. */
template <typename Step>
bool LocateReport::attempt(Step step) {
    try {
        step();
        return true;
    } catch (const BadData& failure) {
        say(failure.what());
        hasFailed_ = true;
        return false;
    }
}

void LocateReport::begin(const RunHeader& header) {
    if (options_.page.file.empty()) return;
    // A page that cannot be begun is known before the first frame, and ends the run.
    page_ = beginPage(options_.page, header, isComparing_ ? comparer_->header() : std::string());
}

const Record* LocateReport::compare(const Record& record) {
    if (!isComparing_) return nullptr;
    const Record* other = nullptr;
    isComparing_ = attempt([&] { other = comparer_->add(record); });
    return other;
}

void LocateReport::write(const Record& record, const Record* other, const InputFrame& frame) {
    if (page_ == nullptr) return;
    if (!attempt([&] { page_->add(record, other, frame); })) page_.reset();
}

void LocateReport::add(const Record& record, const InputFrame& frame) {
    const Record* const other = compare(record);
    write(record, other, frame);
}

void LocateReport::tell(const Comparison& comparison) const {
    // Beside records, the comparison is a message.
    std::FILE* const file = recordsOnStandardOutput_ ? stderr : stdout;
    std::fputs(comparisonToText(comparison).c_str(), file);
}

void LocateReport::end(const Summary& summary) {
    const Comparison* comparison = nullptr;
    if (isComparing_) attempt([&] { comparison = &comparer_->finish(); });
    if (comparison != nullptr) agrees_ = comparison->agrees();
    if (page_ != nullptr) attempt([&] { page_->finish(summary, comparison); });
    if (comparison != nullptr) tell(*comparison);
}

/** What `locate` makes of a run beside its records: the page, and the comparison with another run.
 */
#ifndef VOXLOC_APP_LOCATE_LOCATE_REPORT_H
#define VOXLOC_APP_LOCATE_LOCATE_REPORT_H

#include <memory>
#include <optional>
#include <string>

#include "common/failure.h"
#include "locate/compare.h"
#include "locate/locate.h"
#include "page/runPage.h"

struct ReportOptions {
    PageOptions page;
    std::string compare;  // a run to compare with, or empty
    std::optional<double> tolerance;
};

/** Throws WrongUsage when the options make no sense with each other or with the job's files. */
void checkReportOptions(const ReportOptions& options, const LocateJob& job);

/**
 * Watches one run. Damage of the other run or a disk that is full ends what it concerns with a
 * message; the records go on.
 */
class LocateReport {
  public:
    /** Opens what is compared with. Throws BadData. */
    LocateReport(const ReportOptions& options, const std::string& recordsOutput);

    /** The report must live as long as what observes for it. */
    LocateObserver observer();

    /** What the run's own status becomes: 1 beyond the tolerance or when something failed here. */
    int statusAfter(int status) const;

  private:
    void begin(const RunHeader& header);
    void add(const Record& record, const InputFrame& frame);
    void end(const Summary& summary);
    void tell(const Comparison& comparison) const;
    const Record* compare(const Record& record);
    void write(const Record& record, const Record* other, const InputFrame& frame);
    template <typename Step>
    bool attempt(Step step);

    ReportOptions options_;
    bool recordsOnStandardOutput_;
    std::optional<Comparer> comparer_;
    bool isComparing_ = false, hasFailed_ = false, agrees_ = true;
    std::unique_ptr<RunPage> page_;
};

#endif

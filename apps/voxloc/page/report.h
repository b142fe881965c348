/** The page of a run: one HTML file that opens anywhere, without a network. */
#ifndef VOXLOC_APP_PAGE_REPORT_H
#define VOXLOC_APP_PAGE_REPORT_H

#include <memory>
#include <string>

#include "common/record.h"
#include "locate/compare.h"
#include "page/frameBlock.h"
#include "page/reportAudio.h"
#include "writers/output.h"
#include "writers/summary.h"

/** What the page says of the run before its frames. */
struct ReportHead {
    std::string header;       // the run's header record, JSON
    std::string otherHeader;  // that of the run that it is compared with, or empty
    int channels = 0;
};

/** Frames go into the page as they come, so that memory does not grow with the run. */
class ReportWriter {
  public:
    /** Begins the page. The output must live as long as the writer and is not finished by it. */
    ReportWriter(const ReportHead& head, Output& output);

    /** `other` is the compared run's record of the same frame; null when it has none. */
    void add(const Record& record, const Record* other = nullptr);

    /** What ends the page; the last two may be null. */
    void finish(const Summary& summary, const Comparison* comparison, ReportAudio* audio);

  private:
    void flush();

    Output& output_;
    FrameBlock block_;
    std::string text_;
};

#endif

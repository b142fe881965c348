/** The page as an option of `locate`. */
#ifndef VOXLOC_APP_PAGE_RUN_PAGE_H
#define VOXLOC_APP_PAGE_RUN_PAGE_H

#include <memory>
#include <string>

#include "locate/compare.h"
#include "readers/reader.h"
#include "writers/header.h"
#include "writers/summary.h"

namespace CLI {
class App;
}

struct PageOptions {
    std::string file;          // or empty: no page
    bool embedsAudio = false;  // the first microphone goes into the page
};

/** Adds --report and --embed-audio. */
void addPageOptions(CLI::App& command, PageOptions& options);

/** A page to which a run is written as it goes by. Everything throws BadData. */
class RunPage {
  public:
    RunPage() = default;
    virtual ~RunPage() = default;
    RunPage(const RunPage&) = delete;
    RunPage& operator=(const RunPage&) = delete;

    /** `other` is the compared run's record of the same frame; null when it has none. */
    virtual void add(const Record& record, const Record* other, const InputFrame& frame) = 0;

    /** Gives the file its name; the comparison may be null. */
    virtual void finish(const Summary& summary, const Comparison* comparison) = 0;
};

/** `otherHeader` is that of the run that it is compared with, or empty. */
std::unique_ptr<RunPage> beginPage(const PageOptions& options, const RunHeader& header,
                                   const std::string& otherHeader);

#endif

#include "page/runPage.h"

#include <optional>

#include <CLI/CLI.hpp>

#include "page/report.h"

namespace {

std::string textOf(const RunHeader& header) {
    return headerToJson(header).dump(-1, ' ', false, Json::error_handler_t::replace);
}

class PageFile : public RunPage {
  public:
    PageFile(const PageOptions& options, const ReportHead& head)
        : output_(options.file), writer_(head, output_) {
        if (options.embedsAudio) audio_.emplace();
    }

    void add(const Record& record, const Record* other, const InputFrame& frame) override {
        writer_.add(record, other);
        if (audio_) audio_->add(frame.samples.data(), frame.bits, record.sample);
    }

    void finish(const Summary& summary, const Comparison* comparison) override {
        writer_.finish(summary, comparison, audio_ ? &*audio_ : nullptr);
        output_.finish();
    }

  private:
    Output output_;
    ReportWriter writer_;
    std::optional<ReportAudio> audio_;
};

}  // namespace

void addPageOptions(CLI::App& command, PageOptions& options) {
    command.add_option("--report", options.file,
                       "Write the run as a page of plots, one HTML file that needs no network");
    command.add_flag("--embed-audio", options.embedsAudio,
                     "Put the sound of the first microphone into the page, 21 MB an hour");
}

std::unique_ptr<RunPage> beginPage(const PageOptions& options, const RunHeader& header,
                                   const std::string& otherHeader) {
    return std::make_unique<PageFile>(
        options, ReportHead{textOf(header), otherHeader, header.array.array.channels});
}

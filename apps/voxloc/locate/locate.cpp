#include "locate/locate.h"

#include <memory>

#include "common/failure.h"
#include "common/signals.h"
#include "locate/inputArray.h"
#include "locate/locator.h"
#include "locate/progress.h"
#include "readers/farEnd.h"

namespace {

void noteWhatWasChanged(const FrameReader& reader) {
    const InputFormat& input = reader.format();
    if (input.rate != SampleRate) {
        say(input.name + ": resampled from " + std::to_string(input.rate) + " Hz to 48000 Hz");
    }
}

/** The frames of a run; false in `isWhole` when damage or ctrl-C ended them. */
struct Run {
    const LocateJob& job;
    FrameReader& reader;
    const FarEnd farEnd;
    Locator locator;
    Progress progress;
    Summarizer summarizer;
    int status = StatusSuccess;

    bool next(InputFrame& frame) {
        if (stopRequested()) {
            status = StatusInterrupted;
            return false;
        }
        try {
            return reader.read(frame);
        } catch (const BadData& damage) {
            // Ctrl-C while a pipe is waited for ends the wait with an error.
            if (stopRequested()) {
                status = StatusInterrupted;
                return false;
            }
            progress.clear();
            say(damage.what());
            status = StatusBadData;
            return false;
        }
    }

    void all(RecordWriter& writer, const LocateObserver& observer) {
        InputFrame frame;
        while (next(frame)) {
            if (farEnd.isPlaying(frame.sample)) {
                voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &frame.flags);
            }
            const Record record = locator.locate(frame);
            writer.write(record);
            summarizer.add(record);
            if (observer.record) observer.record(record, frame);
            progress.step(record.frame + 1);
        }
        progress.clear();
        if (reader.leftOver() > 0 && status == StatusSuccess) {
            say(reader.format().name + ": the last " + std::to_string(reader.leftOver()) +
                " samples fill no frame and are left out");
        }
    }
};

}  // namespace

int locate(const LocateJob& job, const LocateObserver& observer) {
    const std::unique_ptr<FrameReader> reader = openReader(job.input, job.read);
    const NamedArray array = arrayFor(job.array, reader->format(), job.read);
    const RunHeader header{array, reader->format(), job.read, job.farEnd, job.clock};
    Run run{job,
            *reader,
            job.farEnd.empty() ? FarEnd() : FarEnd::fromFile(job.farEnd),
            Locator(array),
            Progress(job.showsProgress, reader->format().frames),
            {}};
    Output output(job.output);
    noteWhatWasChanged(*reader);
    RecordWriter writer(job.form, header, output);
    if (observer.begin) observer.begin(header);
    run.all(writer, observer);
    const Summary summary = run.summarizer.summary();
    writer.finish(summary);
    output.finish();
    if (observer.end) observer.end(summary);
    return run.status;
}

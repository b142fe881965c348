/** Frames in, records out. */
#ifndef VOXLOC_APP_LOCATE_LOCATOR_H
#define VOXLOC_APP_LOCATE_LOCATOR_H

#include "arrays/arrays.h"
#include "common/record.h"
#include "readers/reader.h"

class Locator {
  public:
    explicit Locator(const NamedArray& array);

    /** The frame's number is that of the input, the first one that is located need not be 0. */
    Record locate(const InputFrame& frame, std::uint64_t number);

    /** For its recording and its log. */
    VoxlocTracker* tracker() const { return tracker_.get(); }

  private:
    Tracker tracker_;
    int channels_;
};

#endif

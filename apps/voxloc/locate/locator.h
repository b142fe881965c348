/** Frames in, records out. */
#ifndef VOXLOC_APP_LOCATE_LOCATOR_H
#define VOXLOC_APP_LOCATE_LOCATOR_H

#include "arrays/arrays.h"
#include "common/record.h"
#include "readers/reader.h"

class Locator {
  public:
    explicit Locator(const NamedArray& array);

    /** A frame of as many channels as the array has, 1 to 32 bits. */
    Record locate(const InputFrame& frame);

    /** For its recording and its log. */
    VoxlocTracker* tracker() const { return tracker_.get(); }

  private:
    Tracker tracker_;
    int channels_;
    bool hasElevation_;
};

#endif

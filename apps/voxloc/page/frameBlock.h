/** Some hundred seconds of a run as columns that a page decodes into typed arrays. */
#ifndef VOXLOC_APP_PAGE_FRAME_BLOCK_H
#define VOXLOC_APP_PAGE_FRAME_BLOCK_H

#include <cstdint>
#include <string>
#include <vector>

#include "common/record.h"

/**
 * Consecutive frames. As bytes, little-endian: the columns azimuth, elevation, range, quality,
 * ultrasound level and one level a microphone, a 32-bit float a frame each; with another run its
 * azimuth, elevation, range and quality; then a byte of marks a frame, and another one for the
 * other run. Marks: bit k is the k-th of FlagNames, bit 7 whether there is an estimate.
 */
class FrameBlock {
  public:
    static constexpr std::size_t MostFrames = 4096;  // 175 seconds

    FrameBlock(int channels, bool hasOther);

    std::size_t size() const { return marks_.size(); }
    /** Whether the frame follows the last one and there is room for it. */
    bool takes(const Record& record) const;
    /** `other` is what the other run has there, null when it has nothing or there is none. */
    void add(const Record& record, const Record* other);
    /** Appends the block as an element of the page, and begins a new one. */
    void flush(std::string& page);

  private:
    void appendColumns(std::string& bytes) const;

    std::vector<std::vector<float>> columns_;
    std::vector<std::uint8_t> marks_, otherMarks_;
    int channels_;
    bool hasOther_;
    std::uint64_t firstFrame_ = 0, firstSample_ = 0;
};

#endif

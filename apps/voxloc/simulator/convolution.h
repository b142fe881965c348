/** Sound through responses, block by block in the frequency domain. */
#ifndef VOXLOC_APP_SIMULATOR_CONVOLUTION_H
#define VOXLOC_APP_SIMULATOR_CONVOLUTION_H

#include <cstddef>
#include <vector>

/** A real transform of the public header with its tables and scratch. */
class Transform {
  public:
    explicit Transform(int size);

    int size() const { return size_; }

    /** `size` samples, which are destroyed, to size+2 floats. */
    void forward(float* samples, float* spectrum);

    /** size+2 floats, in place; its first `size` are the samples then. */
    void inverse(float* spectrum);

  private:
    int size_;
    std::vector<float> aTable_, bTable_, work_;
};

/**
 * Adds `sound` through each response to the channel of the same number, from sample `start` on
 * (which may be negative). What falls outside the channels is left out.
 */
void addThrough(const std::vector<std::vector<float>>& responses, const std::vector<float>& sound,
                std::ptrdiff_t start, std::vector<std::vector<float>>& channels);

#endif

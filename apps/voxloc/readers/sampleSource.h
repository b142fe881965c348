/** Interleaved samples as they come out of a file or a pipe. */
#ifndef VOXLOC_APP_READERS_SAMPLE_SOURCE_H
#define VOXLOC_APP_READERS_SAMPLE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct SampleFormat {
    std::string kind;  // "WAV", "raw S16" ...
    int channels = 0;
    int rate = 48000;                     // Hz
    std::uint32_t bits = 24;              // significant ones of what read() gives
    std::optional<std::uint64_t> length;  // samples a channel
};

class SampleSource {
  public:
    SampleSource() = default;
    virtual ~SampleSource() = default;
    SampleSource(const SampleSource&) = delete;
    SampleSource& operator=(const SampleSource&) = delete;

    virtual const SampleFormat& format() const = 0;

    /**
     * Up to `count` samples a channel into `samples`, interleaved, whole numbers of `bits` bits as
     * floats. Returns how many; fewer than asked for at the end alone. Damage is kept until the
     * samples before it have been given, then thrown as BadData.
     */
    virtual std::size_t read(float* samples, std::size_t count) = 0;
};

#endif

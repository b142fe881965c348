/** Sound from anywhere, as frames that the tracker takes. */
#ifndef VOXLOC_APP_READERS_READER_H
#define VOXLOC_APP_READERS_READER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <voxloc/voxloc.h>

/** What an input says of itself. */
struct InputFormat {
    std::string name;                     // as the user gave it
    std::string kind;                     // "recording", "WAV", "raw S16" ...
    int channels = 0;                     // of the input, before they are mapped
    int rate = 48000;                     // Hz, before it is resampled
    std::optional<std::int32_t> product;  // of a recording that was made with a built-in array
    bool isRecording = false;
    std::optional<std::uint64_t> frames;  // whole ones after resampling, where they can be known
};

/** One frame: channel-major samples, as voxloc_track takes them. */
struct InputFrame {
    std::vector<float> samples;
    std::uint32_t bits = 24;
    std::uint32_t flags = 0;
    std::uint64_t sample = 0;  // its first, from the start of the input, at 48 kHz
};

/** How the user wants the input to be read. */
struct ReadOptions {
    std::vector<int> channels;  // of the input, one a microphone; empty: as they are
    double gain = 0.0;          // dB
    double start = 0.0;         // seconds that are left out, down to a whole frame
    std::optional<double> end;  // seconds where reading ends
    bool strict = false;        // refuse what would be resampled
    int rawChannels = 0;        // raw samples: channels, rate, format
    int rawRate = 48000;
    std::string
        rawFormat;  // "S16", "S24" (in four bytes), "S24_3" (in three), "S32", "F32"; or empty
};

class FrameReader {
  public:
    FrameReader() = default;
    virtual ~FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    virtual const InputFormat& format() const = 0;

    /** The next frame, or false at the end. Throws BadData at damage, which names the byte. */
    virtual bool read(InputFrame& frame) = 0;

    /** Samples a channel at the end that fill no frame; known when read() has given false. */
    virtual std::uint64_t leftOver() const = 0;
};

/**
 * Opens a recording of voxloc_record_start, a sound file (WAV, RF64, W64, FLAC), or raw samples
 * ("-" is standard input; a recording there is recognised by its first bytes unless a raw format is
 * given). Throws BadData.
 */
std::unique_ptr<FrameReader> openReader(const std::string& path, const ReadOptions& options);

#endif

/** Sound as it comes: from a device or from a pipe. */
#ifndef VOXLOC_APP_LIVE_CAPTURE_H
#define VOXLOC_APP_LIVE_CAPTURE_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "readers/rawSource.h"

struct CaptureFormat {
    std::string name;  // as the user gave it
    std::string kind;  // "ALSA S32", "raw S16"
    int channels = 0;
    int rate = 48000;  // Hz, of what read() gives
    const RawForm* form = nullptr;
};

struct CaptureOptions {
    std::string device;             // an ALSA name, or "-" for standard input
    const RawForm* form = nullptr;  // null: of a device, the finest; of a pipe, as its header says
    int channels = 0;               // 0: of a device, the fewest that suffice
    int rate = 48000;               // Hz
    int neededChannels = 1;
    bool strict = false;  // refuse what would be resampled
};

enum class CaptureEvent {
    Samples,
    Nothing,  // within the time that read() waits
    Gap,      // samples were lost: the device overran
    Lost,     // the device is gone
    Back,     // ... and here again
    Ended
};

struct CaptureRead {
    CaptureEvent event = CaptureEvent::Nothing;
    std::size_t count = 0;  // samples a channel, with Samples
};

/** How long read() waits at most, so that a program is never deaf for longer, in milliseconds. */
constexpr int CaptureWait = 200;

class Capture {
  public:
    Capture() = default;
    virtual ~Capture() = default;
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    virtual const CaptureFormat& format() const = 0;

    /** Up to `count` samples a channel, interleaved. Throws BadData at damage. */
    virtual CaptureRead read(float* samples, std::size_t count) = 0;

    /** Why the device was lost. */
    virtual std::string reason() const { return {}; }
};

using OpenCapture = std::function<std::unique_ptr<Capture>()>;

/**
 * Samples from a file descriptor that stays open: raw ones in the form of the options, else after
 * the header of a WAV file. Throws BadData and WrongUsage.
 */
std::unique_ptr<Capture> openPipe(int descriptor, const CaptureOptions& options);

/** Throws BadData when the device cannot be opened or cannot do what is needed. */
std::unique_ptr<Capture> openAlsa(const CaptureOptions& options);

/**
 * Opens what the options ask for, at 48 kHz: other rates are resampled, or refused when the options
 * are strict. A device is opened again when it has gone away and comes back.
 */
std::unique_ptr<Capture> openCapture(const CaptureOptions& options);

#endif

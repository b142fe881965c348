/** The header of a WAV file as it comes out of a pipe, where nobody can seek. */
#ifndef VOXLOC_APP_LIVE_WAV_HEADER_H
#define VOXLOC_APP_LIVE_WAV_HEADER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "readers/rawSource.h"

struct WavHeader {
    const RawForm* form = nullptr;
    int channels = 0;
    int rate = 0;                        // Hz
    std::optional<std::uint64_t> bytes;  // of samples; programs that record know no length
};

/** Gives exactly that many bytes, or throws. */
using ReadExactly = std::function<void(unsigned char* bytes, std::size_t count)>;

/** Reads up to the first sample. Throws BadData when it is no WAV file or one of unknown samples.
 */
WavHeader readWavHeader(const ReadExactly& read);

#endif

/** Raw little-endian samples from a file or a pipe. */
#ifndef VOXLOC_APP_READERS_RAW_SOURCE_H
#define VOXLOC_APP_READERS_RAW_SOURCE_H

#include <cstddef>
#include <memory>
#include <string>

#include "readers/file.h"
#include "readers/sampleSource.h"

/** A form in which raw samples come. */
struct RawForm {
    const char* name;
    std::size_t bytes;   // of a sample
    std::uint32_t bits;  // significant ones of what unpack() gives
};

/** "S16", "S24" (in the low three of four bytes), "S24_3" (three bytes), "S32", "F32"; or null. */
const RawForm* findRawForm(const std::string& name);

/** Whole numbers as floats; F32 from -1 to 1 becomes 24-bit numbers. */
void unpack(const RawForm& form, const unsigned char* bytes, std::size_t count, float* samples);

/** Throws WrongUsage for a form that does not exist. */
std::unique_ptr<SampleSource> openRaw(File file, const std::string& form, int channels, int rate);

#endif

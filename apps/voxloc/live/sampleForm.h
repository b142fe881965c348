/** Samples as devices and pipes give them: whole numbers or floats, little-endian. */
#ifndef VOXLOC_APP_LIVE_SAMPLE_FORM_H
#define VOXLOC_APP_LIVE_SAMPLE_FORM_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/** S24 lies in the lower three of four bytes, S24_3 in three bytes. F32 has a full scale of 1. */
enum class SampleForm { S16, S24, S24_3, S32, F32 };

std::optional<SampleForm> sampleFormFrom(std::string_view name);
const char* nameOf(SampleForm form);
std::size_t bytesOf(SampleForm form);

/** The significant bits of what toFloats gives. */
std::uint32_t bitsOf(SampleForm form);

/**
 * Whole numbers as floats, as the tracker takes them. F32 is scaled to 24 bits and rounded; what is
 * no number becomes 0, because the tracker would keep it in its noise level.
 */
void toFloats(SampleForm form, const unsigned char* bytes, std::size_t count, float* samples);

#endif

#include "recording.h"

#include <cstddef>

namespace voxloc {

namespace {

constexpr int FileMark = 0xAC;
constexpr int FormatVersion = 1;

}  // namespace

int startRecording(std::FILE*& recording, const char* path, std::int32_t product,
                   std::int32_t channels) {
    stopRecording(recording);
    recording = std::fopen(path, "wb");
    if (recording == nullptr) return 0;
    std::fputc(FileMark, recording);
    std::fputc(FormatVersion, recording);
    std::fputc(product, recording);
    return std::fputc(channels, recording);
}

void recordFrame(std::FILE* recording, const float* frame, int samples, std::uint32_t bits,
                 std::uint32_t flags) {
    if (recording == nullptr) return;
    // Results are deliberately not looked at: a full disk must not stop the tracker.
    std::fwrite(&bits, sizeof bits, 1, recording);
    std::fwrite(&flags, sizeof flags, 1, recording);
    std::fwrite(frame, sizeof(float), static_cast<std::size_t>(samples), recording);
}

void stopRecording(std::FILE*& recording) {
    if (recording == nullptr) return;
    std::fclose(recording);
    recording = nullptr;
}

}  // namespace voxloc

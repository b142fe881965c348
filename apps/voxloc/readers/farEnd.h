/** When the loudspeaker played: a CSV of seconds, "from,to" a line. */
#ifndef VOXLOC_APP_READERS_FAR_END_H
#define VOXLOC_APP_READERS_FAR_END_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class FarEnd {
  public:
    FarEnd() = default;
    /** Throws BadData with the line that cannot be read; a first line of words is a heading. */
    FarEnd(std::string_view text, const std::string& name);
    static FarEnd fromFile(const std::string& path);

    /** Whether the loudspeaker plays in the frame that begins at that sample (48 kHz). */
    bool isPlaying(std::uint64_t sample) const;

  private:
    struct Span {
        double from, to;  // seconds
    };
    std::vector<Span> spans_;  // by `from`; `to` grows with it
};

#endif

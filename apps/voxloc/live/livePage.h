/** The files of the live page, which are part of the program. */
#ifndef VOXLOC_APP_LIVE_LIVE_PAGE_H
#define VOXLOC_APP_LIVE_LIVE_PAGE_H

#include <array>
#include <string_view>

struct LivePageFile {
    std::string_view path;
    const char* type;
    std::string_view text;
};

extern const std::array<LivePageFile, 6> LivePageFiles;

#endif

/** Options whose text needs taking apart. */
#ifndef VOXLOC_APP_COMMON_OPTION_TEXTS_H
#define VOXLOC_APP_COMMON_OPTION_TEXTS_H

#include <optional>
#include <string>
#include <vector>

/** --channels: "3,0,1,2". Throws WrongUsage. */
std::vector<int> channelsFrom(const std::string& list);

/**
 * --clock: seconds since 1970 of "now", or of "2026-11-21T10:00:00Z" with the Z for world time,
 * which is also meant without it. Throws WrongUsage.
 */
std::optional<double> clockFrom(const std::string& text);

#endif

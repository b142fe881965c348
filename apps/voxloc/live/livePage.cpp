#include "live/livePage.h"

// Made from page/live by cmake/embedText.cmake.
extern const std::string_view liveHtml, liveCss, liveJs, liveRadarJs, liveHistoryJs, liveIcon;

const std::array<LivePageFile, 6> LivePageFiles{{
    {"/", "text/html; charset=utf-8", liveHtml},
    {"/live.css", "text/css; charset=utf-8", liveCss},
    {"/live.js", "text/javascript; charset=utf-8", liveJs},
    {"/radar.js", "text/javascript; charset=utf-8", liveRadarJs},
    {"/history.js", "text/javascript; charset=utf-8", liveHistoryJs},
    {"/favicon.svg", "image/svg+xml", liveIcon},
}};

#include "live/livePage.h"

// Made from page/live by cmake/embedText.cmake.
extern const std::string_view liveHtml, liveCss, liveJs, liveIcon;

const std::array<LivePageFile, 4> LivePageFiles{{
    {"/", "text/html; charset=utf-8", liveHtml},
    {"/live.css", "text/css; charset=utf-8", liveCss},
    {"/live.js", "text/javascript; charset=utf-8", liveJs},
    {"/favicon.svg", "image/svg+xml", liveIcon},
}};

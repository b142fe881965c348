/** The live page and its events, over HTTP. */
#ifndef VOXLOC_APP_LIVE_SERVER_H
#define VOXLOC_APP_LIVE_SERVER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "live/access.h"
#include "live/arrayCheck.h"
#include "live/feed.h"

/** Writes a mark and returns its frame; nothing when there is no recording or it cannot be written.
 */
using SetMark = std::function<std::optional<std::uint64_t>(const std::string& label)>;

struct LiveServerOptions {
    ServeAddress address;
    std::optional<std::string> token;
    std::string hello;  // JSON of what does not change
    int channels = 0;
    SetMark setMark;
    ArrayCheck* check = nullptr;  // outlives the server
};

/**
 * Answers from threads of its own until it is destroyed; closes the feed then. Only GET, only under
 * its own address, only to its own page.
 */
class LiveServer {
  public:
    /** Throws BadData when the port cannot be had. */
    LiveServer(LiveServerOptions options, Feed& feed);
    ~LiveServer();
    LiveServer(const LiveServer&) = delete;
    LiveServer& operator=(const LiveServer&) = delete;

    const ServeAddress& address() const;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

#endif

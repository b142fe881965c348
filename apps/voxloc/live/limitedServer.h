/** An HTTP server that nobody can tire out. */
#ifndef VOXLOC_APP_LIVE_LIMITED_SERVER_H
#define VOXLOC_APP_LIVE_LIMITED_SERVER_H

#include <atomic>

#include <httplib.h>

/**
 * One request a connection, of a few kilobytes, within seconds; so many connections at once and no
 * more. The library alone bounds neither the number of headers nor that of connections, nor the
 * time that a request takes as a whole.
 */
class LimitedServer : public httplib::Server {
  public:
    LimitedServer();

    /** Ends what goes on with the connections there are, too. */
    void end();

  private:
    bool process_and_close_socket(socket_t socket) override;

    std::atomic<bool> isEnding_{false};
};

#endif

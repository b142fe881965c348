#include "live/limitedServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t MostConnections = 24;
constexpr std::size_t MostRequestBytes = 8192;
constexpr std::chrono::seconds RequestTime(5);  // from the first byte to the last
constexpr std::chrono::seconds WriteTime(5);    // a reader that takes nothing for so long is gone
constexpr int SendBufferBytes = 256 * 1024;     // of one connection, in the kernel
constexpr int SliceMilliseconds = 100;

/** The socket of one request. */
class LimitedStream : public httplib::Stream {
  public:
    LimitedStream(socket_t socket, const std::atomic<bool>& isEnding)
        : socket_(socket), isEnding_(isEnding), readUntil_(Clock::now() + RequestTime) {}

    bool is_readable() const override { return isReady(POLLIN, Clock::now()); }

    /** Not when the other side has gone, either. */
    bool is_writable() const override {
        char byte;
        const ssize_t got = recv(socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) return false;
        return !isEnding_;
    }

    /** The library asks for one byte at a time. */
    ssize_t read(char* bytes, size_t size) override {
        if (taken_ == filled_) {
            const std::size_t room = request_.size() - filled_;
            if (room == 0 || !isReady(POLLIN, readUntil_)) return -1;
            const ssize_t got = recv(socket_, request_.data() + filled_, room, 0);
            if (got <= 0) return got;
            filled_ += static_cast<std::size_t>(got);
        }
        size = std::min(size, filled_ - taken_);
        std::copy_n(request_.data() + taken_, size, bytes);
        taken_ += size;
        return static_cast<ssize_t>(size);
    }

    ssize_t write(const char* bytes, size_t size) override {
        const Clock::time_point until = Clock::now() + WriteTime;
        for (std::size_t done = 0; done < size;) {
            if (!isReady(POLLOUT, until)) return -1;
            const ssize_t sent =
                send(socket_, bytes + done, size - done, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent < 0 && errno != EAGAIN && errno != EINTR) return -1;
            if (sent > 0) done += static_cast<std::size_t>(sent);
        }
        return static_cast<ssize_t>(size);
    }

    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override { return socket_; }

  private:
    bool isReady(short events, Clock::time_point until) const {
        do {
            pollfd waited = {socket_, events, 0};
            const int ready = poll(&waited, 1, SliceMilliseconds);
            if (ready > 0) return true;
            if (ready < 0 && errno != EINTR) return false;
        } while (!isEnding_ && Clock::now() < until);
        return false;
    }

    socket_t socket_;
    const std::atomic<bool>& isEnding_;
    Clock::time_point readUntil_;
    std::array<char, MostRequestBytes> request_;
    std::size_t filled_ = 0, taken_ = 0;  // of the request
};

/** A thread a connection; further connections wait with the kernel, which bounds them. */
class BoundedWorkers : public httplib::TaskQueue {
  public:
    BoundedWorkers() : pool_(MostConnections) {}

    void enqueue(std::function<void()> work) override {
        std::unique_lock<std::mutex> lock(mutex_);
        freed_.wait(lock, [this] { return busy_ < MostConnections; });
        ++busy_;
        pool_.enqueue([this, work = std::move(work)] {
            work();
            const std::lock_guard<std::mutex> guard(mutex_);
            --busy_;
            freed_.notify_one();
        });
    }

    void shutdown() override { pool_.shutdown(); }

  private:
    httplib::ThreadPool pool_;
    std::mutex mutex_;
    std::condition_variable freed_;
    std::size_t busy_ = 0;
};

void setOption(socket_t socket, int level, int name, int value) {
    setsockopt(socket, level, name, &value, sizeof value);
}

/** Closing with bytes unread would take the answer away from who has not read it yet. */
void closeAfterAnswer(socket_t socket) {
    shutdown(socket, SHUT_WR);
    char unread[4096];
    for (int i = 0; i < 16; ++i) {
        pollfd waited = {socket, POLLIN, 0};
        if (poll(&waited, 1, SliceMilliseconds) <= 0) break;
        if (recv(socket, unread, sizeof unread, 0) <= 0) break;
    }
    close(socket);
}

}  // namespace

LimitedServer::LimitedServer() {
    new_task_queue = [] { return new BoundedWorkers; };
    // The library would also share the port with other programs of the same user.
    set_socket_options([](socket_t socket) { setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1); });
    set_payload_max_length(MostRequestBytes);
}

void LimitedServer::end() {
    isEnding_ = true;
    stop();
}

bool LimitedServer::process_and_close_socket(socket_t socket) {
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(socket, SOL_SOCKET, SO_SNDBUF, SendBufferBytes);
    LimitedStream stream(socket, isEnding_);
    bool isClosed = false;
    const bool isDone = process_request(stream, true, isClosed, nullptr);
    closeAfterAnswer(socket);
    return isDone;
}

#include "live/server.h"

#include <signal.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "common/failure.h"
#include "live/limitedServer.h"
#include "live/livePage.h"
#include "live/pageJson.h"

namespace {

using httplib::Request;
using httplib::Response;

constexpr int MostViewers = 8;  // who follow the events at the same time
constexpr std::chrono::milliseconds Heartbeat(1000);
constexpr std::size_t LongestLabel = 200;  // bytes

const httplib::Headers SafeHeaders{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
     "img-src 'self' data:; frame-ancestors 'none'; base-uri 'none'; form-action 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

std::optional<std::string> headerOf(const Request& request, const char* name) {
    if (!request.has_header(name)) return {};
    return request.get_header_value(name);
}

Approach approachOf(const Request& request) {
    Approach approach;
    approach.path = request.path;
    // Two of them are none: which one counts is a matter of who reads them.
    if (request.get_header_value_count("Host") == 1)
        approach.host = request.get_header_value("Host");
    approach.origin = headerOf(request, "Origin");
    approach.fetchSite = headerOf(request, "Sec-Fetch-Site");
    approach.fetchMode = headerOf(request, "Sec-Fetch-Mode");
    approach.fetchDest = headerOf(request, "Sec-Fetch-Dest");
    approach.hasMarkHeader = request.has_header("X-Voxloc-Mark");
    return approach;
}

void answer(Response& response, int status, const std::string& text) {
    response.status = status;
    response.set_content(text + "\n", "text/plain; charset=utf-8");
}

void appendEvent(std::string& text, const char* name, const std::string& json) {
    text.append("event: ").append(name).append("\ndata: ").append(json).append("\n\n");
}

/** A label in one line; what cannot be shown becomes a blank. */
std::string labelFrom(const std::string& text) {
    std::string label;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        label += code < 32 || code == 127 ? ' ' : c;
    }
    return label;
}

/** Signals are for the thread that captures. */
class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t before_;
};

}  // namespace

struct LiveServer::Parts {
    LiveServerOptions options;
    Feed& feed;
    LimitedServer server;
    std::atomic<int> viewers{0};
    std::atomic<bool> hasStopped{false};
    std::thread thread;

    Parts(LiveServerOptions given, Feed& shared) : options(std::move(given)), feed(shared) {}

    void bind();
    bool isKnown(const Request& request, Response& response) const;
    void route(const Request& request, Response& response);
    void sendEvents(Response& response);
    bool sendNews(Feed::Place& place, httplib::DataSink& sink) const;
    void mark(const Request& request, Response& response) const;
    void check(const Request& request, Response& response) const;
    std::string cookieName() const { return "voxloc-" + std::to_string(options.address.port); }
};

void LiveServer::Parts::bind() {
    errno = 0;
    ServeAddress& address = options.address;
    const int port = address.port == 0
                         ? server.bind_to_any_port(address.host)
                         : (server.bind_to_port(address.host, address.port) ? address.port : -1);
    if (port > 0) {
        address.port = port;
        return;
    }
    const std::string reason = errno == 0 ? "no such address" : std::strerror(errno);
    throw BadData("cannot serve on " + urlOf(address) + ": " + reason);
}

/** With a token, by one of its three ways; a link with it leaves a cookie for what follows. */
bool LiveServer::Parts::isKnown(const Request& request, Response& response) const {
    if (!options.token) return true;
    const std::string& token = *options.token;
    const std::string bearer = request.get_header_value("Authorization");
    if (isEqualInConstantTime(bearer, "Bearer " + token)) return true;
    const std::string cookies = request.get_header_value("Cookie");
    if (isEqualInConstantTime(cookieValue(cookies, cookieName()), token)) return true;
    if (request.path != "/" || !isEqualInConstantTime(request.get_param_value("token"), token)) {
        return false;
    }
    response.set_header("Set-Cookie",
                        cookieName() + "=" + token + "; Path=/; HttpOnly; SameSite=Strict");
    return true;
}

void LiveServer::Parts::route(const Request& request, Response& response) {
    for (const auto& [name, value] : SafeHeaders) response.set_header(name, value);
    if (const auto reason = refusal(approachOf(request), options.address)) {
        return answer(response, 403, "Refused: " + *reason + ".");
    }
    if (request.method != "GET") {
        response.set_header("Allow", "GET");
        return answer(response, 405, "Only GET is answered.");
    }
    if (!isKnown(request, response)) {
        response.set_header("WWW-Authenticate", "Bearer");
        return answer(response, 401, "A token is needed: open the page as /?token=TOKEN.");
    }
    for (const LivePageFile& file : LivePageFiles) {
        if (request.path != file.path) continue;
        response.status = 200;
        response.set_content(file.text.data(), file.text.size(), file.type);
        return;
    }
    if (request.path == "/events") return sendEvents(response);
    if (request.path == "/mark") return mark(request, response);
    if (request.path == "/check" || request.path == "/check/start") return check(request, response);
    answer(response, 404, "There is nothing here.");
}

void LiveServer::Parts::sendEvents(Response& response) {
    if (++viewers > MostViewers) {
        --viewers;
        response.set_header("Retry-After", "5");
        return answer(response, 503, "Too many look on at the same time.");
    }
    response.status = 200;
    const auto place = std::make_shared<Feed::Place>();
    response.set_content_provider(
        "text/event-stream",
        [this, place](std::size_t offset, httplib::DataSink& sink) {
            if (offset == 0) {
                std::string text = "retry: 1000\n";
                appendEvent(text, "hello", options.hello);
                if (!sink.write(text.data(), text.size())) return false;
            }
            return sendNews(*place, sink);
        },
        [this](bool) { --viewers; });
}

bool LiveServer::Parts::sendNews(Feed::Place& place, httplib::DataSink& sink) const {
    const bool isFirst = place.status == 0;
    const Feed::News news = feed.wait(place, isFirst ? std::chrono::milliseconds(0) : Heartbeat);
    std::string text;
    for (const Mark& mark : news.marks) appendEvent(text, "mark", markJson(mark));
    if (news.hasStatus) appendEvent(text, "status", statusJson(news.status, options.channels));
    if (isFirst || news.records.size() > 1) {
        appendEvent(text, isFirst ? "history" : "frames", recordsJson(news.records));
    } else if (!news.records.empty()) {
        text += "data: ";
        appendRecordJson(text, news.records.front());
        text += "\n\n";
    }
    if (text.empty()) text = ":\n\n";
    if (!sink.is_writable() || !sink.write(text.data(), text.size())) return false;
    if (news.isClosed) sink.done();
    return true;
}

void LiveServer::Parts::mark(const Request& request, Response& response) const {
    const std::string label = labelFrom(request.get_param_value("label"));
    if (label.size() > LongestLabel) return answer(response, 400, "The label is too long.");
    const auto frame = options.setMark(label);
    if (!frame) return answer(response, 409, "Nothing is recorded.");
    response.status = 200;
    response.set_content(markJson({*frame, label}), "application/json");
}

void LiveServer::Parts::check(const Request& request, Response& response) const {
    if (request.path == "/check/start" && !options.check->start()) {
        return answer(response, 409, "A check is under way.");
    }
    response.status = 200;
    response.set_content(options.check->json(), "application/json");
}

LiveServer::LiveServer(LiveServerOptions options, Feed& feed)
    : parts_(std::make_unique<Parts>(std::move(options), feed)) {
    Parts& parts = *parts_;
    parts.server.set_pre_routing_handler([&parts](const Request& request, Response& response) {
        parts.route(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    parts.bind();
    const BlockedSignals blocked;
    parts.thread = std::thread([&parts] {
        parts.server.listen_after_bind();
        parts.hasStopped = true;
    });
}

LiveServer::~LiveServer() {
    Parts& parts = *parts_;
    parts.feed.close();
    const auto nap = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
    // Who looks on is told that it is over; who does not take it does not hold us up for long.
    for (int i = 0; i < 300 && parts.viewers > 0; ++i) nap();
    // The library knows how to stop only once it listens.
    while (!parts.server.is_running() && !parts.hasStopped) nap();
    parts.server.end();
    parts.thread.join();
}

const ServeAddress& LiveServer::address() const {
    return parts_->options.address;
}

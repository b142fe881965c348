/** Who may see what the microphones hear. */
#ifndef VOXLOC_APP_LIVE_ACCESS_H
#define VOXLOC_APP_LIVE_ACCESS_H

#include <optional>
#include <string>
#include <string_view>

/** Where the page is served. */
struct ServeAddress {
    std::string host = "127.0.0.1";  // a name or an address, IPv6 without brackets
    int port = 0;                    // 0: any that is free
};

/** From "[ADDRESS:]PORT", IPv6 in brackets. Throws WrongUsage. */
ServeAddress serveAddressFrom(const std::string& text);

/** Whether only this machine reaches the address. */
bool isLoopback(std::string_view host);

/** As a browser writes it: IPv6 in brackets. */
std::string urlOf(const ServeAddress& address);

/**
 * Whether a Host header is one under which this page is meant: the address itself or a name of the
 * loopback, each with the port; any literal address when all of them are served. A foreign name
 * that someone lets point here is none of them: its pages cannot read ours.
 */
bool isHostMeant(std::string_view host, const ServeAddress& address);

/** Takes as long for a wrong first character as for a wrong last one. */
bool isEqualInConstantTime(std::string_view given, std::string_view secret);

/** The token in the first line of a file. Throws BadData when it is too short or holds odd bytes.
 */
std::string readToken(const std::string& path);

/** The value of a cookie in a Cookie header, or empty. */
std::string_view cookieValue(std::string_view header, std::string_view name);

/** What of a request decides. A header that is not there is nothing. */
struct Approach {
    std::string path;
    std::string host;
    std::optional<std::string> origin, fetchSite, fetchMode, fetchDest;  // Sec-Fetch-...
    bool hasMarkHeader = false;
};

/** Why a request comes from elsewhere and must be refused, or nothing. */
std::optional<std::string> refusal(const Approach& approach, const ServeAddress& address);

#endif

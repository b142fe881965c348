#include "live/access.h"

#include <arpa/inet.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <fstream>

#include "common/failure.h"
#include "common/text.h"

namespace {

constexpr std::size_t ShortestToken = 16, LongestToken = 256;  // characters

bool isAddress(int family, const std::string& text) {
    unsigned char bytes[16];
    return inet_pton(family, text.c_str(), bytes) == 1;
}

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

bool isWildcard(const std::string& host) {
    return host == "0.0.0.0" || host == "::";
}

int portFrom(const std::string& text, const std::string& whole) {
    const auto port = integerFrom(text);
    if (!port || *port < 0 || *port > 65535) {
        throw WrongUsage("--serve takes [ADDRESS:]PORT with a port from 0 to 65535, not " +
                         inQuotes(whole));
    }
    return static_cast<int>(*port);
}

/** "NAME:PORT" to both; the port of a scheme may be missing. */
struct HostAndPort {
    std::string host;
    int port = 80;
    bool isBracketed = false;
};

std::optional<HostAndPort> hostAndPortFrom(std::string_view text) {
    HostAndPort result;
    const std::size_t end = text.empty() || text[0] != '[' ? text.find(':') : text.find(']');
    result.isBracketed = !text.empty() && text[0] == '[';
    if (result.isBracketed && end == std::string_view::npos) return {};
    result.host = lower(result.isBracketed ? text.substr(1, end - 1) : text.substr(0, end));
    std::string_view rest = end == std::string_view::npos ? "" : text.substr(end);
    if (result.isBracketed) rest.remove_prefix(1);
    if (rest.empty()) return result;
    const auto port = integerFrom(rest.substr(1));
    if (rest[0] != ':' || !port || *port < 1 || *port > 65535) return {};
    result.port = static_cast<int>(*port);
    return result;
}

}  // namespace

ServeAddress serveAddressFrom(const std::string& text) {
    ServeAddress address;
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos) {
        address.port = portFrom(text, text);
        return address;
    }
    address.port = portFrom(text.substr(colon + 1), text);
    address.host = lower(text.substr(0, colon));
    if (address.host.size() > 1 && address.host.front() == '[' && address.host.back() == ']') {
        address.host = address.host.substr(1, address.host.size() - 2);
        if (isAddress(AF_INET6, address.host)) return address;
    } else if (!address.host.empty() && address.host.find(':') == std::string::npos) {
        return address;
    }
    throw WrongUsage("--serve takes [ADDRESS:]PORT, IPv6 as [::1]:8080, not " + inQuotes(text));
}

bool isLoopback(std::string_view host) {
    const std::string text = lower(host);
    return text == "localhost" || text == "::1" ||
           (text.rfind("127.", 0) == 0 && isAddress(AF_INET, text));
}

std::string urlOf(const ServeAddress& address) {
    const bool isIp6 = address.host.find(':') != std::string::npos;
    return "http://" + (isIp6 ? "[" + address.host + "]" : address.host) + ":" +
           std::to_string(address.port) + "/";
}

bool isHostMeant(std::string_view host, const ServeAddress& address) {
    const std::optional<HostAndPort> given = hostAndPortFrom(host);
    if (!given || given->port != address.port) return false;
    const bool isIp6 = isAddress(AF_INET6, given->host);
    if (given->isBracketed != isIp6) return false;
    if (given->host == address.host || isLoopback(given->host)) return true;
    return isWildcard(address.host) && (isIp6 || isAddress(AF_INET, given->host));
}

bool isEqualInConstantTime(std::string_view given, std::string_view secret) {
    volatile unsigned difference = given.size() == secret.size() ? 0u : 1u;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        const auto one = static_cast<unsigned char>(i < given.size() ? given[i] : 0);
        difference = difference | (one ^ static_cast<unsigned char>(secret[i]));
    }
    return difference == 0;
}

std::string readToken(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw cannot("read", path);
    std::string line;
    std::getline(file, line);
    std::string token(trimmed(line));
    // What a cookie and an address take as it is.
    const bool isPlain = std::all_of(token.begin(), token.end(), [](unsigned char c) {
        return c < 128 && (std::isalnum(c) != 0 || c == '-' || c == '_' || c == '.' || c == '~');
    });
    if (!isPlain || token.size() < ShortestToken || token.size() > LongestToken) {
        throw BadData(path + ": a token is a line of 16 to 256 letters, digits and -._~");
    }
    struct stat about = {};
    if (stat(path.c_str(), &about) == 0 && (about.st_mode & (S_IRGRP | S_IROTH)) != 0) {
        say(path + ": other users of this machine can read the token");
    }
    return token;
}

std::string_view cookieValue(std::string_view header, std::string_view name) {
    while (!header.empty()) {
        const std::size_t end = header.find(';');
        const std::string_view cookie = trimmed(header.substr(0, end));
        if (cookie.size() > name.size() && cookie.substr(0, name.size()) == name &&
            cookie[name.size()] == '=') {
            return cookie.substr(name.size() + 1);
        }
        if (end == std::string_view::npos) break;
        header.remove_prefix(end + 1);
    }
    return {};
}

std::optional<std::string> refusal(const Approach& approach, const ServeAddress& address) {
    if (!isHostMeant(approach.host, address)) return "this is not the address of the page";
    if (approach.origin && *approach.origin != "http://" + approach.host) {
        return "the page of another site asks";
    }
    const bool isPage = approach.path == "/";
    const std::string site = approach.fetchSite.value_or("none");
    if (site != "same-origin" && site != "none") {
        // A link to the page is fine: whoever set it does not see where it leads.
        const bool isLink = isPage && approach.fetchMode.value_or("") == "navigate" &&
                            approach.fetchDest.value_or("") == "document";
        if (!isLink) return "the page of another site asks";
    }
    if (approach.path == "/mark" && !approach.hasMarkHeader) {
        return "only the page itself sets marks";
    }
    if (approach.path == "/check/start" && !approach.hasMarkHeader) {
        return "only the page itself has the array checked";
    }
    return {};
}

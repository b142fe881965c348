#include <gtest/gtest.h>

#include <string>

#include "common/failure.h"
#include "live/access.h"

namespace {

const ServeAddress Loopback{"127.0.0.1", 8080};

TEST(ServeAddress, PortAloneIsOnTheLoopback) {
    const ServeAddress address = serveAddressFrom("8080");
    EXPECT_EQ(address.host, "127.0.0.1");
    EXPECT_EQ(address.port, 8080);
}

TEST(ServeAddress, TakesNamesAndBothKindsOfAddresses) {
    EXPECT_EQ(serveAddressFrom("192.168.1.2:80").host, "192.168.1.2");
    EXPECT_EQ(serveAddressFrom("Board:80").host, "board");
    EXPECT_EQ(serveAddressFrom("[::1]:81").host, "::1");
    EXPECT_EQ(serveAddressFrom("[::1]:81").port, 81);
}

TEST(ServeAddress, RefusesWhatIsNone) {
    for (const char* text : {"", "x", "1.2.3.4", "1.2.3.4:", ":80", "80:80:80", "::1:80", "[x]:80",
                             "[]:80", "65536", "-1", "a:b"}) {
        EXPECT_THROW(serveAddressFrom(text), WrongUsage) << text;
    }
}

TEST(Loopback, IsThisMachineAlone) {
    for (const char* host : {"localhost", "LocalHost", "127.0.0.1", "127.9.9.9", "::1"}) {
        EXPECT_TRUE(isLoopback(host)) << host;
    }
    for (const char* host : {"0.0.0.0", "::", "128.0.0.1", "127.0.0.1.example", "127.", "board",
                             "localhost.example", "127.0.0.256", ""}) {
        EXPECT_FALSE(isLoopback(host)) << host;
    }
}

TEST(Host, IsMeantUnderTheAddressAndTheLoopbackNames) {
    for (const char* host : {"127.0.0.1:8080", "localhost:8080", "[::1]:8080"}) {
        EXPECT_TRUE(isHostMeant(host, Loopback)) << host;
    }
}

TEST(Host, IsNotMeantUnderAnotherPortOrName) {
    for (const char* host : {"127.0.0.1", "127.0.0.1:80", "127.0.0.1:8081", "evil.example:8080",
                             "localhost.:8080", "::1:8080", "[localhost]:8080", "[::1:8080",
                             "localhost:8080:8080", "localhost:", "localhost:8080x", ":8080", "",
                             "192.168.1.2:8080", "[::1]8080", "localhost: 8080"}) {
        EXPECT_FALSE(isHostMeant(host, Loopback)) << host;
    }
}

TEST(Host, MayLackThePortOfTheScheme) {
    EXPECT_TRUE(isHostMeant("localhost", {"127.0.0.1", 80}));
}

TEST(Host, IsTheNameThatWasGiven) {
    EXPECT_TRUE(isHostMeant("Board:8080", {"board", 8080}));
    EXPECT_FALSE(isHostMeant("other:8080", {"board", 8080}));
}

TEST(Host, IsAnyLiteralAddressWhereAllAreServed) {
    for (const char* all : {"0.0.0.0", "::"}) {
        EXPECT_TRUE(isHostMeant("192.168.1.2:8080", {all, 8080})) << all;
        EXPECT_TRUE(isHostMeant("[fe80::1]:8080", {all, 8080})) << all;
        EXPECT_FALSE(isHostMeant("evil.example:8080", {all, 8080})) << all;
        EXPECT_FALSE(isHostMeant("1.2.3.4.example:8080", {all, 8080})) << all;
    }
}

TEST(ConstantTime, IsEqualOnlyWhenAllIs) {
    EXPECT_TRUE(isEqualInConstantTime("secret", "secret"));
    for (const char* given : {"", "s", "secre", "secret1", "Secret", "secreT", "sEcret"}) {
        EXPECT_FALSE(isEqualInConstantTime(given, "secret")) << given;
    }
    EXPECT_FALSE(isEqualInConstantTime(std::string("secret\0", 7), "secret"));
    EXPECT_FALSE(isEqualInConstantTime("secret", ""));
}

TEST(Cookie, IsFoundByItsWholeName) {
    EXPECT_EQ(cookieValue("a=1; name=2; b=3", "name"), "2");
    EXPECT_EQ(cookieValue("name=2", "name"), "2");
    EXPECT_EQ(cookieValue("xname=1;name=2", "name"), "2");
    EXPECT_EQ(cookieValue("namex=1", "name"), "");
    EXPECT_EQ(cookieValue("name", "name"), "");
    EXPECT_EQ(cookieValue("", "name"), "");
}

Approach ours(const std::string& path) {
    Approach approach;
    approach.path = path;
    approach.host = "localhost:8080";
    return approach;
}

TEST(Refusal, LetsThePageItselfAndPlainProgramsIn) {
    Approach approach = ours("/events");
    EXPECT_FALSE(refusal(approach, Loopback));
    approach.fetchSite = "same-origin";
    approach.origin = "http://localhost:8080";
    EXPECT_FALSE(refusal(approach, Loopback));
}

TEST(Refusal, KeepsOtherOriginsOut) {
    for (const char* origin : {"http://evil.example", "null", "", "https://localhost:8080",
                               "http://localhost:8081", "http://127.0.0.1:8080"}) {
        Approach approach = ours("/events");
        approach.origin = origin;
        EXPECT_TRUE(refusal(approach, Loopback)) << origin;
    }
}

TEST(Refusal, KeepsOtherSitesOutOfAllButLinksToThePage) {
    for (const char* path : {"/", "/events", "/live.js", "/mark"}) {
        Approach approach = ours(path);
        approach.hasMarkHeader = true;
        approach.fetchSite = "cross-site";
        EXPECT_TRUE(refusal(approach, Loopback)) << path;
        approach.fetchMode = "navigate";
        approach.fetchDest = "iframe";
        EXPECT_TRUE(refusal(approach, Loopback)) << path;
        approach.fetchDest = "document";
        EXPECT_EQ(refusal(approach, Loopback).has_value(), std::string(path) != "/") << path;
    }
}

TEST(Refusal, LetsOnlyAHeaderOfOursSetMarksAndCheckTheArray) {
    for (const char* path : {"/mark", "/check/start"}) {
        Approach approach = ours(path);
        EXPECT_TRUE(refusal(approach, Loopback)) << path;
        approach.hasMarkHeader = true;
        EXPECT_FALSE(refusal(approach, Loopback)) << path;
    }
}

}  // namespace

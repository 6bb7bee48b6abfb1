// Who may ask the server, and what the targets of requests say.
#include "server/gate.h"
#include "server/incoming.h"
#include "support/testing.h"

namespace RecView {

namespace {

using namespace testing;

Credentials from(const std::string& host)
{
    return {{host}, std::nullopt, std::nullopt, ""};
}

Credentials withOrigin(const std::string& origin)
{
    return {{"127.0.0.1:8080"}, origin, std::nullopt, ""};
}

Credentials withSite(const std::string& site)
{
    return {{"127.0.0.1:8080"}, std::nullopt, site, ""};
}

int statusOf(const std::optional<Denial>& denial)
{
    return denial ? denial->status : 0;
}

std::string problemWith(const std::string& target)
{
    std::string problem;
    EXPECT_FALSE(decodeTarget(target, problem).has_value()) << target;
    return problem;
}

const Gate& gate()
{
    static const Gate loopback("127.0.0.1", 8080, "");
    return loopback;
}

}  // namespace

TEST(Gate, OnlyItsOwnHostsWithItsPortAreServed)
{
    for (const char* host : {"127.0.0.1:8080", "localhost:8080", "LOCALHOST:8080", "[::1]:8080"}) {
        EXPECT_EQ(statusOf(gate().denial("GET", "/api/view", from(host))), 0) << host;
    }
    for (const char* host : {"evil.example:8080", "127.0.0.1", "127.0.0.1:8081", "localhost:80800",
                             "127.0.0.1:8080.evil", "evil:8080@127.0.0.1:8080", "127.0.0.2:8080", "", "0.0.0.0:8080"}) {
        EXPECT_EQ(statusOf(gate().denial("GET", "/", from(host))), 403) << host;
    }
}

TEST(Gate, AHostIsNamedExactlyOnce)
{
    Credentials credentials;
    EXPECT_EQ(statusOf(gate().denial("GET", "/", credentials)), 400);
    credentials.hosts = {"127.0.0.1:8080", "127.0.0.1:8080"};
    EXPECT_EQ(statusOf(gate().denial("GET", "/", credentials)), 400);
}

TEST(Gate, PagesFromElsewhereMayNotAsk)
{
    EXPECT_EQ(statusOf(gate().denial("GET", "/api/view", withOrigin("http://127.0.0.1:8080"))), 0);
    EXPECT_EQ(statusOf(gate().denial("POST", "/api/bookmarks", withOrigin("http://localhost:8080"))), 0);
    for (const char* origin : {"http://evil.example", "null", "https://127.0.0.1:8080", "http://127.0.0.1:9090",
                               "http://127.0.0.1:8080.evil.example", "file://", ""}) {
        EXPECT_EQ(statusOf(gate().denial("GET", "/api/events", withOrigin(origin))), 403) << origin;
        EXPECT_EQ(statusOf(gate().denial("POST", "/api/bookmarks", withOrigin(origin))), 403) << origin;
    }
    EXPECT_EQ(statusOf(gate().denial("POST", "/api/bookmarks", from("127.0.0.1:8080"))), 403)
        << "what changes something tells its origin";
}

TEST(Gate, WhatBrowsersTellOfTheAskingPageIsHeeded)
{
    EXPECT_EQ(statusOf(gate().denial("GET", "/api/view", withSite("same-origin"))), 0);
    EXPECT_EQ(statusOf(gate().denial("GET", "/api/csv", withSite("none"))), 0);
    EXPECT_EQ(statusOf(gate().denial("GET", "/api/view", withSite("cross-site"))), 403);
    EXPECT_EQ(statusOf(gate().denial("GET", "/api/view", withSite("same-site"))), 403);
    // A link to the page, wherever it stands, is followed.
    EXPECT_EQ(statusOf(gate().denial("GET", "/", withSite("cross-site"))), 0);
}

TEST(Gate, WhereThereIsATokenItsCookieIsNeeded)
{
    const Gate listening("192.168.1.20", 8080, "secret");
    Credentials credentials = from("192.168.1.20:8080");
    EXPECT_EQ(statusOf(listening.denial("GET", "/api/view", credentials)), 401);
    EXPECT_EQ(statusOf(listening.denial("GET", "/", credentials)), 0) << "the page itself holds nothing";
    const std::string given = listening.cookie();
    EXPECT_NE(given.find("HttpOnly; SameSite=Strict"), std::string::npos);
    EXPECT_EQ(given.find("secret"), std::string::npos);
    const std::string pair = given.substr(0, given.find(';'));
    credentials.cookies = pair;
    EXPECT_EQ(statusOf(listening.denial("GET", "/api/view", credentials)), 0);
    credentials.cookies = "other=1; " + pair + "; more=2";
    EXPECT_EQ(statusOf(listening.denial("GET", "/api/view", credentials)), 0);
    for (const std::string& wrong : {pair + "x", pair.substr(0, pair.size() - 1), pair.substr(0, pair.find('=') + 1)}) {
        credentials.cookies = wrong;
        EXPECT_EQ(statusOf(listening.denial("GET", "/api/view", credentials)), 401) << wrong;
    }
    EXPECT_TRUE(listening.isToken("secret"));
    EXPECT_FALSE(listening.isToken("secreT"));
    EXPECT_FALSE(listening.isToken(""));
    EXPECT_FALSE(gate().needsToken());
    EXPECT_FALSE(gate().isToken("")) << "without a token none is right";
}

TEST(Gate, OnAllAddressesAnyAddressIsItsHostButNoName)
{
    const Gate everywhere("0.0.0.0", 8080, "secret");
    EXPECT_EQ(statusOf(everywhere.denial("GET", "/", from("192.168.1.20:8080"))), 0);
    EXPECT_EQ(statusOf(everywhere.denial("GET", "/", from("[fe80::1]:8080"))), 0);
    EXPECT_EQ(statusOf(everywhere.denial("GET", "/", from("evil.example:8080"))), 403);
    EXPECT_EQ(statusOf(everywhere.denial("GET", "/", from("192.168.1.20:8081"))), 403);
    EXPECT_EQ(statusOf(everywhere.denial("GET", "/", from(":8080"))), 403);
}

TEST(Secret, NoTwoAreAlikeAndEachIsLong)
{
    const std::string first = newSecret();
    EXPECT_EQ(first.size(), 32U);
    EXPECT_NE(first, newSecret());
}

TEST(RequestTarget, PathAndQueryAreDecoded)
{
    std::string problem;
    const auto target = decodeTarget("/api/a%20b+c?recording=N%C3%A4chte+1&empty=&flag&x=a%26b%3D", problem);
    ASSERT_TRUE(target.has_value()) << problem;
    EXPECT_EQ(target->path, "/api/a b+c");
    EXPECT_THAT(target->query, ElementsAre(Pair("empty", ""), Pair("flag", ""),
                                           Pair("recording", std::string("N\xC3\xA4") + "chte 1"), Pair("x", "a&b=")));
}

TEST(RequestTarget, ANameThatStandsTwiceIsRefusedHoweverItIsWritten)
{
    EXPECT_THAT(problemWith("/api/view?type=1&type=2"), HasSubstr("\"type\" stands twice"));
    EXPECT_THAT(problemWith("/api/view?type=1&%74ype=1"), HasSubstr("\"type\" stands twice"));
}

TEST(RequestTarget, EscapesAreTwoHexadecimalDigits)
{
    for (const char* target : {"/%", "/%4", "/%4g", "/a?b=%", "/a?%zz=1", "/a?b=%-1"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("two hexadecimal digits")) << target;
    }
}

TEST(RequestTarget, ControlCharactersAndWhatIsNoUtf8AreRefused)
{
    for (const char* target :
         {"/a%00", "/a?b=%0a", "/a?b=%0d%0aSet-Cookie:x", "/a?b=%7f", "/%ff", "/a?b=%c0%af", "/a?b=%ed%a0%80"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("control character, or is no UTF-8")) << target;
    }
}

TEST(RequestTarget, OnlyAbsolutePathsAreTargets)
{
    for (const char* target : {"", "api", "*", "http://127.0.0.1/api/view"}) {
        EXPECT_THAT(problemWith(target), HasSubstr("begins with a slash")) << target;
    }
    EXPECT_THAT(problemWith("/a#b"), HasSubstr("#"));
}

}  // namespace RecView

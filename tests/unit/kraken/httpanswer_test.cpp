// Answers of HTTP servers, in pieces and hostile; addresses.
#include <string>

#include <gtest/gtest.h>

#include "sources/kraken/httpfetch.h"

namespace RecStation {
namespace {

std::string bodyOf(const std::string& bytes, std::size_t piece)
{
    HttpAnswer answer;
    for (std::size_t i = 0; i < bytes.size(); i += piece) {
        answer.put(std::string_view(bytes).substr(i, piece));
    }
    if (!answer.isWhole() && !answer.end()) {
        throw ConnectionError("cut off");
    }
    return answer.takeBody();
}

TEST(HttpAnswer, ComesInPiecesOfAnySize)
{
    for (const std::size_t piece : {1U, 7U, 1000U}) {
        EXPECT_EQ(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello", piece), "hello");
        EXPECT_EQ(
            bodyOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n", piece),
            "hello");
        EXPECT_EQ(bodyOf("HTTP/1.0 200 OK\r\n\r\nhello", piece), "hello");  // the end of the connection ends it
    }
}

TEST(HttpAnswer, WhatIsCutOffTooLargeOrNoHttpIsRefused)
{
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\nhello", 1000), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nConte", 1000), ConnectionError);
    EXPECT_THROW(bodyOf("", 1), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n", 1000), ConnectionError);
    for (const std::size_t piece : {1U, 7U, 43U, 16'384U}) {
        EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n" + std::string(2'000'000, 'x'), piece),
                     ConnectionError);
    }
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\n\r\n" + std::string(2'000'000, 'x'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf("HTTP/1.1 200 OK\r\nX: " + std::string(100'000, 'x'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf(std::string(100'000, '\0'), 10'000), ConnectionError);
    EXPECT_THROW(bodyOf("SSH-2.0-OpenSSH_9.2\r\n\r\n", 10'000), ConnectionError);
}

TEST(HttpAnswer, ARefusalIsToldWithItsReason)
{
    try {
        static_cast<void>(bodyOf("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", 1000));
        FAIL();
    } catch (const ConnectionError& error) {
        EXPECT_STREQ(error.what(), "it answers 404 Not Found");
    }
}

TEST(HttpUrl, AHostAloneIsAKraken)
{
    EXPECT_EQ(urlText(parseHttpUrl("krakensdr").value()), "http://krakensdr:8081/DOA_value.html");
    EXPECT_EQ(urlText(parseHttpUrl("[::1]:90").value()), "http://[::1]:90/DOA_value.html");
    EXPECT_EQ(urlText(parseHttpUrl("http://10.0.0.1/doa.xml?x=1").value()), "http://10.0.0.1:80/doa.xml?x=1");
    EXPECT_EQ(urlText(parseHttpUrl("host/doa.xml").value()), "http://host:8081/doa.xml");
    for (const char* wrong : {"", "http://", "https://host/", "http://u:p@host/", "host/a b", "host/a\r\nX: y",
                              "host:x", "http:///a", "ftp://host/a"}) {
        EXPECT_FALSE(parseHttpUrl(wrong)) << wrong;
    }
}

}  // namespace
}  // namespace RecStation

#include "server/request_guard.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using namespace std::string_view_literals;

TEST(IsHttpRequestLine, KnowsEveryMethodAndVersion) {
    EXPECT_TRUE(isHttpRequestLine("GET / HTTP/1.1"));
    EXPECT_TRUE(isHttpRequestLine("POST /x?y=z HTTP/1.0"));
    EXPECT_TRUE(isHttpRequestLine("OPTIONS * HTTP/1.1"));
    EXPECT_TRUE(isHttpRequestLine("PRI * HTTP/2.0"));
    EXPECT_TRUE(isHttpRequestLine("M-SEARCH * HTTP/1.1"));
    EXPECT_TRUE(isHttpRequestLine("get http://127.0.0.1:1/ HTTP/1.1"));
}

TEST(IsHttpRequestLine, LeavesCommandsAlone) {
    for (const char* line : {"", " ", "userDir", "write", "GET", "GET /", "GET / HTTP/", "HTTP/1.1",
                             " / HTTP/1.1", "GET HTTP/1.1", "GET / HTTP/x", "GET / http/1.1",
                             "GET / HTTP/1.1 ", "G(T / HTTP/1.1", "no such command"}) {
        EXPECT_FALSE(isHttpRequestLine(line)) << line;
    }
}

TEST(IsTlsGreeting, KnowsAHandshakeRecord) {
    EXPECT_TRUE(isTlsGreeting("\x16\x03"));
    EXPECT_TRUE(isTlsGreeting("\x16\x03\x01\x02"));
    EXPECT_FALSE(isTlsGreeting("\x16"));
    EXPECT_FALSE(isTlsGreeting(""));
    EXPECT_FALSE(isTlsGreeting("\x15\x03"));
}

TEST(IsTlsGreeting, KnowsTheFormOfSsl2) {
    EXPECT_TRUE(isTlsGreeting("\x80\x46\x01\x03\x01\0\x2D"sv));
    EXPECT_TRUE(isTlsGreeting("\x80\x46\x01\x03"));
    EXPECT_FALSE(isTlsGreeting("\x80\x46\x01"));
    EXPECT_FALSE(isTlsGreeting("\x80"));
    EXPECT_FALSE(isTlsGreeting("\x80\x46\x02\x03"));
    EXPECT_FALSE(isTlsGreeting("\x81\x46\x01\x03"));
}

TEST(IsHttpBeginning, NeedsNeitherVersionNorLineEnd) {
    for (const char* request : {"GET /", "GET /x", "HEAD /", "POST / HTTP/1.1\r\nHost: x", "PUT /",
                                "DELETE /", "CONNECT /", "OPTIONS /", "TRACE /", "PATCH /"}) {
        EXPECT_TRUE(isHttpBeginning(request)) << request;
    }
}

TEST(IsHttpBeginning, LeavesCommandsAlone) {
    for (const char* request : {"", "G", "GET", "GET ", "GET/", "GETS /", "GET  /", "get /",
                                " GET /", "write /", "/", "GET x", "write\nGET /"}) {
        EXPECT_FALSE(isHttpBeginning(request)) << request;
    }
}

TEST(IsStunMessage, KnowsTheMagicCookie) {
    EXPECT_TRUE(isStunMessage("\0\3\0\x08\x21\x12\xA4\x42"sv));
    EXPECT_TRUE(isStunMessage("\0\1\0\0\x21\x12\xA4\x42 and more"sv));
}

TEST(IsStunMessage, KnowsItBehindTheLengthOfTheWhole) {
    EXPECT_TRUE(isStunMessage("\0\x14\0\1\0\0\x21\x12\xA4\x42"sv));
    EXPECT_TRUE(isStunMessage("\xFF\x14\0\1\0\0\x21\x12\xA4\x42"sv));  // any length
}

TEST(IsStunMessage, IsNothingElse) {
    for (const std::string_view received :
         {""sv, "\0"sv, "\0\3\0\x08\x21\x12\xA4"sv, "\0\3\0\x08\x21\x12\xA4\x43"sv,
          "\x21\x12\xA4\x42"sv, "\0\3\0\x08 \x21\x12\xA4\x42"sv, "\x40\3\0\x08\x21\x12\xA4\x42"sv,
          "\0\x14\x80\1\0\0\x21\x12\xA4\x42"sv, "\0userDir\0"sv, "userDir\0"sv}) {
        EXPECT_FALSE(isStunMessage(received)) << received;
    }
}

}  // namespace
}  // namespace corvane

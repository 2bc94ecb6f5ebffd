#include "server/request_guard.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

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

}  // namespace
}  // namespace corvane

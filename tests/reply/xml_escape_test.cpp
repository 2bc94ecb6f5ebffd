#include "reply/xml_escape.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

namespace corvane {
namespace {

// What the rule gives for each character alone.
std::string entityOf(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        case '\0':
            return "";
        default:
            return {c};
    }
}

std::string escaped(const std::string& text) {
    std::string out;
    appendEscaped(text, out);
    return out;
}

TEST(EscapeXml, ReplacesTheFiveCharacters) {
    std::ostringstream out;
    escapeXml("a<b&\"c", 6, out);
    EXPECT_EQ(out.str(), "a&lt;b&amp;&quot;c");
    EXPECT_EQ(escaped("'>"), "&apos;&gt;");
    EXPECT_EQ(escaped("&amp;"), "&amp;amp;");
}

TEST(EscapeXml, TreatsEveryByteByTheRule) {
    const std::string before = "x";
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        EXPECT_EQ(escaped(std::string(1, c)), entityOf(c)) << byte;
        EXPECT_EQ(escaped(std::string{'x', c, 'y'}), before + entityOf(c) + "y") << byte;
    }
}

TEST(EscapeXml, DropsZeroBytesInsideTheLength) {
    using namespace std::string_literals;
    EXPECT_EQ(escaped("\0a\0\0b\0"s), "ab");
}

TEST(EscapeXml, StopsAtTheLength) {
    std::ostringstream out;
    escapeXml("ab<c", 2, out);
    EXPECT_EQ(out.str(), "ab");
    escapeXml("ab", 0, out);
    escapeXml("ab", -1, out);
    EXPECT_EQ(out.str(), "ab");
}

TEST(EscapeXml, IsTheSameAtEveryPlaceOfALongText) {
    for (std::size_t length : {1U, 63U, 64U, 65U, 127U, 128U, 200U}) {
        for (std::size_t at = 0; at < length; ++at) {
            std::string text(length, 'x');
            text[at] = '<';
            ASSERT_EQ(escaped(text),
                      std::string(at, 'x') + "&lt;" + std::string(length - at - 1, 'x'))
                << length << " " << at;
        }
    }
}

TEST(EscapeXml, AgreesWithTheRuleOnRandomTexts) {
    std::mt19937 random(20260901);
    for (int round = 0; round < 300; ++round) {
        std::string text(random() % 600, ' ');
        std::string expected;
        for (char& c : text) {
            c = random() % 8 == 0 ? "&<>\"'\0"[random() % 6] : static_cast<char>(random() % 256);
            expected += entityOf(c);
        }
        ASSERT_EQ(escaped(text), expected) << "round " << round;
        std::ostringstream stream;
        escapeXml(text.data(), static_cast<int>(text.size()), stream);
        ASSERT_EQ(stream.str(), expected) << "round " << round;
    }
}

TEST(EscapeXml, AppendsToEitherTarget) {
    std::string text = "before ";
    std::ostringstream stream;
    escapeXml("<", 1, nullptr, &text);
    escapeXml("<", 1, &stream, nullptr);
    writeEscapeTag(nullptr, &text, "name");
    writeEscapeTag(&stream, nullptr, "name");
    writeEscapeTag(stream, "other");
    writeStringN(nullptr, &text, "<raw>", 4);
    writeStringN(&stream, nullptr, "<raw>", 4);
    EXPECT_EQ(text, "before &lt;&name;<raw");
    EXPECT_EQ(stream.str(), "&lt;&name;&other;<raw");
}

}  // namespace
}  // namespace corvane

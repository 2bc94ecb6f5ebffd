#include "reply/xml_writer.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>

namespace corvane {
namespace {

class XmlText : public ::testing::Test {
  protected:
    std::string out;
    XmlWriter xml{&out};
};

TEST_F(XmlText, ClosesAnElementWithoutContentAtOnce) {
    xml.startElement("a").attribute("x", 1).endElement();
    EXPECT_EQ(out, "<a x=\"1\"/>");
}

TEST_F(XmlText, PutsTextBetweenTheTags) {
    xml.startElement("a").text("hi", true).endElement();
    EXPECT_EQ(out, "<a>hi</a>");
}

TEST_F(XmlText, NestsElements) {
    xml.startElement("a").startElement("b").endElement().endElement();
    EXPECT_EQ(out, "<a><b/></a>");
}

TEST_F(XmlText, ClosesEachElementByItsOwnName) {
    xml.startElement(std::string("a")).startElement("b").text("1", false).endElement();
    xml.startElement("c").endElement().text("2", false).endElement();
    EXPECT_EQ(out, "<a><b>1</b><c/>2</a>");
}

TEST_F(XmlText, DropsAnAttributeThatComesTooLate) {
    xml.attribute("z", "0");
    xml.startElement("a").text("", true).attribute("x", "1").endElement().attribute("y", 2);
    EXPECT_EQ(out, "<a></a>");
    out.clear();
    xml.startElement("a").startElement("b").endElement().attribute("x", "1").endElement();
    EXPECT_EQ(out, "<a><b/></a>");
}

TEST_F(XmlText, WritesNothingForAnEndWithoutABeginning) {
    xml.endElement();
    xml.startElement("a").endElement().endElement();
    EXPECT_EQ(out, "<a/>");
}

TEST_F(XmlText, EscapesTextOnlyWhenAsked) {
    xml.text("a&b", true).text("a&b", false).text(std::string("<"), true);
    EXPECT_EQ(out, "a&amp;ba&b&lt;");
}

TEST_F(XmlText, EscapesTheValuesOfAttributes) {
    xml.startElement("a").attribute("x", "<&>\"'").attribute("y", std::string("&")).endElement();
    EXPECT_EQ(out, "<a x=\"&lt;&amp;&gt;&quot;&apos;\" y=\"&amp;\"/>");
}

TEST_F(XmlText, LeavesOutAnEmptyStringButNotEmptyCharacters) {
    xml.startElement("a")
        .attribute("p", std::string())
        .attribute(std::string("q"), std::string())
        .attribute("r", "")
        .attribute(std::string("s"), std::string("1"))
        .endElement();
    EXPECT_EQ(out, "<a r=\"\" s=\"1\"/>");
}

TEST_F(XmlText, WritesNumbersInDecimal) {
    xml.startElement("a").attribute("x", INT_MIN).attribute(std::string("y"), 0).endElement();
    EXPECT_EQ(out, "<a x=\"-2147483648\" y=\"0\"/>");
}

TEST_F(XmlText, DoesNothingForANullPointer) {
    const char* none = nullptr;
    xml.startElement("a");
    xml.startElement(none).attribute(none, "1").attribute("x", none).attribute(none, 1);
    xml.text(none, true).escape(none).write(none);
    xml.endElement();
    EXPECT_EQ(out, "<a/>");
}

TEST_F(XmlText, WritesRawTextWithoutRegardToOpenTags) {
    xml.startElement("a").write(" raw=\"<\"").write('!').escape("<").endElement();
    EXPECT_EQ(out, "<a raw=\"<\"!&lt;/>");
}

TEST_F(XmlText, AppendsToWhatIsThere) {
    out = "before";
    xml.startElement("a").endElement();
    EXPECT_EQ(out, "before<a/>");
}

TEST(XmlWriter, WritesTheSameIntoAStream) {
    std::ostringstream stream;
    XmlWriter xml(&stream);
    xml.startElement("a").attribute("x", "&").text("<", true).startElement("b").endElement();
    xml.write('c').write("d").endElement();
    EXPECT_EQ(stream.str(), "<a x=\"&amp;\">&lt;<b/>cd</a>");
}

}  // namespace
}  // namespace corvane

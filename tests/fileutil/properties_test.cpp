#include "fileutil/properties.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <sys/stat.h>

#include <string>

#include "fileutil/files_fixture.h"
#include "support/thrown.h"

namespace corvane {
namespace {

class PropertiesFile : public test::FilesTest {
  protected:
    void load(Properties& target, const std::string& text) {
        target.load(scratch.file("settings.conf", text));
    }
    void load(const std::string& text) { load(store, text); }
    std::string value(const std::string& key) { return store.getPropertyAsString(key, "(absent)"); }
    Properties store{false};
};

TEST_F(PropertiesFile, GivesTheValueOfEachKey) {
    load("PORT=5000\nADDRESS=any\n");
    EXPECT_EQ(value("PORT"), "5000");
    EXPECT_EQ(value("ADDRESS"), "any");
    EXPECT_EQ(value("INACTIVITY"), "(absent)");
    EXPECT_EQ(store.getProperty("INACTIVITY"), nullptr);
}

TEST_F(PropertiesFile, MakesBlanksAroundTheSignPartOfKeyAndValue) {
    load("PORT = 5000\n");
    EXPECT_EQ(value("PORT "), " 5000");
    EXPECT_EQ(store.getInt("PORT", 54321), 54321);
}

TEST_F(PropertiesFile, TrimsTheWholeLineOfBlanksTabsLineEndsAndTheControlCharacterThree) {
    load(" \t\x03 a=1 \x03\t\r\n\tb = 2\x03");
    EXPECT_EQ(value("a"), "1");
    EXPECT_EQ(value("b "), " 2");
}

TEST_F(PropertiesFile, TakesANumberSignAsACommentOnlyAtTheBeginning) {
    load("#a=0\n  #x=1\ny=1 # note\n");
    EXPECT_EQ(value("a"), "(absent)");
    EXPECT_EQ(value("#a"), "(absent)");
    EXPECT_EQ(value("#x"), "(absent)");
    EXPECT_EQ(value("y"), "1 # note");
}

TEST_F(PropertiesFile, SplitsAtTheFirstEqualsSign) {
    load("a==b\n=v\nempty=\nno sign at all\n\n   \n");
    EXPECT_EQ(value("a"), "=b");
    EXPECT_EQ(value(""), "v");
    EXPECT_EQ(value("empty"), "");
    EXPECT_EQ(value("no sign at all"), "(absent)");
}

TEST_F(PropertiesFile, FindsKeysInAnyLetterCaseAndKeepsTheLastValue) {
    load("Port=1\nPORT=2\n");
    EXPECT_EQ(value("port"), "2");
}

TEST_F(PropertiesFile, KeepsKeysOfDifferentCaseApartWhenAskedTo) {
    Properties sensitive(true);
    load(sensitive, "Port=1\nPORT=2\n");
    EXPECT_EQ(sensitive.getString("Port", ""), "1");
    EXPECT_EQ(sensitive.getString("PORT", ""), "2");
    EXPECT_EQ(sensitive.getProperty("port"), nullptr);
}

TEST_F(PropertiesFile, LowersOnlyAsciiLetters) {
    load("\xC3\x84=1\n");  // capital A with diaeresis
    EXPECT_EQ(value("\xC3\x84"), "1");
    EXPECT_EQ(value("\xC3\xA4"), "(absent)");
}

TEST_F(PropertiesFile, EndsAtALineThatIsTooLong) {
    load("a=1\nlong=" + std::string(2000, 'x') + "\nb=2\n");
    EXPECT_EQ(value("a"), "1");
    EXPECT_EQ(value("long"), "(absent)");
    EXPECT_EQ(value("b"), "(absent)");
}

TEST_F(PropertiesFile, TakesALineOfExactly1023Characters) {
    load("k=" + std::string(1021, 'x') + "\nb=2\n");
    EXPECT_EQ(value("k"), std::string(1021, 'x'));
    EXPECT_EQ(value("b"), "2");
    load("l=" + std::string(1022, 'x') + "\nc=3\n");
    EXPECT_EQ(value("l"), "(absent)");
    EXPECT_EQ(value("c"), "(absent)");
}

TEST_F(PropertiesFile, NeedsNoLineEndAfterTheLastLine) {
    load("a=1\nb=2");
    EXPECT_EQ(value("b"), "2");
}

TEST_F(PropertiesFile, AddsASecondFileToTheFirst) {
    load("a=1\nb=2\n");
    load("B=3\nc=4\n");
    EXPECT_EQ(value("a"), "1");
    EXPECT_EQ(value("b"), "3");
    EXPECT_EQ(value("c"), "4");
}

TEST_F(PropertiesFile, ReadsAFileOfManyBlocks) {
    std::string text;
    for (int i = 0; i < 20'000; ++i) {
        text += "key" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    }
    load(text);
    EXPECT_EQ(store.getInt("KEY19999", 0), 19999);
}

TEST_F(PropertiesFile, SaysWhichFileIsMissingAndChangesNothing) {
    store.setInt("a", 1);
    const std::string path = scratch / "missing.conf";
    EXPECT_EQ(test::thrownBy<FileNotFoundException>([&] { store.load(path); }),
              "File not found: " + path);
    EXPECT_EQ(value("a"), "1");
}

TEST_F(PropertiesFile, RefusesAPipeInsteadOfWaitingForIt) {
    const std::string path = scratch / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_THROW(store.load(path), FileNotFoundException);
}

TEST_F(PropertiesFile, CountsADirectoryAsAnEmptyFile) {
    EXPECT_NO_THROW(store.load(scratch.path()));
}

TEST_F(PropertiesFile, CountsADeviceAsAnEmptyFile) {
    EXPECT_NO_THROW(store.load("/dev/null"));
    EXPECT_NO_THROW(store.load("/dev/zero"));
}

TEST_F(PropertiesFile, ReadsIntegersFromTheirDigits) {
    load("a=12abc\nb=abc\nc= -7\nd=true\ne=false\nf=TRUE\ng=\nh=+5\ni=0x10\nj=  9 \n");
    EXPECT_EQ(store.getInt("a", 99), 12);
    EXPECT_EQ(store.getInt("b", 99), 99);
    EXPECT_EQ(store.getInt("c", 99), -7);
    EXPECT_EQ(store.getInt("d", 99), 1);
    EXPECT_EQ(store.getInt("e", 99), 0);
    EXPECT_EQ(store.getInt("f", 99), 99);
    EXPECT_EQ(store.getInt("g", 99), 99);
    EXPECT_EQ(store.getInt("h", 99), 5);
    EXPECT_EQ(store.getInt("i", 99), 0);
    EXPECT_EQ(store.getInt("j", 99), 9);
    EXPECT_EQ(store.getInt("absent", 99), 99);
}

TEST_F(PropertiesFile, KeepsIntegersWithinTheirLimits) {
    load("big=99999999999999999999\nsmall=-99999999999999999999\nover=2147483648\n");
    EXPECT_EQ(store.getInt("big", 0), INT_MAX);
    EXPECT_EQ(store.getInt("small", 0), INT_MIN);
    EXPECT_EQ(store.getInt("over", 0), INT_MAX);
}

TEST_F(PropertiesFile, ReadsFlagsAsNumbers) {
    load("a=true\nb=false\nc=0\nd=2\ne=-1\nf=TRUE\ng=yes\nh=on\ni=\nj=True\n");
    for (const char* key : {"a", "d", "e"}) {
        EXPECT_TRUE(store.getBool(key, false)) << key;
    }
    for (const char* key : {"b", "c"}) {
        EXPECT_FALSE(store.getBool(key, true)) << key;
    }
    for (const char* key : {"f", "g", "h", "i", "j", "absent"}) {
        EXPECT_TRUE(store.getBool(key, true)) << key;
        EXPECT_FALSE(store.getBool(key, false)) << key;
    }
}

TEST(Properties, StoresNumbersAndFlagsAsText) {
    Properties store(false);
    store.setInt("n", -42);
    store.setBool("yes", true);
    store.setBool("no", false);
    EXPECT_STREQ(store.getProperty("N"), "-42");
    EXPECT_STREQ(store.getProperty("yes"), "true");
    EXPECT_STREQ(store.getProperty("no"), "false");
}

TEST(Properties, GivesAnEmptyValueInsteadOfTheDefault) {
    Properties store(false);
    store.setProperty("empty", "");
    EXPECT_EQ(store.getPropertyAsString("empty", "def"), "");
    EXPECT_EQ(store.getString("empty", "def"), "");
    EXPECT_EQ(store.getString("absent", "def"), "def");
}

TEST(Properties, IsEmptyAfterClear) {
    Properties store(true);
    store.setProperty("a", "1");
    store.clear();
    EXPECT_EQ(store.getProperty("a"), nullptr);
}

TEST(CaseInsensitiveOrder, ComparesLowerCaseForms) {
    const less_string_ci less;
    EXPECT_TRUE(less("ABC", "abd"));
    EXPECT_FALSE(less("ABC", "abc"));
    EXPECT_FALSE(less("abc", "ABC"));
    EXPECT_TRUE(less("_", "A"));  // 0x5F lies between upper and lower case
    EXPECT_EQ(corvane::tolower("MiXed \xC3\x84 42"), "mixed \xC3\x84 42");
    EXPECT_EQ(charToLower('Z'), 'z');
    EXPECT_EQ(charToLower('['), '[');
}

}  // namespace
}  // namespace corvane

#include "cvnwinfo/arguments.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "cvnwinfo/errors.h"

namespace corvane::wintool {
namespace {

Arguments parse(std::initializer_list<const char*> words) {
    return parseArguments(std::vector<const char*>(words));
}

std::string failure(std::initializer_list<const char*> words) {
    try {
        parse(words);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "no failure";
}

TEST(Arguments, AskForTheRectangleOfAWindow) {
    const Arguments arguments = parse({"-g", "-n", "Adobe Flash Player"});
    EXPECT_EQ(arguments.action, Action::reportWindow);
    EXPECT_EQ(arguments.title, "Adobe Flash Player");
}

TEST(Arguments, AskForTheSizeOfTheScreen) { EXPECT_EQ(parse({"-a"}).action, Action::reportScreen); }

TEST(Arguments, AskForAPosition) {
    const Arguments arguments = parse({"-n", "T", "-p", "10,20"});
    EXPECT_EQ(arguments.action, Action::placeWindow);
    EXPECT_EQ(arguments.position, (Point{10, 20}));
    EXPECT_FALSE(arguments.size);
}

TEST(Arguments, AskForASize) {
    const Arguments arguments = parse({"-n", "T", "-s", "640,480"});
    EXPECT_EQ(arguments.size, (Size{640, 480}));
    EXPECT_FALSE(arguments.position);
}

TEST(Arguments, AskForAPositionAndASizeInAnyOrder) {
    const Arguments arguments = parse({"-s", "640,480", "-p", "10,20", "-n", "T"});
    EXPECT_EQ(arguments.position, (Point{10, 20}));
    EXPECT_EQ(arguments.size, (Size{640, 480}));
}

TEST(Arguments, MayOnlyNameAWindow) {
    const Arguments arguments = parse({"-n", "T"});
    EXPECT_EQ(arguments.action, Action::placeWindow);
    EXPECT_FALSE(arguments.position);
    EXPECT_FALSE(arguments.size);
}

TEST(Arguments, TakeNegativeCoordinates) {
    EXPECT_EQ(parse({"-n", "T", "-p", "-10,-20"}).position, (Point{-10, -20}));
    EXPECT_EQ(parse({"-n", "T", "-p", "-32768,32767"}).position, (Point{-32768, 32767}));
}

TEST(Arguments, TakeATitleThatLooksLikeAnOption) {
    EXPECT_EQ(parse({"-g", "-n", "-a"}).title, "-a");
    EXPECT_EQ(parse({"-n", "--help"}).title, "--help");
}

TEST(Arguments, AskForHelpAndVersion) {
    EXPECT_EQ(parse({"--help"}).action, Action::showHelp);
    EXPECT_EQ(parse({"--version"}).action, Action::showVersion);
}

TEST(Arguments, MustNameAWindow) {
    EXPECT_EQ(failure({}), "no window given: option -n TITLE is missing");
    EXPECT_EQ(failure({"-g"}), "no window given: option -n TITLE is missing");
    EXPECT_EQ(failure({"-p", "1,2"}), "no window given: option -n TITLE is missing");
    EXPECT_EQ(failure({"-g", "-n", ""}), "the window title is empty");
}

TEST(Arguments, MustGoTogether) {
    EXPECT_EQ(failure({"-a", "-n", "T"}), "option -a stands alone");
    EXPECT_EQ(failure({"-a", "-g"}), "option -a stands alone");
    EXPECT_EQ(failure({"-g", "-n", "T", "-p", "1,2"}), "option -g does not go with -p and -s");
    EXPECT_EQ(failure({"-g", "-n", "T", "-s", "1,2"}), "option -g does not go with -p and -s");
}

TEST(Arguments, AreGivenOnce) {
    EXPECT_EQ(failure({"-n", "T", "-n", "U"}), "option -n is given twice");
    EXPECT_EQ(failure({"-n", "T", "-p", "1,2", "-p", "1,2"}), "option -p is given twice");
}

TEST(Arguments, NeedTheirValue) {
    EXPECT_EQ(failure({"-n"}), "option -n needs a value");
    EXPECT_EQ(failure({"-n", "T", "-s"}), "option -s needs a value");
}

TEST(Arguments, AreKnownOnes) {
    EXPECT_EQ(failure({"-n", "T", "-x"}), "unknown option '-x'");
    EXPECT_EQ(failure({"-n", "T", "--help"}), "unknown option '--help'");
    EXPECT_EQ(failure({"title"}), "unknown option 'title'");
}

TEST(Arguments, HoldTwoNumbers) {
    for (const char* text :
         {"", "1", ",", "1,", ",2", "1,2,3", "1;2", " 1,2", "1,2 ", "1, 2", "+1,2", "0x1,2", "a,2",
          "1.5,2", "32768,0", "0,-32769", "99999999999999999999,1"}) {
        EXPECT_EQ(failure({"-n", "T", "-p", text}),
                  "bad position '" + std::string(text) + "': expected X,Y of -32768 to 32767");
    }
}

TEST(Arguments, HoldSizesOfAtLeastOnePixel) {
    for (const char* text : {"0,1", "1,0", "-1,-1", "32768,1", "640"}) {
        EXPECT_EQ(failure({"-n", "T", "-s", text}),
                  "bad size '" + std::string(text) + "': expected WIDTH,HEIGHT of 1 to 32767");
    }
    EXPECT_EQ(parse({"-n", "T", "-s", "1,32767"}).size, (Size{1, 32767}));
}

}  // namespace
}  // namespace corvane::wintool

#include "corvanectl/plain_words.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "corvanectl/invocation.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

std::string wordsFor(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "corvanectl");
    try {
        parseInvocation(static_cast<int>(arguments.size()), arguments.data());
    } catch (const std::exception& e) {
        return plainWords(e);
    }
    return "";
}

TEST(PlainWords, NamesNoClassesForAWrongCommandLine) {
    EXPECT_EQ(wordsFor({"--nothing", "userDir"}), "Unrecognized option '--nothing'");
    EXPECT_EQ(wordsFor({"--port"}), "no value for non bool option '--port'");
    EXPECT_EQ(wordsFor({"--port", "-x", "userDir"}),
              "value '-x' for option '--port' is option too");
}

TEST(PlainWords, LeavesMessagesForPeopleAlone) {
    EXPECT_EQ(plainWords(Exception("cannot connect to x: Broken pipe")),
              "cannot connect to x: Broken pipe");
}

TEST(PlainWords, NamesNoClassesOfTheLanguage) {
    EXPECT_EQ(plainWords(std::bad_alloc()), "not enough memory");
    EXPECT_EQ(plainWords(std::length_error("basic_string::append")), "not enough memory");
    EXPECT_EQ(plainWords(std::runtime_error("std::thing")), "an unexpected failure");
}

}  // namespace
}  // namespace corvane::ctl

// What tests of the window tool for macOS share: a world of their own, and the proof after each
// test that every object was released, once, and not used afterwards.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/macos/framework_stand_ins.h"
#include "cvnwinfo/macos/objects.h"

namespace corvane::wintool {

class OnStandIns : public testing::Test {
  protected:
    OnStandIns() { standins::reset(); }
    void TearDown() override {
        EXPECT_THAT(standins::unreleased(), testing::IsEmpty());
        EXPECT_THAT(standins::misuses, testing::IsEmpty());
    }

    // The message of the WindowError that `work` ends with.
    template <typename Work>
    static std::string failure(Work work) {
        try {
            work();
        } catch (const WindowError& error) {
            return error.what();
        }
        return "no failure";
    }
};

}  // namespace corvane::wintool

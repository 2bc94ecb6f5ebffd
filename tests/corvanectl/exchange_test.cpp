#include "corvanectl/exchange.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/resource_limit.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

TEST(Exchange, SaysWhyThereIsNoSocketForIt) {
    static_cast<void>(test::thrownBy<Exception>([] { throw Exception(""); }));
    const test::DescriptorLimit none(test::nextDescriptor());
    EXPECT_EQ(test::thrownBy<Exception>([] {
                  exchange({"127.0.0.1", 1, 1}, "x");
              }),
              "cannot connect to 127.0.0.1:1: " + std::string(std::strerror(EMFILE)));
}

}  // namespace
}  // namespace corvane::ctl

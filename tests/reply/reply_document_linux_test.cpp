// What a reply leaves behind. Linux only: it looks at /proc.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "reply/reply_document.h"
#include "support/process_status.h"
#include "support/sanitized.h"

namespace corvane {
namespace {

TEST(ReplyDocument, KeepsNoMemoryOfALargeReply) {
    if (test::isSanitized) {
        GTEST_SKIP() << "sanitizers keep what is freed for a while";
    }
    constexpr std::size_t details = 64;
    constexpr std::size_t large = std::size_t{1024} * 1024;
    constexpr long little = 8L * 1024;  // KiB
    const CorvaneDetail detail("value", std::string(large, 'x'), false);
    ReplyDocument reply;
    const long before = test::residentMemoryOf(::getpid());
    {
        const ReplyDocument::ClearAtEnd cleared(reply);
        reply.begin("listDir", true, std::nullopt, "");
        for (std::size_t i = 0; i < details; ++i) {
            reply.append(detail);
        }
        EXPECT_EQ(reply.finish().size(), 1U);
        EXPECT_GT(test::residentMemoryOf(::getpid()), before + little);
    }
    EXPECT_LT(test::residentMemoryOf(::getpid()), before + little);
}

}  // namespace
}  // namespace corvane

// The macOS opener, with the program that it runs linked to stand-ins of the framework functions
// (tests/cvnopen).
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "launch/opener.h"
#include "support/child_reports.h"
#include "support/environment.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"
#include "support/working_directory.h"
#include "text/exception.h"

namespace corvane {
namespace {

using test::thrownBy;
using testing::ElementsAre;

class MacOpener : public testing::Test {
  protected:
    MacOpener() {
        scratch.directory("app");
        EXPECT_EQ(::symlink(CVNOPEN_REPORT, (scratch / "app/cvnopen").c_str()), 0);
    }
    void installScript(const std::string& text) {
        EXPECT_EQ(::unlink((scratch / "app/cvnopen").c_str()), 0);
        scratch.program("app/cvnopen", "#!/bin/sh\n" + text);
    }

    test::ScratchDirectory scratch;
    test::ProgramArguments arguments{{scratch / "app/corvane"}};
    test::ChildReports reports{scratch};
};

TEST_F(MacOpener, HasAnAddressOpenedByTheProgramBesideTheServer) {
    openAddress("http://server/Caf\xC3\xA9?a='b'&c=%20");
    EXPECT_THAT(reports.next(),
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, "
                            "'http://server/Caf\xC3\xA9?a='b'&c=%20', 31, 134217984, null)",
                            "LSOpenCFURLRef(url, null)", "CFRelease(url)"));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD) << "it is not left behind";
}

TEST_F(MacOpener, ReportsTheStatusOfLaunchServices) {
    for (const int status : {-10814, 1, 256}) {  // only the last 8 bits would fit an exit status
        const test::EnvironmentVariable answer("CVNOPEN_STATUS", std::to_string(status));
        EXPECT_EQ(thrownBy<IOException>([] { openAddress("odd://x"); }),
                  test::withCode("LSOpenCFURLRef error for file 'odd://x'", status));
        try {
            openAddress("odd://x");
        } catch (const IOException& e) {
            EXPECT_EQ(e.code, status);
        }
    }
}

TEST_F(MacOpener, RefusesATextThatIsNoAddress) {
    const test::EnvironmentVariable answer("CVNOPEN_NO_URL", "1");
    try {
        openAddress("http:/ /%");
        FAIL() << "nothing thrown";
    } catch (const IOException& e) {
        FAIL() << "a text that is no URL has no status, but got " << e.what();
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Cannot create CFURLRef for 'http:/ /%'");
    }
}

TEST_F(MacOpener, ReportsAProgramThatIsOfNoUse) {
    const auto message = [] { return thrownBy<IOException>([] { openAddress("http://x/"); }); };
    const std::string text = "LSOpenCFURLRef error for file 'http://x/'";
    installScript("kill -9 $$\n");
    EXPECT_EQ(message(), text + " (137)");
    installScript("exit 2\n");
    EXPECT_EQ(message(), text + " (2)");
    installScript("echo nonsense\n");
    EXPECT_EQ(message(), text + " (255)");
    installScript("exit 0\n");
    EXPECT_EQ(message(), text + " (255)");
    EXPECT_EQ(::unlink((scratch / "app/cvnopen").c_str()), 0);
    EXPECT_EQ(message(), text + " (255)");
}

TEST_F(MacOpener, HasADocumentOpenedWithoutWaiting) {
    openDocument("-a b.pdf");
    EXPECT_THAT(reports.next(), ElementsAre("FSPathMakeRef('-a b.pdf', zeroed ref, null)",
                                            "LSOpenFSRef(ref, null)"));
    ::wait(nullptr);
}

TEST_F(MacOpener, IgnoresAFailureWithADocument) {
    EXPECT_EQ(::unlink((scratch / "app/cvnopen").c_str()), 0);
    EXPECT_NO_THROW(openDocument("a.pdf"));
    ::wait(nullptr);
}

}  // namespace
}  // namespace corvane

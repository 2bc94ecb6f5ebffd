// A log file of the program's kind, with lines in log4cpp's simple layout.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>

#include <log4cpp/Category.hh>
#include <log4cpp/SimpleLayout.hh>
#include <memory>
#include <string>

#include "log/log.h"
#include "log/log_file.h"
#include "support/scratch_directory.h"

namespace corvane::test {

class LogFileTest : public testing::Test {
  protected:
    LogFileTest() { open(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600)); }
    ~LogFileTest() override { close(); }

    /// Logs to `fd`, which it takes over, from now on.
    void open(int fd) {
        close();
        auto appender = std::make_unique<LogFile>("test", fd);
        appender->setLayout(new log4cpp::SimpleLayout());  // the appender owns it
        log4cpp::Category::getRoot().addAppender(appender.release());
    }
    static void close() { log4cpp::Category::getRoot().removeAllAppenders(); }

    std::string written() const { return readFile(path); }

    ScratchDirectory scratch;
    std::string path = scratch / "test.log";
    log4cpp::Category& log = log4cpp::Category::getInstance("test");
};

}  // namespace corvane::test

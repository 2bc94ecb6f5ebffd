// A log line: disabled, written at once, and collected with the other lines of its request.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <log4cpp/Category.hh>
#include <log4cpp/PatternLayout.hh>
#include <memory>

#include "log/log.h"
#include "log/log_file.h"

namespace corvane {
namespace {

constexpr int LINES_OF_A_REQUEST = 3;

/// Logs into a file without a name, in the server's default layout.
class LogToFile {
  public:
    explicit LogToFile(log4cpp::Priority::Value priority) {
        auto appender = std::make_unique<LogFile>("file", ::dup(::fileno(file_.get())));
        auto layout = std::make_unique<log4cpp::PatternLayout>();
        layout->setConversionPattern("%d [%p,%c] %m%n");
        appender->setLayout(layout.release());
        log4cpp::Category& root = log4cpp::Category::getRoot();
        root.removeAllAppenders();
        LogLevel::set(priority);
        root.addAppender(appender.release());
    }
    LogToFile(const LogToFile&) = delete;
    LogToFile& operator=(const LogToFile&) = delete;
    ~LogToFile() { log4cpp::Category::getRoot().removeAllAppenders(); }

  private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{std::tmpfile(), std::fclose};
};

log4cpp::Category& category() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.bench");
    return log;
}

void logLines(int count) {
    for (int i = 0; i < count; ++i) {
        category().debug("Client %s: cmd '%s'", "127.0.0.1:54321", "currentDir");
    }
}

void disabledLine(benchmark::State& state) {
    const LogToFile log(log4cpp::Priority::NOTICE);
    for ([[maybe_unused]] auto _ : state) {
        logLines(1);
    }
}

void linesAtOnce(benchmark::State& state) {
    const LogToFile log(log4cpp::Priority::DEBUG);
    for ([[maybe_unused]] auto _ : state) {
        logLines(LINES_OF_A_REQUEST);
    }
}

void linesInABatch(benchmark::State& state) {
    const LogToFile log(log4cpp::Priority::DEBUG);
    for ([[maybe_unused]] auto _ : state) {
        const LogBatch batch;
        logLines(LINES_OF_A_REQUEST);
    }
}

BENCHMARK(disabledLine);
BENCHMARK(linesAtOnce);
BENCHMARK(linesInABatch);

}  // namespace
}  // namespace corvane

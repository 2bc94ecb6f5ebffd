// Makes the whole program testable: the stand-ins answer what the environment says, and their calls
// are told as a report of a child (support/child_reports.h).
#include <cstdlib>
#include <fstream>

#include "cvnopen/framework_stand_ins.h"

namespace {

struct Report {
    Report() {
        if (const char* status = std::getenv("CVNOPEN_STATUS"); status != nullptr) {
            corvane::standins::answers.openUrlStatus = std::atoi(status);
        }
        corvane::standins::answers.urlIsValid = std::getenv("CVNOPEN_NO_URL") == nullptr;
    }
    ~Report() {
        std::ofstream report(std::getenv("CHILD_REPORT"));
        for (const std::string& call : corvane::standins::calls) {
            report << call << '\n';
        }
        report << "end\n";
    }
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    Report(Report&&) = delete;
    Report& operator=(Report&&) = delete;
};

const Report report;

}  // namespace

#include "app/instance.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <log4cpp/Category.hh>

#include "text/strings.h"

namespace corvane {

PidFile pidFile;

bool PidFile::create(const char* /*path*/) {
    release();
    return true;
}

int PidFile::release() {
    if (path_.empty()) {
        return 0;
    }
    const int result = std::remove(path_.c_str()) == 0 ? 0 : errno;
    path_.clear();
    return result;
}

bool unixProcessExists(int pid) { return ::getpgid(pid) != -1; }

void checkInstance(const std::string& name, int port) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.checkInstance");
    if (!pidFile.create(format("%s%d", name.c_str(), port).c_str())) {
        log.info("Another instance already exists. Exit.");
        std::exit(1);
    }
}

}  // namespace corvane

#include "corvanectl/same_file.h"

#include <sys/stat.h>

#include "corvanectl/server_path.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

bool isThisMachine(const Endpoint& server) {
    return server.host == "localhost" || startsWith(server.host, "127.");
}

}  // namespace

Sameness compareFiles(const std::string& a, const std::string& b, const Endpoint& server) {
    const std::string nameA = normalised(a);
    const std::string nameB = normalised(b);
    if (nameA == nameB) {
        return Sameness::Same;
    }
    struct stat first {};
    struct stat second {};
    if (isThisMachine(server) && ::stat(a.c_str(), &first) == 0 &&
        ::stat(b.c_str(), &second) == 0) {
        const bool isOne = first.st_dev == second.st_dev && first.st_ino == second.st_ino;
        return isOne ? Sameness::Same : Sameness::Different;
    }
    return equalButForCase(nameA, nameB) ? Sameness::Same : Sameness::Unknown;
}

}  // namespace corvane::ctl

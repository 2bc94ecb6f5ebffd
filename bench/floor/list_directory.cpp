#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/common/net.h"
#include "bench/floor/handlers.h"

namespace corvane::bench {

namespace {

struct Entry {
    std::string key;
    std::string name;
    bool isDirectory;
    bool isReadOnly;
};

std::string sortKey(std::string_view name) {
    std::string key(name);
    for (char& c : key) {
        c = static_cast<char>(c | 0x20);
    }
    return key;
}

std::vector<Entry> scan(const std::string& path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), ::closedir);
    if (!directory) {
        throwErrno("opendir");
    }
    const int descriptor = ::dirfd(directory.get());
    std::vector<Entry> entries;
    while (const dirent* found = ::readdir(directory.get())) {
        const std::string_view name = found->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        const bool isDirectory = found->d_type == DT_DIR;
        const bool isReadOnly =
            !isDirectory && ::faccessat(descriptor, found->d_name, W_OK, 0) != 0;
        entries.push_back({sortKey(name), std::string(name), isDirectory, isReadOnly});
    }
    return entries;
}

void appendEntry(std::string& reply, const Entry& entry) {
    if (entry.isDirectory) {
        reply.append(R"(<Detail id="directory" extra="d" Value=")").append(entry.name);
        reply.append(R"(/" />)");
        return;
    }
    reply.append(R"(<Detail id="file" extra=")").append(entry.isReadOnly ? "r" : "");
    reply.append(R"(" size="0" Value=")").append(entry.name).append(R"(" />)");
}

std::string replyText(const std::string& path, const std::vector<Entry>& entries) {
    std::string reply;
    reply.reserve(entries.size() * 80 + 200);
    reply.append(
        R"(<CorvaneMsg><Header id="info" Type="RESULT" Action="listDir" Result="SUCCESS")");
    reply.append(R"( hint=")").append(path).append(R"(">)");
    for (const Entry& entry : entries) {
        appendEntry(reply, entry);
    }
    reply.append("</Header></CorvaneMsg>");
    reply += '\0';
    return reply;
}

}  // namespace

Handler listDirectory() {
    return [](int socket, std::string_view request) {
        const std::string path(parameter(request));
        std::vector<Entry> entries = scan(path);
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
            return a.isDirectory != b.isDirectory ? a.isDirectory : a.key < b.key;
        });
        sendAll(socket, replyText(path, entries));
    };
}

}  // namespace corvane::bench

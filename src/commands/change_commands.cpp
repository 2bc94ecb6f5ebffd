// Commands that change the file system: write, makeDir, delete, copy, rename.
#include <array>
#include <cerrno>
#include <cstdio>
#include <log4cpp/Category.hh>

#include "commands/command_file.h"
#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "text/strconv.h"

namespace corvane {
namespace {

using log4cpp::Category;

constexpr std::size_t writeBlock = std::size_t{256} * 1024;

std::string cleanPath(const std::string& line) {
    return correctPathInvalidChars(correctPath(line));
}

// Copies the rest of the request into the file; stops at the first block that is not taken whole.
// Returns the number of bytes written.
std::size_t copyRest(std::istream& params, FILE* file) {
    static std::array<char, writeBlock> block;
    std::size_t total = 0;
    while (true) {
        params.read(block.data(), block.size());
        const auto count = static_cast<std::size_t>(params.gcount());
        const std::size_t written = count == 0 ? 0 : std::fwrite(block.data(), 1, count, file);
        total += written;
        if (count == 0 || written < count) {
            return total;
        }
    }
}

void removePartialFile(const std::string& name, const CommandLog& log) {
    try {
        removeFile(name);
    } catch (const Exception& e) {
        log.warn(": clenup file '%s' ERROR: '%s'", name.c_str(), e.what());
    }
}

}  // namespace

void CorvaneServer::cmdWrite(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.write");
    const CommandLog log(category, sock, cmd);
    const std::string name = cleanPath(getline(params));
    const std::string localName = strconv::utf82acs(name);
    CommandFile file(localName, log);
    const auto write = [&] {
        if (!file.openForWriting()) {
            const int error = errno;
            log.error(": fail (%d) to open file '%s'", error, name.c_str());
            sendResult(sock, cmd, false, error);
            return;
        }
        log.debug(": open file '%s'", name.c_str());
        const bool removable = file.isRegular();
        const auto written = static_cast<long>(copyRest(params, file.get()));
        static_cast<void>(std::fflush(file.get()));  // ferror() tells
        const int indicator = std::ferror(file.get());
        // A file system may report only at the close that the data did not reach the disk.
        const int closed = file.close();
        const int error = indicator != 0 ? indicator : closed;
        if (error == 0) {
            log.debug(": write file '%s' written bytes %ld OK", name.c_str(), written);
            sendResult(sock, cmd, true, "");
            return;
        }
        log.error(": fail (%d) to write file '%s' at byte %ld", error, name.c_str(), written);
        if (removable) {
            removePartialFile(name, log);
        }
        sendResult(sock, cmd, false, error);
    };
    orFailed(sock, cmd, "", write, [&log](const Exception& e) { log.failure(e); });
}

void CorvaneServer::cmdMakeDir(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.makeDir");
    const CommandLog log(category, sock, cmd);
    const std::string path = correctPath(getline(params));
    orFailed(
        sock, cmd, path,
        [&] {
            const bool created = makeDirectory(path);
            log.debug(": directory '%s' created (%d)", path.c_str(), created ? 1 : 0);
            sendResult(sock, cmd, true, path);
        },
        [&](const Exception& e) {
            log.error(": directory '%s' ERROR: '%s'", path.c_str(), e.what());
        });
}

void CorvaneServer::cmdDelete(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.delete");
    const CommandLog log(category, sock, cmd);
    const std::string path = correctPath(getline(params));
    orFailed(
        sock, cmd, "",
        [&] {
            if (isDirectory(path)) {
                removeDirectory(path, true);
            } else {
                removeFile(path);
            }
            sendResult(sock, cmd, true, "");
        },
        [&](const Exception& e) { log.error(": file '%s' ERROR: '%s'", path.c_str(), e.what()); });
}

void CorvaneServer::cmdCopy(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.copy");
    const CommandLog log(category, sock, cmd);
    const std::string source = cleanPath(getline(params));
    const std::string destination = cleanPath(getline(params));
    CopyOptions options;
    options.recursive = getline(params) != "false";
    options.addExts(true, getline(params));
    options.addExts(false, getline(params));
    orFailed(
        sock, cmd, "",
        [&] {
            if (isDirectory(source)) {
                copyDirectory(source, destination, &options);
            } else {
                copyFile(source, destination);
            }
            sendResult(sock, cmd, true, "");
        },
        [&log](const Exception& e) { log.failure(e); });
}

void CorvaneServer::cmdRename(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.rename");
    const CommandLog log(category, sock, cmd);
    const std::string source = cleanPath(getline(params));
    const std::string destination = cleanPath(getline(params));
    orFailed(
        sock, cmd, "",
        [&] {
            renameFile(source, destination);
            sendResult(sock, cmd, true, "");
        },
        [&log](const Exception& e) { log.failure(e); });
}

}  // namespace corvane

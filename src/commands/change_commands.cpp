// Commands that change the file system: write, makeDir, delete, copy, rename.
#include <array>
#include <cstddef>
#include <istream>
#include <streambuf>

#include "commands/command_file.h"
#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "text/memory_stream.h"
#include "text/strconv.h"

namespace corvane {
namespace {

std::string cleanPath(const std::string& line) {
    return correctPathInvalidChars(correctPath(line));
}

// What ferror(3) tells of a stream that could not be written: the reply has always shown it.
constexpr int writeFailed = 1;

// Writes the rest of the request: in one piece when it lies in memory, as all do that the server
// has received. Stops at the first byte that is not taken and returns whether there was none.
bool writeRest(std::istream& data, CommandFile& file) {
    if (auto* const memory = dynamic_cast<MemoryStream*>(&data)) {
        return file.write(memory->takeRest());
    }
    std::array<char, std::size_t{64} * 1024>
        block;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    while (true) {
        const std::streamsize count =
            data.rdbuf()->sgetn(block.data(), static_cast<std::streamsize>(block.size()));
        if (count <= 0) {
            return true;
        }
        if (!file.write({block.data(), static_cast<std::size_t>(count)})) {
            return false;
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

// Creates or replaces the file with the rest of the request. Returns 0, or the number that the
// reply shows.
int writeFile(const std::string& name, std::istream& data, const CommandLog& log) {
    const std::string localName = strconv::utf82acs(name);
    CommandFile file(localName, log);
    if (const int error = file.openForWriting(); error != 0) {
        log.error(": fail (%d) to open file '%s'", error, name.c_str());
        return error;
    }
    log.debug(": open file '%s'", name.c_str());
    const bool removable = file.isRegular();
    const bool whole = writeRest(data, file) && file.finishWriting();
    const auto written = static_cast<long>(file.written());
    // A file system may report only at the close that the data did not reach the disk.
    const int closed = file.close();
    const int error = whole ? closed : writeFailed;
    if (error == 0) {
        log.debug(": write file '%s' written bytes %ld OK", name.c_str(), written);
        return 0;
    }
    log.error(": fail (%d) to write file '%s' at byte %ld", error, name.c_str(), written);
    if (removable) {
        removePartialFile(name, log);
    }
    return error;
}

}  // namespace

void CorvaneServer::cmdWrite(int sock, const std::string& cmd, std::istream& params) {
    const std::string name = cleanPath(getline(params));
    orFailed(sock, cmd, [&] {
        if (const int error = writeFile(name, params, logOf(sock, cmd)); error != 0) {
            sendResult(sock, cmd, false, error);
        } else {
            sendResult(sock, cmd, true, "");
        }
    });
}

void CorvaneServer::cmdMakeDir(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
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
        [&](const Exception& e) {
            logOf(sock, cmd).error(": file '%s' ERROR: '%s'", path.c_str(), e.what());
        });
}

void CorvaneServer::cmdCopy(int sock, const std::string& cmd, std::istream& params) {
    const std::string source = cleanPath(getline(params));
    const std::string destination = cleanPath(getline(params));
    CopyOptions copyOptions;
    copyOptions.recursive = getline(params) != "false";
    copyOptions.addExts(true, getline(params));
    copyOptions.addExts(false, getline(params));
    orFailed(sock, cmd, [&] {
        if (isDirectory(source)) {
            copyDirectory(source, destination, &copyOptions);
        } else {
            copyFile(source, destination);
        }
        sendResult(sock, cmd, true, "");
    });
}

void CorvaneServer::cmdRename(int sock, const std::string& cmd, std::istream& params) {
    const std::string source = cleanPath(getline(params));
    const std::string destination = cleanPath(getline(params));
    orFailed(sock, cmd, [&] {
        renameFile(source, destination);
        sendResult(sock, cmd, true, "");
    });
}

}  // namespace corvane

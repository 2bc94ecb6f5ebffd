// Commands that change the file system: write, makeDir, delete, copy, rename.
#include <cstddef>
#include <cstdio>
#include <istream>
#include <ostream>
#include <streambuf>

#include "commands/command_file.h"
#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "text/strconv.h"

namespace corvane {
namespace {

std::string cleanPath(const std::string& line) {
    return correctPathInvalidChars(correctPath(line));
}

// Hands what is written to it on to a file. With libstdc++ the rest of a request, which lies in
// memory, arrives in one piece and so reaches the file without being copied into a buffer of ours
// first.
class FileSink : public std::streambuf {
  public:
    explicit FileSink(FILE* file) : file_(file) {}

    std::size_t written() const { return written_; }

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        const std::size_t taken = std::fwrite(bytes, 1, static_cast<std::size_t>(count), file_);
        written_ += taken;
        return static_cast<std::streamsize>(taken);
    }

    int_type overflow(int_type c) override {
        const char byte = traits_type::to_char_type(c);
        return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
    }

  private:
    FILE* file_;
    std::size_t written_ = 0;
};

// Copies the rest of the request into the file and stops at the first byte that is not taken.
// Returns the number of bytes written.
std::size_t copyRest(std::istream& data, FILE* file) {
    FileSink sink(file);
    std::ostream(&sink) << data.rdbuf();
    return sink.written();
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
    const auto written = static_cast<long>(copyRest(data, file.stream()));
    static_cast<void>(std::fflush(file.stream()));  // ferror() tells
    const int indicator = std::ferror(file.stream());
    // A file system may report only at the close that the data did not reach the disk.
    const int closed = file.close();
    const int error = indicator != 0 ? indicator : closed;
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

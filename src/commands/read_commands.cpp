// Commands that read the file system: a byte, a text, a directory.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <new>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "commands/command_file.h"
#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/file_info.h"
#include "fileutil/paths.h"
#include "platform/io.h"
#include "platform/waiting.h"
#include "reply/file_details.h"
#include "reply/xml_escape.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

// The memory of a text up to this size is used again for the next one.
constexpr std::size_t keptText = std::size_t{256} * 1024;
// An entry takes about 500 bytes until its reply is sent.
constexpr std::size_t manyEntries = 500;
constexpr std::size_t blockSize = std::size_t{128} * 1024;

void openToRead(CommandFile& file, const std::string& name, const CommandLog& log) {
    if (const int error = file.openForReading(); error != 0) {
        throw IOException(format("cannot open file '%s' for read", name.c_str()), error);
    }
    log.debug(": open file '%s'", name.c_str());
}

int offsetOf(const std::string& text) {
    return static_cast<int>(
        std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

// What ferror(3) tells of a stream that could not be read: the log has always shown it.
constexpr int readFailed = 1;

int byteAt(const CommandFile& file, int offset, const std::string& name) {
    if (::lseek(file.descriptor(), offset, SEEK_SET) == -1) {
        const int error = errno;
        throw IOException(
            format("cannot move to offset %d on file '%s' (returns -1)", offset, name.c_str()),
            error);
    }
    char byte = 0;
    switch (readSome(file.descriptor(), std::span(&byte, 1))) {
        case 1:
            return static_cast<unsigned char>(byte);
        case 0:
            throw IOException(format("cannot read byte at offset %d on file '%s' due to EOF",
                                     offset, name.c_str()),
                              0);
        default:
            throw IOException(format("cannot read byte at offset %d on file '%s' (fread returns 0)",
                                     offset, name.c_str()),
                              readFailed);
    }
}

// Reads the rest of a file, escaped, into `text`, unless the program has to stop. Returns the
// number of bytes read.
std::size_t readEscaped(const CommandFile& file, const std::string& name, std::string& text) {
    std::size_t bytesRead = 0;
    std::array<char, blockSize> block;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    try {
        // Some room for entities, so that ordinary text never makes the string grow.
        text.clear();
        text.reserve(file.size() + file.size() / 16);
        while (true) {
            // The only block of a short text costs no look at the signals.
            const bool stopped = bytesRead != 0 && interrupted();
            const ssize_t count = stopped ? -1 : readSome(file.descriptor(), block);
            if (count == -1) {
                throw IOException(format("read error on file '%s'", name.c_str()), readFailed);
            }
            const std::string_view bytes(block.data(), static_cast<std::size_t>(count));
            appendEscaped(bytes, text);
            bytesRead += bytes.size();
            const bool isWhole = bytes.size() < block.size() && bytesRead == file.size();
            if (bytes.empty() || isWhole) {
                return bytesRead;
            }
        }
    } catch (const std::bad_alloc&) {
        throw IOException(format("file '%s' is too large to read", name.c_str()), ENOMEM);
    } catch (const std::length_error&) {
        throw IOException(format("file '%s' is too large to read", name.c_str()), ENOMEM);
    }
}

}  // namespace

void CorvaneServer::cmdReadByte(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    const std::string name = strconv::utf82acs(getline(params));
    const int offset = offsetOf(getline(params));
    log.debug(": fname '%s' offset %d", name.c_str(), offset);
    CommandFile file(name, log);
    orFailed(sock, cmd, [&] {
        openToRead(file, name, log);
        const CorvaneDetail detail("value", toString(byteAt(file, offset, name)), false);
        sendResult(sock, cmd, true, std::span(&detail, 1), "");
    });
}

void CorvaneServer::cmdReadText(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    const std::string name = strconv::utf82acs(getline(params));
    log.debug(": fname '%s'", name.c_str());
    CommandFile file(name, log);
    orFailed(sock, cmd, [&] {
        openToRead(file, name, log);
        CorvaneDetail detail("text", std::move(text_), true);
        const std::size_t bytesRead = readEscaped(file, name, detail.value);
        log.debug(": read %ld bytes from file '%s'", static_cast<long>(bytesRead), name.c_str());
        sendResult(sock, cmd, true, std::span(&detail, 1), "");
        if (detail.value.capacity() <= keptText) {
            text_ = std::move(detail.value);
        }
    });
}

void CorvaneServer::cmdListDir(int sock, const std::string& cmd, std::istream& params) {
    const std::string path = correctDirectoryPath(getline(params));
    logOf(sock, cmd).debug(": dir '%s'", path.c_str());
    orFailed(sock, cmd, [&] {
        std::vector<FileInfo> entries = scanDirectory(path);
        if (entries.size() > manyEntries) {
            expectFreedMemory();
        }
        sendResult(sock, cmd, true, files2details(std::move(entries)), path);
    });
}

}  // namespace corvane

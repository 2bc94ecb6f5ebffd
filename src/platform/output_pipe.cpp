#include "platform/output_pipe.h"

#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/io.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t readChunk = 4096;

FileDesc aboveStandard(int fd) {
    FileDesc moved(::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (moved == -1) {
        throw IOException("pipe() fail", errno);
    }
    return moved;
}

// Takes one chunk; false when there is none for now. At the end `atEnd` is set.
bool readChunkInto(int fd, std::string& text, bool& atEnd) {
    std::array<char, readChunk> chunk{};
    const ssize_t count = readSome(fd, chunk);
    if (count == -1 && errno != EAGAIN) {
        throw IOException("reading pipe fail", errno);
    }
    atEnd = count == 0;
    if (count <= 0) {
        return false;
    }
    text.append(chunk.data(), static_cast<std::size_t>(count));
    return true;
}

}  // namespace

bool readAvailable(int fd, std::string& text) {
    bool atEnd = false;
    while (readChunkInto(fd, text, atEnd)) {
    }
    return atEnd;
}

OutputPipe::OutputPipe() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        throw IOException("pipe() fail", errno);
    }
    const std::array<FileDesc, 2> low{FileDesc(ends[0]), FileDesc(ends[1])};
    readEnd_ = aboveStandard(low[0]);
    writeEnd_ = aboveStandard(low[1]);
    if (readEnd_ >= FD_SETSIZE) {
        throw IOException("pipe() fail", EMFILE);  // it could not be waited for
    }
    ::fcntl(readEnd_, F_SETFL, O_NONBLOCK);
}

void OutputPipe::drain() {
    bool atEnd = false;
    while (text_.size() <= mostOutput && readChunkInto(readEnd_, text_, atEnd)) {
    }
    if (text_.size() > mostOutput) {
        throw Exception(format("Program has written more than %zu bytes", mostOutput));
    }
    if (atEnd) {
        readEnd_.close();
    }
}

void OutputPipe::drainToEnd(const Deadline& deadline) {
    while (!atEnd()) {
        drain();
        if (!atEnd() && (interrupted() || !waitForSocket(readEnd_, Direction::Read, deadline))) {
            return;
        }
    }
}

}  // namespace corvane

#include "launch/movie_page.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "launch/movie_size.h"
#include "platform/file_desc.h"
#include "platform/io.h"
#include "platform/system.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::string_view suffix = ".html";

constexpr const char* htmlTemplate =
    "<html><head><title> - </title></head><body><embed src=\"%s\" quality=high "
    "pluginspage=\"http://www.macromedia.com/shockwave/download/"
    "index.cgi?P1_Prod_Version=ShockwaveFlash\" type=\"application/x-shockwave-flash\" "
    "width=\"%d\" height=\"%d\" salign=\"tl\" menu=\"0\"></embed></body></html>";

}  // namespace

std::string convertSWF(const char* swfPath) {
    const MovieSize size = readSWFSize(swfPath);
    const std::string page = format(htmlTemplate, swfPath, size.width, size.height);
    std::string path = std::string(platform::temporaryNamePattern).append(suffix);
    // A new file for the owner only: nobody can plant a link under its name.
    FileDesc file(::mkstemps(path.data(), static_cast<int>(suffix.size())));
    if (file == -1) {
        const int error = errno;
        throw IOException(format("cannot create page '%s'", path.c_str()), error);
    }
    if (!writeAll(file, page) || file.close() != 0) {
        const int error = errno;
        ::unlink(path.c_str());
        throw IOException(format("cannot write page '%s'", path.c_str()), error);
    }
    return path;
}

}  // namespace corvane

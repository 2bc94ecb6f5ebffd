#include "launch/launcher.h"

#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "launch/movie_page.h"
#include "launch/opener.h"
#include "platform/process.h"
#include "text/strings.h"

namespace corvane {

std::string getPlatformExecPath(const std::string& path) {
    return endsWith(path, ".exe") ? path.substr(0, path.rfind('.')) + "_" + OS_MARK : path;
}

int shellexecute(const char* target) {
    std::string opened = target;
    if (opened.find(".swf") != std::string::npos) {
        opened = convertSWF(opened.c_str());
    }
    if (opened.find(":/") != std::string::npos) {
        openAddress(opened);
        return 0;
    }
    if (!getExtension(opened).empty()) {
        openDocument(opened);
        return 0;
    }
    return createProcess(opened) == 0 ? -1 : 0;
}

pid_t createProcess(const std::string& path, const std::vector<std::string>& args) {
    std::vector<std::string> arguments{path};
    arguments.insert(arguments.end(), args.begin(), args.end());
    return startProgram(arguments, StandardStreams::Closed);
}

std::string getAppForExtension(const std::string& extension) {
    const std::string key = "app." + extension;
    const std::string marked = props.getPropertyAsString(key + "." + OS_MARK, "");
    return resolveApp(marked.empty() ? props.getPropertyAsString(key, "") : marked);
}

std::string resolveApp(const std::string& app) { return app; }

}  // namespace corvane

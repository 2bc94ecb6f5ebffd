#include "corvanectl/replace.h"

#include <algorithm>
#include <iostream>
#include <random>

#include "corvanectl/exit_status.h"
#include "corvanectl/same_file.h"
#include "corvanectl/server_path.h"
#include "corvanectl/session.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

std::string nameBeside(const std::string& target) {
    std::random_device random;
    return directoryPart(target) + format(".corvanectl-%08x%08x", random(), random());
}

class Replacement {
  public:
    explicit Replacement(const Invocation& invocation)
        : command_(invocation.command),
          endpoint_(invocation.endpoint),
          session_(invocation.endpoint),
          source_(withSlashes(invocation.parameters[0])),
          target_(withSlashes(invocation.parameters[1])) {
        requireExactName(source_);
        requireExactName(target_);
        requireSource();
        chooseTarget();
    }

    // Empty, or what the server could not do.
    std::string run() {
        if (!targetExists()) {
            return session_.ask(command_, {source_, target_}).ok ? ""
                                                                 : "FAILED, nothing was changed";
        }
        requireDifferentFiles();
        const std::string beside = nameBeside(target_);
        try {
            return putInPlace(beside);
        } catch (const Exception& e) {
            throw Exception(concatenate(e.message, "; the contents may be in '", beside, "'"));
        }
    }

  private:
    static void require(bool isTrue, const std::string& message) {
        if (!isTrue) {
            throw Exception(message);
        }
    }

    void requireSource() {
        require(!isServersDirectory(session_, source_),
                "'" + source_ + "' is a directory, --replace is for files");
        require(isReadableFile(session_, source_), "'" + source_ + "' cannot be read");
    }

    // As without --replace, a directory means the file in it.
    void chooseTarget() {
        if (!isServersDirectory(session_, target_)) {
            return;
        }
        target_ = inDirectory(target_, namePart(source_));
        require(!isServersDirectory(session_, target_),
                "'" + target_ + "' is a directory, which is not deleted");
    }

    // What is neither a file that can be read nor missing stays what it is.
    bool targetExists() {
        if (isReadableFile(session_, target_)) {
            return true;
        }
        const std::string directory = directoryPart(target_);
        const Reply listing = session_.ask("listDir", {directory.empty() ? "." : directory});
        const bool isMissing =
            listing.ok && std::none_of(listing.details.begin(), listing.details.end(),
                                       [name = namePart(target_)](const ReplyDetail& entry) {
                                           return entry.value == name || entry.value == name + "/";
                                       });
        require(isMissing, "what '" + target_ + "' is cannot be told, it is not deleted");
        return false;
    }

    void requireDifferentFiles() {
        const Reply current = session_.ask("currentDir", {});
        require(current.ok && !current.details.empty(), "currentDir: FAILED");
        const std::string& directory = current.details.front().value;
        require(compareFiles(fromRoot(source_, directory), fromRoot(target_, directory),
                             endpoint_) != Sameness::Same,
                concatenate("'", source_, "' and '", target_, "' are the same file"));
    }

    std::string putInPlace(const std::string& beside) {
        if (!session_.ask(command_, {source_, beside}).ok) {
            return "FAILED, " + withdraw(beside);
        }
        if (!session_.ask("delete", {target_}).ok) {
            return concatenate("'", target_, "' cannot be deleted, ", putBack(beside));
        }
        return session_.ask("rename", {beside, target_}).ok
                   ? ""
                   : concatenate("the file could not get the name '", target_, "', it is '", beside,
                                 "' now");
    }

    // The copy goes only while the source is there.
    std::string withdraw(const std::string& beside) {
        if (isReadableFile(session_, source_)) {
            return session_.ask("delete", {beside}).ok ? "nothing was changed"
                                                       : "a copy is left in '" + beside + "'";
        }
        return "the contents may be in '" + beside + "' now";
    }

    std::string putBack(const std::string& beside) {
        if (command_ == "copy") {
            return withdraw(beside);
        }
        return session_.ask("rename", {beside, source_}).ok
                   ? "nothing was changed"
                   : concatenate("and '", source_, "' is '", beside, "' now");
    }

    std::string command_;
    Endpoint endpoint_;
    Session session_;
    std::string source_;
    std::string target_;
};

}  // namespace

int replaceFile(const Invocation& invocation) {
    if (invocation.parameters.size() != 2) {
        throw Exception(concatenate("wrong number of parameters, usage: ", invocation.command,
                                    " --replace source destination"));
    }
    const std::string failure = Replacement(invocation).run();
    if (failure.empty()) {
        return succeeded;
    }
    std::cerr << "corvanectl: " << invocation.command << ": " << failure << '\n';
    return answeredFailed;
}

}  // namespace corvane::ctl

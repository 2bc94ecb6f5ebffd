#include "app/start.h"

#include <unistd.h>

#include <exception>
#include <iostream>
#include <log4cpp/Category.hh>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/confine.h"
#include "app/detach.h"
#include "app/instance.h"
#include "app/logging.h"
#include "app/settings.h"
#include "app/signals.h"
#include "commands/corvane_server.h"
#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "log/crash_flush.h"
#include "platform/descriptor_limit.h"
#include "platform/system.h"
#include "text/exception.h"
#include "text/strconv.h"

namespace corvane {
namespace {

constexpr const char* productName = "corvane";
constexpr const char* initFailureTitle = "corvane init error:";

// Flushed at once: nothing is left to be lost by _exit() or printed twice after fork().
void print(const std::string& line) { std::cout << line << std::endl; }

struct Configuration {
    Settings settings;
    bool fileFound;
    std::optional<platform::Confinement> confinement;
};

// All up to and including the detaching. Throws for what keeps the program from starting.
Configuration initialise(const std::string& name) {
    ignoreSignalsOfWriting();  // a launcher may have closed its end of standard output
    ensureStandardDescriptors();
    initStartupDirectory();
    print("Initializing app");
    const bool found = loadConfiguration(props, strconv::utf82acs(getApplicationDirectory()));
    Configuration configuration{Settings(props), found, std::nullopt};
    const Settings& settings = configuration.settings;
    if (!settings.console) {
        print("Console is off");
    }
    Log4cppConfigurator::configure(name, props, settings.console, settings.server.port);
    checkInstance(name, settings.server.port);
    configuration.confinement = prepareConfinement(settings);
    if (!settings.console) {
        detachFromTerminal();
    }
    return configuration;
}

Configuration initialiseOrExit(const std::string& name) {
    try {
        return initialise(name);
    } catch (const std::exception& e) {
        showMessage(initFailureTitle, e.what());
        ::_exit(-1);
    } catch (...) {
        showMessage(initFailureTitle, "Unexpected exception");
        ::_exit(-2);
    }
}

void enterWorkingDirectory(log4cpp::Category& log, const std::string& directory) {
    if (!directory.empty()) {
        log.debug("Changing cwd from '%s' to '%s'", getCurrentDirectory().c_str(),
                  directory.c_str());
        if (const int error = changeCurrentDirectory(directory.c_str()); error != 0) {
            log.warn("FAIL to change current dir to '%s' (err %d)", directory.c_str(), error);
        }
    }
    log.info("Current dir is '%s'", getCurrentDirectory().c_str());
}

bool isCommand(const std::string& name) {
    return name == "shutdown" || findCommand(name) != nullptr;
}

// A misspelt name would otherwise show only when the command is refused.
void warnOfUnknownCommands(log4cpp::Category& log, const ServerOptions& options) {
    for (const std::string& name : options.allowedCommands.value_or(std::vector<std::string>{})) {
        if (!isCommand(name)) {
            log.warn("COMMANDS: there is no command '%s'", name.c_str());
        }
    }
}

// Serves nobody when the program cannot be confined though it was asked for.
void serve(log4cpp::Category& log, std::optional<platform::Confinement> confinement) {
    raiseDescriptorLimit();
    platform::keepFreedMemory();  // the server gives it back when it is idle
    try {
        server->initServer();
        if (confinement) {
            rememberUserName();
            confinement->enforce();
            confinement.reset();
            log.notice("confined to the folders of the configuration");
        }
        server->process();
    } catch (const Exception& e) {
        log.error("Server exception: %s", e.what());
    } catch (...) {
        log.fatal("unexpected exception on processing");
    }
}

void stop(log4cpp::Category& log, std::unique_ptr<Server> running) {
    try {
        server = nullptr;
        running->deinitServer();  // here what it throws is reported; the destructor tells nobody
        running.reset();
        log.notice("stop service");
        pidFile.release();
        log.debug("pid file release");
    } catch (...) {
        log.fatal("unexpected exception on closing");
    }
    log.notice("application terminated");
}

}  // namespace

void showMessage(const std::string& title, const std::string& text) {
    print(title);
    print(text);
}

int corvaneStart(std::unique_ptr<Server> newServer, const std::string& name) {
    auto [settings, configurationFound, confinement] = initialiseOrExit(name);
    log4cpp::Category& log = log4cpp::Category::getInstance(productName);
    installSignalHandlers();
    flushLogOnFatalSignals();
    if (!configurationFound) {
        log.warn("Neither '%s' nor '%s' were found. using default values.", CONFIG_FILE,
                 OTHER_CONFIG_FILE);
    }
    log.notice("start %s v. %s", productName, CORVANE_VERSION);
    enterWorkingDirectory(log, settings.currentDirectory);
    warnOfUnknownCommands(log, settings.server);
    // cppcheck-suppress danglingLifetime ; stop() clears it again
    server = newServer.get();
    settings.apply(*server);
    serve(log, std::move(confinement));
    stop(log, std::move(newServer));
    return 0;
}

}  // namespace corvane

#include "corvane-play/app.h"

#include <signal.h>

#include <chrono>
#include <iostream>
#include <utility>

#include "corvane-play/guard.h"

namespace corvane::play {
namespace {

constexpr int failed = 1;
constexpr std::chrono::seconds patience(15);  // until it is said that no page has come

void say(const std::string& text) { std::cerr << "corvane-play: " << text << std::endl; }

}  // namespace

App::App(Options options, const std::string& ownDirectory)
    : options_(std::move(options)),
      signals_(context_, SIGINT, SIGTERM, SIGHUP),
      timer_(context_),
      listener_(context_),
      corvane_(context_, findInstallation(options_, ownDirectory)) {
    signals_.add(SIGCHLD);
    if (options_.action == Options::Action::Play) {
        subject_ = findSubject(options_.subject);
        data_ = findData(ownDirectory);
    }
}

int App::run() {
    waitForSignal();
    corvane_.start([this](std::uint16_t port) { serve(port); },
                   [this](const std::string& why) { fail(why); });
    context_.run();
    return status_;
}

void App::serve(std::uint16_t corvanePort) {
    Site site;
    site.port = listener_.port();
    site.key = makeSecret();
    site.token = makeSecret();
    site.targets = {{"127.0.0.1", corvanePort}};
    site.targets.insert(site.targets.end(), options_.allowedTargets.begin(),
                        options_.allowedTargets.end());
    site.allowedOrigins = options_.allowedOrigins;
    const std::string host = "127.0.0.1:" + std::to_string(site.port);
    std::string address;
    if (options_.action == Options::Action::Play) {
        serveMovie(site, corvanePort);
        address = "http://" + host + "/" + site.key + "/";
        std::cout << address << std::endl;
    } else {
        for (const Target& target : site.targets) {
            std::cout << "ws://" << host << bridgePath(site, target) << std::endl;
        }
    }
    service_.emplace(context_, std::move(site));
    listener_.start(*service_);
    if (!address.empty()) {
        show(address);
    }
}

void App::serveMovie(Site& site, std::uint16_t corvanePort) const {
    site.movie.emplace(subject_.directory);
    site.data.emplace(data_);
    site.page = subject_.page;
    site.settings = makeSettings(site, subject_, options_, corvanePort, data_);
}

void App::show(const std::string& address) {
    service_->presence.onFirst = [this] { timer_.cancel(); };
    if (!options_.stay) {
        service_->presence.onGone = [this] { context_.stop(); };
    }
    if (options_.browser == Options::Browser::None) {
        return;
    }
    try {
        if (options_.browser == Options::Browser::Kiosk) {
            kiosk_.emplace(address);
        } else {
            openInDefaultBrowser(address);
        }
    } catch (const Exception& e) {
        return fail(e.what());
    }
    timer_.expires_after(patience);
    timer_.async_wait([address](error_code error) {
        if (!error) {
            say("no browser has come yet; open " + address);
        }
    });
}

void App::waitForSignal() {
    signals_.async_wait([this](error_code error, int sig) {
        if (!error) {
            onSignal(sig);
        }
    });
}

void App::onSignal(int sig) {
    if (sig != SIGCHLD) {
        context_.stop();
        return;
    }
    if (const auto status = kiosk_ ? kiosk_->status() : std::nullopt) {
        if (*status != 0 && !service_->presence.wasThere()) {
            return fail("the browser has ended before it has shown the page");
        }
        context_.stop();
    } else if (corvane_.hasEnded()) {
        fail("Corvane has ended");
    }
    waitForSignal();
}

void App::fail(const std::string& why) {
    say(why);
    status_ = failed;
    context_.stop();
}

}  // namespace corvane::play

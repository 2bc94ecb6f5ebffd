// What "corvanectl doctor" looks at, and what its checks find.
#pragma once

#include <string>
#include <vector>

#include "corvanectl/local/configuration.h"
#include "corvanectl/local/log_places.h"
#include "corvanectl/local/server_state.h"

namespace corvane::ctl {

/// All that the checks need, gathered once.
struct Installation {
    LogQuery query;
    ServerState state;
    /// Of the server's executable; ends with "/", or is empty when there is none.
    std::string directory;
    Configuration configuration;
    /// Why the file that is there cannot be read; empty for nothing.
    std::string obstacle;
    /// Whether programs of that directory may be run: not where another user's process names it,
    /// which could make root run anything.
    bool isTrusted = true;
};

/// One line of the result.
struct Finding {
    bool isWrong;
    std::string text;
    /// What mends it; empty where there is nothing to do.
    std::string mend;
};

using Findings = std::vector<Finding>;

inline Finding fine(std::string text) { return {false, std::move(text), ""}; }
inline Finding wrong(std::string text, std::string mend) {
    return {true, std::move(text), std::move(mend)};
}

}  // namespace corvane::ctl

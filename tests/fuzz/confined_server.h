// The command server with real commands that cannot leave the directory that the process works in:
// a request that names another place is answered like an unknown command.
#pragma once

#include "commands/corvane_server.h"

namespace corvane::fuzz {

class ConfinedServer : public CorvaneServer {
  public:
    void processClientCommand(int sock, const std::string& cmd, std::istream& params) override;
};

}  // namespace corvane::fuzz

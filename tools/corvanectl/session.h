// Many requests on one connection, for what corvanectl does in several steps.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "corvanectl/exchange.h"
#include "corvanectl/reply.h"

namespace corvane::ctl {

/// Whatever cannot be sent, and a server that does not answer, throws Exception.
class Session {
  public:
    explicit Session(const Endpoint& endpoint, Observer observer = {});

    /// The endpoint's time counts for each request. `data` is for commands that take it only.
    Reply ask(std::string_view command, const std::vector<std::string>& parameters,
              const std::string& data = "");

    /// This end of the connection, as Connection's.
    std::string ownAddress() const { return connection_.ownAddress(); }
    bool staysOnThisMachine() const { return connection_.staysOnThisMachine(); }

    /// The bytes of a file at `count` offsets from `first` on, at the price of few waits; fewer
    /// where a request fails, at the end of the file for one.
    std::string readBytes(const std::string& file, std::size_t first, std::size_t count);

  private:
    Reply receive();

    Connection connection_;
};

/// Whether the server can read this as a file; false for a directory.
bool isReadableFile(Session& session, const std::string& path);

bool isServersDirectory(Session& session, const std::string& path);

}  // namespace corvane::ctl

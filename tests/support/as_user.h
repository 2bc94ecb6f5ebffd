// Another effective user for a while: sockets that are made meanwhile belong to that user. Only the
// superuser may take one.
#pragma once

#include <unistd.h>

namespace corvane::test {

class AsUser {
  public:
    explicit AsUser(uid_t user) : ok_(::seteuid(user) == 0) {}
    ~AsUser() { static_cast<void>(::seteuid(::getuid())); }
    AsUser(const AsUser&) = delete;
    AsUser& operator=(const AsUser&) = delete;
    AsUser(AsUser&&) = delete;
    AsUser& operator=(AsUser&&) = delete;

    /// Whether this process may take other users.
    static bool isPossible() { return AsUser(1).ok_; }

  private:
    bool ok_;
};

}  // namespace corvane::test

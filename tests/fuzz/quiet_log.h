// The log of targets that run the server: every line is formatted, as at the DEBUG level of a real
// one, and thrown away.
#pragma once

namespace corvane::fuzz {

class QuietLog {
  public:
    QuietLog();
};

}  // namespace corvane::fuzz

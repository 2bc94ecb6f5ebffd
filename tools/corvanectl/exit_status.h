// The exit statuses of corvanectl, which scripts rely on.
#pragma once

namespace corvane::ctl {

inline constexpr int succeeded = 0;
/// The server has answered FAILED, or a local command has found something wrong.
inline constexpr int answeredFailed = 1;
/// A wrong command line, an input or output that fails, no connection, no reply.
inline constexpr int notAnswered = 2;

}  // namespace corvane::ctl

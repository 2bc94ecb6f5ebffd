// Failures in words for people, without the names of classes.
#pragma once

#include <exception>
#include <string>

namespace corvane::ctl {

/// What went wrong, for the message on standard error.
std::string plainWords(const std::exception& failure);

}  // namespace corvane::ctl

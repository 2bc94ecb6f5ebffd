// What a confined server keeps besides the folders of its configuration: what it needs itself for
// the commands that it serves, and no more.
#pragma once

#include <optional>

#include "app/settings.h"
#include "platform/confinement.h"

namespace corvane {

/// Prepares the confinement that the settings ask for; nothing when they ask for none. What it
/// allows is looked up now: a file that appears later, or takes the place of another, counts only
/// if it lies in a directory that was there. Throws ConfigureFailure when it is not possible.
std::optional<platform::Confinement> prepareConfinement(const Settings& settings);

}  // namespace corvane

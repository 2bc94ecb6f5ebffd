// Stands in for the header of the same name of macOS, for tests on Linux; the test defines the
// function.
#pragma once

#include <cstddef>

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int sysctlbyname(const char* name, void* old, std::size_t* size, void* fresh,
                            std::size_t freshSize);

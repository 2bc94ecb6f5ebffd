// Stands in for the header of the same name of macOS, for tests on Linux; the test defines the
// functions.
#pragma once

#include <sys/proc_info.h>
#include <sys/types.h>

#include <cstdint>

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {
int proc_listpids(std::uint32_t type, std::uint32_t typeInfo, void* room, int size);
int proc_pidinfo(int process, int flavor, std::uint64_t argument, void* room, int size);
int proc_pidfdinfo(int process, int fd, int flavor, void* room, int size);
int proc_pidpath(int process, void* room, std::uint32_t size);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

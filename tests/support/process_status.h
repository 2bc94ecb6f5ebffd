// What /proc knows about a process. Nothing here throws when the process ends meanwhile.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace corvane::test {

std::vector<pid_t> allProcesses();
/// The arguments, each with a zero byte behind it; empty for a process that has ended.
std::string commandLineOf(pid_t pid);
/// The letter of proc(5), such as 'S' asleep, 'T' stopped, 'Z' a zombie; '\0' for none.
char stateOf(pid_t pid);
/// Open descriptors; 0 for a process that has ended.
int descriptorsOf(pid_t pid);
bool hasZombieChild(pid_t pid);
/// The children of a process with one thread, zombies among them.
std::vector<pid_t> childrenOf(pid_t pid);
/// User and system time in clock ticks.
long processorTimeOf(pid_t pid);
/// Resident memory in KiB.
long residentMemoryOf(pid_t pid);
/// How often the process has left a processor because it waited for something.
long waitsOf(pid_t pid);

}  // namespace corvane::test

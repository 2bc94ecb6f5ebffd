#include "corvanectl/local_command.h"

#include <algorithm>
#include <array>

#include "corvanectl/local/doctor.h"
#include "corvanectl/local/help.h"
#include "corvanectl/local/show_log.h"
#include "corvanectl/local/status.h"
#include "corvanectl/local/transfer.h"

namespace corvane::ctl {
namespace {

constexpr auto table = std::to_array<LocalCommand>({
    {{"help", "[command]"},
     {"Explains a command, or lists all of them.", "command: its name", "corvanectl help listDir"},
     local::help},
    {{"put", "local [remote]"},
     {"Sends a file of this machine to the server, over a file that is there.",
      "local: the file; with a byte 0x00 or 0x01 in it nothing is sent, no request can carry them\n"
      "remote: its new name, or a directory; the same name in the server's current directory\n"
      "without it",
      "corvanectl put movie.txt /tmp/"},
     local::put},
    {{"get", "[--bytes] [--force] remote [local]"},
     {"Fetches a file from the server; it is there as a whole or not at all.",
      "--bytes: read a file with bytes 0x00, which readText leaves out, with readByte: one "
      "request\n"
      "for each byte in the worst case, some ten thousand in a second\n"
      "--force: replace a file that is there\n"
      "remote: the server's file\n"
      "local: its new name, or a directory; the same name without it",
      "corvanectl get --bytes /tmp/picture.png picture.png"},
     local::get},
    {{"status", ""},
     {"Tells whether a server runs on this machine, and what can be seen of it.",
      "--json: one object for scripts", "corvanectl status"},
     local::status},
    {{"doctor", ""},
     {"Looks at the installed server as a whole: a line for each thing, and how to mend it.", "",
      "corvanectl doctor"},
     local::doctor},
    {{"log", ""},
     {"Shows the server's log; with parameters, it sends the server's command of this name.",
      "-f: go on with what is added\n"
      "--level=LEVEL: lines of this level and above\n"
      "--client=ADDRESS: lines that name the client, with or without its port\n"
      "--command=NAME: lines about the command",
      "corvanectl log -f --level WARN"},
     local::log},
});

}  // namespace

std::span<const LocalCommand> localCommands() { return table; }

const LocalCommand* findLocalCommand(std::string_view name, std::size_t parameterCount) {
    const auto* const found =
        std::find_if(table.begin(), table.end(),
                     [name](const LocalCommand& command) { return command.usage.name == name; });
    if (found == table.end()) {
        return nullptr;
    }
    const bool isServers = parameterCount > found->usage.most() && findCommand(name) != nullptr;
    return isServers ? nullptr : found;
}

}  // namespace corvane::ctl

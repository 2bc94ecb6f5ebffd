// Makes the whole program testable: the screen that it finds is the one that the environment names.
#include <cstdlib>
#include <string_view>

#include "cvnwinfo/macos/framework_stand_ins.h"

namespace {

struct ToolWorld {
    ToolWorld() {
        const char* const value = std::getenv("CVNWINFO_WORLD");
        const std::string_view name = value == nullptr ? "" : value;
        using corvane::standins::world;
        world.windows = {{.title = "Player", .frame = {{-10, 20}, {550, 428}}}};
        world.trusted = name != "untrusted";
        world.stuck = name == "stuck";
    }
};

const ToolWorld toolWorld;

}  // namespace

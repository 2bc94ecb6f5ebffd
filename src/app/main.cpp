#include <memory>

#include "app/start.h"
#include "commands/corvane_server.h"
#include "fileutil/paths.h"

int main(int argc, char** argv) {
    corvane::ARGC = argc;
    corvane::ARGV = argv;
    return corvane::corvaneStart(std::make_unique<corvane::CorvaneServer>(), "cv");
}

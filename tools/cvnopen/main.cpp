// cvnopen opens one address or document for the server. The server cannot do that itself: it forks
// when it detaches, and Apple's frameworks do not work in a forked process that executes no other
// program.
//
// Usage: cvnopen address TEXT | cvnopen document PATH
//
// For an address it prints the status of Launch Services, a number too large for an exit status.
// Ends with 0 when Launch Services was asked, 1 when TEXT is not a valid address, 2 for any other
// usage.
#include <cstdio>
#include <optional>
#include <string_view>

#include "cvnopen/launch_services.h"

int main(int argc, char** argv) {
    const std::string_view what = argc == 3 ? argv[1] : "";
    if (what == "document") {
        corvane::cvnopen::openDocument(argv[2]);
        return 0;
    }
    if (what != "address") {
        static_cast<void>(
            std::fputs("usage: cvnopen address TEXT | cvnopen document PATH\n", stderr));
        return 2;
    }
    const std::optional<std::int32_t> status = corvane::cvnopen::openAddress(argv[2]);
    if (!status) {
        return 1;
    }
    std::printf("%d\n", static_cast<int>(*status));
    return 0;
}

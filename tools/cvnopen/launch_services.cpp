#include "cvnopen/launch_services.h"

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <type_traits>

namespace corvane::cvnopen {
namespace {

struct ReleaseReference {
    void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

using Url = std::unique_ptr<std::remove_pointer_t<CFURLRef>, ReleaseReference>;

const UInt8* bytesOf(const std::string& text) {
    return reinterpret_cast<const UInt8*>(text.c_str());
}

Url makeUrl(const std::string& target) {
    return Url(CFURLCreateWithBytes(kCFAllocatorDefault, bytesOf(target),
                                    static_cast<CFIndex>(target.size()), kCFStringEncodingUTF8,
                                    nullptr));
}

}  // namespace

std::optional<std::int32_t> openAddress(const std::string& address) {
    const Url url = makeUrl(address);
    if (!url) {
        return std::nullopt;
    }
    return LSOpenCFURLRef(url.get(), nullptr);
}

// Both calls are deprecated in favour of LSOpenCFURLRef, not removed. They take a path as it is,
// without the detour of making a URL of it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

void openDocument(const std::string& path) {
    // Zeroed because it is handed on even when no reference could be made: Launch Services then
    // refuses it, and that is ignored like any other failure.
    FSRef file{};
    FSPathMakeRef(bytesOf(path), &file, nullptr);
    LSOpenFSRef(&file, nullptr);
}

#pragma GCC diagnostic pop

}  // namespace corvane::cvnopen

#include "corvanectl/display.h"

#include <algorithm>
#include <array>
#include <span>

#include "corvanectl/utf8.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Those that are put upon another character, or take no room of their own.
constexpr auto without = std::to_array<Range>(
    {{0x300, 0x36f},   {0x483, 0x489},   {0x591, 0x5bd},   {0x610, 0x61a},     {0x64b, 0x65f},
     {0x93c, 0x93c},   {0x941, 0x94d},   {0xe31, 0xe31},   {0xe34, 0xe3a},     {0xe47, 0xe4e},
     {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff}, {0x200b, 0x200d}, {0x20d0, 0x20ff},   {0x302a, 0x302f},
     {0x3099, 0x309a}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}, {0x1f3fb, 0x1f3ff}, {0xe0100, 0xe01ef}});

// Those that Unicode's East Asian Width calls wide, by blocks.
constexpr auto wide = std::to_array<Range>({{0x1100, 0x115f},
                                            {0x231a, 0x231b},
                                            {0x2e80, 0x303e},
                                            {0x3041, 0xa4cf},
                                            {0xa960, 0xa97f},
                                            {0xac00, 0xd7a3},
                                            {0xf900, 0xfaff},
                                            {0xfe30, 0xfe6f},
                                            {0xff00, 0xff60},
                                            {0xffe0, 0xffe6},
                                            {0x1f300, 0x1f64f},
                                            {0x1f680, 0x1f6ff},
                                            {0x1f900, 0x1f9ff},
                                            {0x20000, 0x3fffd}});

constexpr auto turning =
    std::to_array<Range>({{0x61c, 0x61c}, {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x2069}});

bool isIn(std::span<const Range> ranges, char32_t c) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const Range& range) { return range.first <= c && c <= range.last; });
}

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7f && c < 0xa0); }

}  // namespace

std::string visible(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t size = std::max<std::size_t>(1, utf8Length(text));
        const std::string_view bytes = text.substr(0, size);
        const char32_t character = decodeUtf8(bytes);
        if (utf8Length(text) == 0 || (size == 1 && isControl(character))) {
            result += format("\\x%02x", static_cast<unsigned>(bytes.front()) & 0xffU);
        } else if (isControl(character) || isIn(turning, character)) {
            result += format("\\u%04x", static_cast<unsigned>(character));
        } else {
            result += bytes;
        }
        text.remove_prefix(size);
    }
    return result;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const std::size_t size = std::max<std::size_t>(1, utf8Length(text));
        const char32_t character = decodeUtf8(text.substr(0, size));
        width += isIn(without, character) ? 0 : isIn(wide, character) ? 2 : 1;
        text.remove_prefix(size);
    }
    return width;
}

}  // namespace corvane::ctl

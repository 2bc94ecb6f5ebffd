#include "corvanectl/listing.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "corvanectl/display.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t gap = 2;

// The widths of the columns when the names stand in so many rows.
std::vector<std::size_t> widthsOf(const std::vector<std::string>& names, std::size_t rows) {
    std::vector<std::size_t> widths((names.size() + rows - 1) / rows);
    for (std::size_t i = 0; i < names.size(); ++i) {
        widths[i / rows] = std::max(widths[i / rows], displayWidth(names[i]));
    }
    return widths;
}

bool fits(const std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t whole = 0;
    for (const std::size_t width : widths) {
        whole += width + gap;
    }
    return whole <= room + gap;
}

// Tried from one row on: the first number of rows that fits is the least.
std::vector<std::size_t> chooseWidths(const std::vector<std::string>& names, std::size_t room,
                                      std::size_t& rows) {
    // No more columns fit than those of one letter.
    const std::size_t most = std::max<std::size_t>(1, (room + gap) / (gap + 1));
    for (rows = (names.size() + most - 1) / most; rows < names.size(); ++rows) {
        if (std::vector<std::size_t> widths = widthsOf(names, rows); fits(widths, room)) {
            return widths;
        }
    }
    return widthsOf(names, rows);
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - std::min(width, displayWidth(text)), ' ');
}

std::string orDash(const std::string& text) { return text.empty() ? "-" : text; }

using Row = std::array<std::string, 5>;

Row rowOf(const ReplyDetail& entry, bool onTerminal) {
    const bool isFile = entry.id == "file";
    const std::string size = isFile && entry.size == "0" ? "" : entry.size;
    return {entry.id, orDash(entry.extra), orDash(size), orDash(entry.date),
            onTerminal ? visible(entry.value) : entry.value};
}

}  // namespace

bool isListing(const Reply& reply) {
    constexpr std::array<std::string_view, 5> kinds{"file", "directory", "share", "server",
                                                    "domain"};
    return !reply.details.empty() &&
           std::all_of(reply.details.begin(), reply.details.end(),
                       [&kinds](const ReplyDetail& detail) {
                           return std::find(kinds.begin(), kinds.end(), detail.id) != kinds.end();
                       });
}

void printColumns(std::span<const ReplyDetail> entries, std::size_t width, std::ostream& out) {
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const ReplyDetail& entry : entries) {
        names.push_back(visible(entry.value));
    }
    std::size_t rows = 1;
    const std::vector<std::size_t> widths = chooseWidths(names, width, rows);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t i = row; i < names.size(); i += rows) {
            const bool isLast = i + rows >= names.size();
            out << (isLast ? names[i] : padded(names[i], widths[i / rows] + gap));
        }
        out << '\n';
    }
}

void printLong(std::span<const ReplyDetail> entries, bool onTerminal, std::ostream& out) {
    std::vector<Row> rows;
    std::array<std::size_t, 4> widths{};
    for (const ReplyDetail& entry : entries) {
        rows.push_back(rowOf(entry, onTerminal));
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth(rows.back()[i]));
        }
    }
    for (const Row& row : rows) {
        out << padded(row[0], widths[0] + gap) << padded(row[1], widths[1] + gap)
            << std::string(widths[2] - displayWidth(row[2]), ' ') << row[2] << "  "
            << padded(row[3], widths[3] + gap) << row[4] << '\n';
    }
}

}  // namespace corvane::ctl

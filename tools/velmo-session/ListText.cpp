#include "tools/velmo-session/ListText.h"

#include "core/support/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velmo {

namespace {

constexpr std::size_t columns = 11;
using Row = std::array<std::string, columns>;

struct Unit {
    std::int64_t seconds;
    std::string_view name;
};

constexpr auto units = std::to_array<Unit>({{.seconds = 86400, .name = "d"},
                                            {.seconds = 3600, .name = "h"},
                                            {.seconds = 60, .name = "m"}});

std::string age(double since, WallTime now) {
    const double seconds = std::clamp(now.sinceEpoch - since, 0.0, 1e12);
    const auto whole = static_cast<std::int64_t>(seconds);
    for (const Unit& unit : units) {
        if (whole >= unit.seconds)
            return std::to_string(whole / unit.seconds) + std::string(unit.name);
    }
    return std::to_string(whole) + "s";
}

std::string state(const SessionEntry& entry, WallTime now) {
    if (entry.exitCode)
        return "ended (" + std::to_string(*entry.exitCode) + ")";
    if (entry.attachedSince)
        return "attached " + age(*entry.attachedSince, now);
    return "detached " + age(entry.detachedSince.value_or(entry.since), now);
}

/// Returns when the session last asked for a person, and with which words.
std::string attention(const SessionEntry& entry, WallTime now) {
    if (!entry.attentionSince)
        return "";
    return age(*entry.attentionSince, now) + ": " + entry.notice.value_or("bell");
}

Row rowOf(const SessionEntry& entry, WallTime now) {
    return {entry.id,
            entry.name,
            entry.program,
            entry.folder,
            std::to_string(entry.cols) + "x" + std::to_string(entry.rows),
            age(entry.since, now),
            std::to_string(entry.viewers),
            std::to_string(entry.bytesOut),
            age(entry.idleSince, now),
            state(entry, now),
            attention(entry, now)};
}

} // namespace

std::string listText(std::span<const SessionEntry> sessions, WallTime now) {
    std::vector<Row> rows{{"ID", "NAME", "PROGRAM", "FOLDER", "SIZE", "AGE", "VIEWERS", "BYTES",
                           "IDLE", "STATE", "ATTENTION"}};
    for (const SessionEntry& entry : sessions)
        rows.push_back(rowOf(entry, now));
    std::array<std::size_t, columns> widths{};
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < columns; ++i)
            widths[i] = std::max(widths[i], Text::characterCount(row[i]));
    }
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t i = 0; i + 1 < columns; ++i)
            text.append(row[i]).append(widths[i] + 2 - Text::characterCount(row[i]), ' ');
        text.append(row.back());
        text.erase(text.find_last_not_of(' ') + 1);
        text.append("\n");
    }
    return text;
}

} // namespace velmo

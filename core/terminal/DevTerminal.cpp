#include "core/terminal/DevTerminal.h"

#include "core/support/Ascii.h"
#include "core/support/Decimal.h"
#include "core/support/PathText.h"
#include "core/support/Text.h"
#include "core/terminal/OptionPairs.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace velmo::DevTerminal {

namespace {

constexpr auto openOptions =
    std::to_array<std::string_view>({"--app", "--cwd", "--tool", "--tool-path", "--ssh-target",
                                     "--ssh-port", "--fullscreen", "--exec", "--attach-file"});
constexpr auto notWithSsh =
    std::to_array<std::string_view>({"--cwd", "--tool", "--tool-path", "--exec"});
constexpr auto notWithAttach = std::to_array<std::string_view>(
    {"--cwd", "--tool", "--tool-path", "--ssh-target", "--ssh-port", "--exec"});
constexpr auto focusOptions = std::to_array<std::string_view>({"--pid", "--tty"});

constexpr std::int64_t maxPid = std::numeric_limits<std::int32_t>::max();

/// Tells whether a switch has the value "1" or is absent.
bool isSwitch(const OptionPairs& options, std::string_view name) {
    return options.value(name).value_or("1") == "1";
}

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text.transform([](std::string_view view) { return std::string(view); });
}

std::optional<OpenRequest> attachRequest(const OptionPairs& options, App app,
                                         const std::optional<std::string>& folder,
                                         const std::optional<std::string>& executable) {
    const std::string_view file = options.value("--attach-file").value_or("");
    if (options.hasAny(notWithAttach) || !isAttachFile(file, folder) || !executable
        || !PathText::isCleanAbsoluteFile(*executable))
        return std::nullopt;
    return OpenRequest::ofAttach(app, {std::string(file)}, *executable,
                                 options.has("--fullscreen"));
}

std::optional<OpenRequest> sshRequest(const OptionPairs& options, App app) {
    const std::string_view target = options.value("--ssh-target").value_or("");
    const auto port = options.value("--ssh-port").and_then(sshPort);
    if (options.hasAny(notWithSsh) || !isSshTarget(target)
        || options.has("--ssh-port") != port.has_value())
        return std::nullopt;
    return OpenRequest::ofSsh(app, {.target = std::string(target), .port = port},
                              options.has("--fullscreen"));
}

std::optional<OpenRequest> toolRequest(const OptionPairs& options, App app, std::string_view home,
                                       const Resolve& resolve) {
    const auto cwd = options.value("--cwd");
    const auto tool = options.value("--tool");
    const auto path = options.value("--tool-path");
    if (options.has("--ssh-port") || !cwd || !isSafePath(*cwd) || !tool
        || !Text::isOneOf(*tool, tools))
        return std::nullopt;
    if (path && (!isSafePath(*path) || PathText::lastComponent(*path) != *tool))
        return std::nullopt;
    if (!isAllowedFolder(*cwd, home, resolve)) // last: it asks the disk
        return std::nullopt;
    return OpenRequest{.app = app,
                       .cwd = owned(cwd),
                       .command = Tool{std::string(*tool)},
                       .fullscreen = options.has("--fullscreen"),
                       .exec = options.has("--exec"),
                       .toolPath = owned(path)};
}

} // namespace

std::optional<OpenRequest> parseOpen(std::span<const std::string> args, std::string_view home,
                                     const std::optional<std::string>& attachFolder,
                                     const std::optional<std::string>& executable,
                                     const Resolve& resolve) {
    const auto options = OptionPairs::read(args, openOptions);
    if (!options)
        return std::nullopt;
    const auto app = options->value("--app").and_then(fromRawText<App>);
    if (!app || !isSwitch(*options, "--fullscreen") || !isSwitch(*options, "--exec"))
        return std::nullopt;
    if (options->has("--attach-file"))
        return attachRequest(*options, *app, attachFolder, executable);
    if (options->has("--ssh-target"))
        return sshRequest(*options, *app);
    return toolRequest(*options, *app, home, resolve);
}

std::optional<FocusRequest> parseFocus(std::span<const std::string> args) {
    const auto options = OptionPairs::read(args, focusOptions);
    if (!options)
        return std::nullopt;
    const auto tty = options->value("--tty");
    const auto pid = options->value("--pid").and_then(
        [](std::string_view text) { return Decimal::parsePositive(text, maxPid); });
    if (!pid || (tty && !isTty(*tty)))
        return std::nullopt;
    return FocusRequest{.pid = static_cast<std::int32_t>(*pid), .tty = owned(tty)};
}

bool isTty(std::string_view text) {
    constexpr std::string_view prefix = "/dev/ttys";
    constexpr std::size_t maxDigits = 4;
    if (!text.starts_with(prefix))
        return false;
    const std::string_view digits = text.substr(prefix.size());
    return !digits.empty() && digits.size() <= maxDigits
           && std::ranges::all_of(digits, Ascii::isDigit);
}

bool isSafePath(std::string_view path) {
    return PathText::isCleanAbsolute(path);
}

bool isAttachFile(std::string_view file, const std::optional<std::string>& folder) {
    return folder && PathText::isCleanAbsoluteFile(file)
           && PathText::parent(file) == PathText::withoutTrailingSlash(*folder);
}

} // namespace velmo::DevTerminal

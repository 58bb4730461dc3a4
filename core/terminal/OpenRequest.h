#pragma once

#include "core/support/RawText.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmo::DevTerminal {

/// The terminal applications that the launcher can drive. The raw text is the name in a request.
enum class App { terminal, iterm, ghostty };

std::string_view bundleIdentifier(App app);

/// A coding agent, one of `tools`.
struct Tool {
    std::string name;

    bool operator==(const Tool&) const = default;
};

struct Ssh {
    std::string target;
    std::optional<int> port;

    bool operator==(const Ssh&) const = default;
};

/// The product's own executable as the attach client, which joins a running session.
struct Attach {
    std::string ticketFile;

    bool operator==(const Attach&) const = default;
};

using Command = std::variant<Tool, Ssh, Attach>;

/// What to run in a new terminal window, and in which application.
struct OpenRequest {
    App app = App::terminal;
    std::optional<std::string> cwd; ///< working folder of a tool
    Command command;
    bool fullscreen = false; ///< ignored by all but Ghostty
    bool exec = false;       ///< the command is the window's program and not typed into a shell
    std::optional<std::string> toolPath;   ///< executable of a tool, instead of its name
    std::optional<std::string> executable; ///< the product's own, for `Attach`

    /// Return requests with `exec` set, since neither command has a form that is typed into a
    /// shell.
    static OpenRequest ofSsh(App app, Ssh ssh, bool fullscreen);
    static OpenRequest ofAttach(App app, Attach attach, std::string executable, bool fullscreen);

    /// Returns the tool's name, or nothing for another kind of command.
    [[nodiscard]] std::optional<std::string> tool() const;

    /// Returns the program that will be executed: the tool's path or else its name, "ssh", or the
    /// product's own executable, or "" if that is absent.
    [[nodiscard]] std::string program() const;

    bool operator==(const OpenRequest&) const = default;
};

} // namespace velmo::DevTerminal

namespace velmo {

template<>
inline constexpr auto rawTexts<DevTerminal::App> =
    std::to_array<std::string_view>({"Terminal", "iTerm2", "Ghostty"});

} // namespace velmo

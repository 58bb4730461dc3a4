#include "core/terminal/OpenRequest.h"

#include <utility>

namespace velmo::DevTerminal {

std::string_view bundleIdentifier(App app) {
    switch (app) {
    case App::terminal:
        return "com.apple.Terminal";
    case App::iterm:
        return "com.googlecode.iterm2";
    case App::ghostty:
        break;
    }
    return "com.mitchellh.ghostty";
}

OpenRequest OpenRequest::ofSsh(App app, Ssh ssh, bool fullscreen) {
    return {.app = app, .command = std::move(ssh), .fullscreen = fullscreen, .exec = true};
}

OpenRequest OpenRequest::ofAttach(App app, Attach attach, std::string executable, bool fullscreen) {
    return {.app = app,
            .command = std::move(attach),
            .fullscreen = fullscreen,
            .exec = true,
            .executable = std::move(executable)};
}

std::optional<std::string> OpenRequest::tool() const {
    const auto* const found = std::get_if<Tool>(&command);
    return found == nullptr ? std::nullopt : std::optional(found->name);
}

std::string OpenRequest::program() const {
    if (const auto name = tool())
        return toolPath.value_or(*name);
    return std::holds_alternative<Ssh>(command) ? "ssh" : executable.value_or("");
}

} // namespace velmo::DevTerminal

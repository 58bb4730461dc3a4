#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The rule for the folders that a session or a terminal window may work in: any folder strictly
/// inside the home folder, except those with secrets or settings, or that belong to a program.
namespace velmo::DevTerminal {

/// Names, in lower case, of folders directly below the home folder that are denied with all that
/// is in them.
inline constexpr auto deniedTop = std::to_array<std::string_view>(
    {"library", ".ssh", ".gnupg", ".aws", ".azure", ".kube", ".docker", ".trash", ".password-store",
     "appdata", ".config", ".local", ".cache", ".claude", ".codex", ".gemini", ".npm", ".gcloud"});

/// Names, in lower case, of folders that are denied anywhere below the home folder, with all that
/// is in them.
inline constexpr auto deniedAnywhere = std::to_array<std::string_view>(
    {".ssh", ".gnupg", ".aws", ".password-store", "keychains", ".git"});

/// Returns the absolute path with every link resolved, as far as the path exists. Returns nothing
/// for a relative or empty path and on any error on the way.
using Resolve = std::function<std::optional<std::string>(std::string_view path)>;

/// Tells whether a session may work in the folder. Both paths are absolute and have their links
/// resolved already. Letter case is ignored, in the home folder's path too.
bool isAllowedResolvedFolder(std::string_view path, std::string_view home);

/// Tells the same for paths as given, which it resolves. A path with a "." or ".." piece is refused
/// before that.
bool isAllowedFolder(std::string_view path, std::string_view home, const Resolve& resolve);

} // namespace velmo::DevTerminal

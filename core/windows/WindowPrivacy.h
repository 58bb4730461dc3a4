#pragma once

#include <array>
#include <optional>
#include <string_view>

/// What must not be shown: windows of password managers, the system's own prompts for passwords,
/// and private windows of browsers. It errs on the side of hiding.
namespace velmo::WindowPrivacy {

/// In lower case.
inline constexpr auto sensitiveBundleIds = std::to_array<std::string_view>({
    "com.1password.1password",
    "com.agilebits.onepassword7",
    "com.agilebits.onepassword-osx",
    "com.bitwarden.desktop",
    "com.apple.keychainaccess",
    "com.apple.passwords",
    "com.lastpass.lastpassmacdesktop",
    "com.dashlane.dashlanephonefinal",
    "org.keepassxc.keepassxc",
    "in.sinew.enpass-desktop",
    "com.nordpass.macos.nordpass",
    "com.apple.securityagent",
    "com.apple.localauthentication.uiagent",
});

/// What browsers write into the titles of private windows, in the languages that they speak. In
/// lower case, accents composed.
inline constexpr auto privateTitleMarkers = std::to_array<std::string_view>({
    "incognito",
    "incógnito",
    "inprivate",
    "private browsing",
    "navegación privada",
    "navegação privada",
    "navigation privée",
    "privater modus",
    "navigazione anonima",
    "private window",
    "ventana privada",
    "janela privada",
    "fenêtre privée",
    "privates fenster",
    "finestra privata",
});

/// In any letter case. An absent identifier is not sensitive.
bool isSensitiveApp(std::optional<std::string_view> bundleId);

/// Whether a marker stands anywhere in the title, in any letter case, its accents composed or not.
/// An absent title looks harmless.
bool looksPrivate(std::optional<std::string_view> title);

bool isPrivate(std::optional<std::string_view> bundleId, std::optional<std::string_view> title);

} // namespace velmo::WindowPrivacy

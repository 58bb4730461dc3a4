#pragma once

#include "core/windows/PasswordPrompts.h"

#include <array>
#include <optional>
#include <string_view>

/// Decides which windows must not be shown: those of password managers, the system's own prompts
/// for passwords, and private windows of browsers. In doubt a window is hidden.
namespace velmo::WindowPrivacy {

/// Password managers and password prompts, in lower case.
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
    PasswordPrompts::securityAgent,
    PasswordPrompts::localAuthentication,
});

/// What browsers write into the titles of private windows, in several languages; in lower case,
/// with composed accents (NFC).
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

/// Tells whether the identifier, in any letter case, is one of `sensitiveBundleIds`. Returns false
/// for an absent identifier.
bool isSensitiveApp(std::optional<std::string_view> bundleId);

/// Tells whether the title contains one of `privateTitleMarkers`, in any letter case and with
/// accents composed or not. An absent title contains none.
bool looksPrivate(std::optional<std::string_view> title);

/// Tells whether either of the two above is true.
bool isPrivate(std::optional<std::string_view> bundleId, std::optional<std::string_view> title);

} // namespace velmo::WindowPrivacy

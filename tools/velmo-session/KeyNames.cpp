#include "tools/velmo-session/KeyNames.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace velmo {

namespace {

struct NamedKey {
    std::string_view name;
    std::string_view types; ///< what xterm sends for it
};

constexpr auto namedKeys = std::to_array<NamedKey>({
    {.name = "Enter", .types = "\r"},      {.name = "Tab", .types = "\t"},
    {.name = "BTab", .types = "\033[Z"},   {.name = "Space", .types = " "},
    {.name = "BSpace", .types = "\177"},   {.name = "Escape", .types = "\033"},
    {.name = "Up", .types = "\033[A"},     {.name = "Down", .types = "\033[B"},
    {.name = "Right", .types = "\033[C"},  {.name = "Left", .types = "\033[D"},
    {.name = "Home", .types = "\033[H"},   {.name = "End", .types = "\033[F"},
    {.name = "IC", .types = "\033[2~"},    {.name = "DC", .types = "\033[3~"},
    {.name = "PPage", .types = "\033[5~"}, {.name = "PageUp", .types = "\033[5~"},
    {.name = "NPage", .types = "\033[6~"}, {.name = "PageDown", .types = "\033[6~"},
    {.name = "F1", .types = "\033OP"},     {.name = "F2", .types = "\033OQ"},
    {.name = "F3", .types = "\033OR"},     {.name = "F4", .types = "\033OS"},
    {.name = "F5", .types = "\033[15~"},   {.name = "F6", .types = "\033[17~"},
    {.name = "F7", .types = "\033[18~"},   {.name = "F8", .types = "\033[19~"},
    {.name = "F9", .types = "\033[20~"},   {.name = "F10", .types = "\033[21~"},
    {.name = "F11", .types = "\033[23~"},  {.name = "F12", .types = "\033[24~"},
});

/// Returns what Control and a letter, or one of "@[\]^_?", type; absent for another character.
std::optional<char> controlled(char key) {
    if (key == '?')
        return '\177';
    const char upper = key >= 'a' && key <= 'z' ? static_cast<char>(key & ~0x20) : key;
    return upper >= '@' && upper <= '_' ? std::optional(static_cast<char>(upper & 0x1F))
                                        : std::nullopt;
}

/// Returns what a key's name types; absent for any other word.
std::optional<std::string> keyNamed(std::string_view word) {
    if (const auto* const found = std::ranges::find(namedKeys, word, &NamedKey::name);
        found != namedKeys.end())
        return std::string(found->types);
    if (word.starts_with("M-") && word.size() > 2) {
        const std::string_view key = word.substr(2);
        const auto named = keyNamed(key);
        if (named || key.size() == 1)
            return "\033" + named.value_or(std::string(key));
    }
    for (const std::string_view control : {"C-", "^"}) {
        if (word.starts_with(control) && word.size() == control.size() + 1)
            return controlled(word.back()).transform([](char key) { return std::string(1, key); });
    }
    return std::nullopt;
}

} // namespace

std::string typedBy(std::span<const std::string> words) {
    std::string typed;
    bool isText = false;
    for (const std::string& word : words) {
        if (!isText && word == "--")
            isText = true;
        else
            typed += isText ? word : keyNamed(word).value_or(word);
    }
    return typed;
}

} // namespace velmo

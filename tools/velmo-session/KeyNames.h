#pragma once

#include <span>
#include <string>

namespace velmo {

/// Returns what the keys type, one word a key or a text: "Enter", "C-c", "M-x", "Up", "F5" and the
/// like are keys, with the names that tmux's send-keys has for them, and any other word stands for
/// itself. Nothing stands between the words. Behind a word "--" every word stands for itself.
std::string typedBy(std::span<const std::string> words);

} // namespace velmo

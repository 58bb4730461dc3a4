#pragma once

#include "core/terminal/PtyFrame.h"

#include <string>
#include <vector>

/// What a client sends along when it asks the session host to start a program.
namespace velmo::SessionStart {

/// Returns the variables of the caller's environment that are sent to the host, which decides what
/// reaches the program.
std::vector<std::string> environmentToSend();

/// Returns the command line in the policy's form, for a program with its arguments or, if there are
/// no words, the user's log-in shell. The program is an absolute path. A shell without arguments
/// gets "-l", which makes it a log-in shell, and tmux "new-session". The target of ssh gets its
/// "--".
std::vector<std::string> commandOf(std::vector<std::string> command);

/// Returns the words of the call: options, "--", and the command.
std::vector<std::string> wordsOf(const std::string& folder, PtyFrame::Size size,
                                 const std::vector<std::string>& command);

/// Returns the folder's absolute path, with links resolved if the folder exists.
std::string absolute(const std::string& folder);

/// Returns the file's absolute path, with links in the path of its folder resolved if that exists.
std::string absoluteFile(const std::string& file);

/// Returns the absolute path of the user's home folder.
std::string home();

} // namespace velmo::SessionStart

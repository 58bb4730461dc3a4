#pragma once

#include "tools/command-line/CommandLine.h"
#include "tools/pages/Template.h"

namespace velmo::Pages {

/// Returns what takes the place of the marks in the manual page of a program, in the man macros of
/// troff: PROGRAM, HELP, TITLE, VERSION, SYNOPSIS and OPTIONS.
Marks manualMarks(const CommandLine::Program& program);

} // namespace velmo::Pages

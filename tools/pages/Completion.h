#pragma once

#include "tools/command-line/CommandLine.h"
#include "tools/pages/Template.h"

/// What takes the place of the marks in the script by which a shell completes a program's verbs,
/// options and values, and the command that a verb runs: PROGRAM, FUNCTION, a name for functions,
/// and the tables of the program in the shell's language.
namespace velmo::Pages {

/// The tables are VERBS, all verbs, TABLES, a case for each verb, and VALUES, a case for each value
/// that can be completed.
Marks bashMarks(const CommandLine::Program& program);

/// The tables are VERBS, each verb with its help, and TABLES, a case for each verb with its
/// arguments for `_arguments`.
Marks zshMarks(const CommandLine::Program& program);

/// The tables are VALUED, the options with a value, COMMANDS, the verbs that run a command, and
/// TABLES, a line for each verb, option and operand.
Marks fishMarks(const CommandLine::Program& program);

} // namespace velmo::Pages

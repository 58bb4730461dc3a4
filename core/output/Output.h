#pragma once

#include "core/support/Record.h"

#include <expected>
#include <functional>
#include <string>
#include <string_view>

/// Prints records, and lists of records, as one line of JSON, as every program of the host does.
/// What the programs' command lines say is read beside it: `ControlCommand` here, and
/// core/support/Args.h.
namespace velmo::Output {

/// Writes a whole line, line feed included, in one write. For standard output this is
/// `writeStandardOutput` of platform/posix.
using LineSink = std::function<void(std::string_view line)>;

/// Returns the value as one line of JSON with sorted keys, without a line feed.
template<class T>
std::expected<std::string, EncodingError> jsonLine(const T& value) {
    return encodeJson(value);
}

/// Writes the value as a line of JSON with its line feed, in one piece. A value that can't be
/// encoded is written as "[]", so that the reader always gets a line that it can parse.
template<class T>
void print(const T& value, const LineSink& standardOutput) {
    standardOutput(jsonLine(value).value_or("[]") + '\n');
}

} // namespace velmo::Output

#pragma once

#include "core/support/Record.h"

#include <expected>
#include <functional>
#include <string>
#include <string_view>

/// The one way in which every record, or list of records, leaves a process: a JSON line.
namespace velmo::Output {

/// Takes a whole line, line feed included, in one write; for standard output
/// `writeStandardOutput` of platform/posix.
using LineSink = std::function<void(std::string_view line)>;

/// The value on one line, keys sorted, without a line feed.
template<class T>
std::expected<std::string, EncodingError> jsonLine(const T& value) {
    return encodeJson(value);
}

/// Hands over the JSON line and a line feed in one piece. A value that can't be encoded prints
/// "[]", so that the reader always gets one line that parses.
template<class T>
void print(const T& value, const LineSink& standardOutput) {
    standardOutput(jsonLine(value).value_or("[]") + '\n');
}

} // namespace velmo::Output

#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/SequenceReader.h"

#include <cstddef>
#include <string>

namespace velmo {

/// Passes on those pieces of a program's output that only show something: text, colours and styles,
/// movement, erasing, known modes, the title, links, marks, and colours of the palette. Everything
/// else is left out, since some of it makes a terminal answer. If output is shown again, or shown
/// on a second terminal, the program does not wait for that answer and would read it as typed keys.
/// The filter lists what is allowed, since a list of what is not allowed could never be complete.
///
/// Nothing that passes erases the lines that have scrolled off the top of the terminal: they are
/// the user's. A reset becomes a soft reset that clears the screen.
class ReplayFilter {
public:
    /// `reportsFocus` tells whether earlier output has asked for focus reports.
    explicit ReplayFilter(bool reportsFocus = false) : reportsFocus_(reportsFocus) {}

    /// Appends the part of the next output that may be shown.
    void pass(ByteView output, Bytes& shown);

    /// Reads output that is shown unfiltered, so that the filter knows where pieces end.
    void follow(ByteView output);

    /// Tells whether the next byte begins a new piece. Only there may the stream change between
    /// filtered and unfiltered.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    /// Returns how many bytes of the output complete the current piece: 0 at rest, and all of them
    /// if the piece goes on.
    [[nodiscard]] std::size_t lengthToRest(ByteView output) const;

    /// Returns whether the program has asked for focus reports, in output that was passed or
    /// followed. That mode never passes, since many terminals report at once when it is set.
    [[nodiscard]] bool reportsFocus() const { return reportsFocus_; }

private:
    void note(const SequenceReader::Sequence& sequence);

    SequenceReader reader_;
    bool reportsFocus_;
};

/// Returns the bytes to show in a replay for a piece of output; "" for a piece that is left out.
std::string shownAgain(const SequenceReader::Sequence& sequence);

} // namespace velmo

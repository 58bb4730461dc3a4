#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/SequenceReader.h"

#include <cstddef>
#include <string>

namespace velmo {

/// Passes on those pieces of a program's output that only show something: text, colours and styles,
/// movement, erasing, known modes, the title. Everything else is left out, since some of it makes a
/// terminal answer. If output is shown again, or shown on a second terminal, the program does not
/// wait for that answer and would read it as typed keys. The filter lists what is allowed, since a
/// list of what is not allowed could never be complete.
class ReplayFilter {
public:
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

private:
    SequenceReader reader_;
};

/// Returns the bytes to show in a replay for a piece of output; "" for a piece that is left out.
std::string shownAgain(const SequenceReader::Sequence& sequence);

} // namespace velmo

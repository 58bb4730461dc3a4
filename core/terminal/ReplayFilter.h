#pragma once

#include "core/support/Bytes.h"
#include "core/terminal/SequenceReader.h"

#include <cstddef>
#include <string>

namespace velmo {

/// Passes on of a program's output what only shows something: text, colours and styles, movement,
/// erasing, known modes, the title. Everything else is left out, since some of it makes a terminal
/// answer, and the answer would be typed into the program: when output is shown again, or shown on
/// a terminal whose answers nobody waits for. It is a list of what is allowed; no list of what is
/// not could ever be complete.
class ReplayFilter {
public:
    /// Appends what may be shown of the next output.
    void pass(ByteView output, Bytes& shown);

    /// Takes note of output that is shown unfiltered.
    void follow(ByteView output);

    /// Tells whether the next byte begins a new piece, so that what follows may be shown unfiltered
    /// after filtered output, and the other way round.
    [[nodiscard]] bool isAtRest() const { return reader_.isAtRest(); }

    /// Returns the length of what completes the piece that the stream stands in: all of the output
    /// if that does not.
    [[nodiscard]] std::size_t lengthToRest(ByteView output) const;

private:
    SequenceReader reader_;
};

/// Returns the bytes by which a piece of output is shown again; "" for one that is not.
std::string shownAgain(const SequenceReader::Sequence& sequence);

} // namespace velmo

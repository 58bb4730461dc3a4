#pragma once

#include "lab/emulated-mac/shims/ObjectiveC.h"
#include "lab/emulated-mac/shims/XpcWire.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One call of a protocol as it goes over XPC: what is sent and what is built from it follows from
/// the extended type encoding, as NSXPCInterface has it.
namespace velmo {

/// The kinds of the arguments behind the receiver and the selector; the reply block's own.
struct CallTypes {
    std::vector<std::string> arguments; ///< "q", "B", "@\"NSString\""
    std::optional<std::vector<std::string>> reply;
};

/// Absent for a selector that the protocol does not have.
std::optional<CallTypes> typesOf(const Protocol* protocol, std::string_view selector);

using Registers = std::array<std::uint64_t, 6>;

Words encoded(const std::vector<std::string>& types, const Registers& values);

/// The values of a message's words from `first` on. Objects are autoreleased. Absent if the words
/// are of other types: a message that can't be decoded.
std::optional<Registers> decoded(const std::vector<std::string>& types, const Words& words,
                                 std::size_t first);

/// Makes a block that tells `reply` what it is called with, once; a second call ends the run. If it
/// is let go of without a call, `reply` gets nothing.
Block* makeReplyBlock(std::vector<std::string> types,
                      std::function<void(std::optional<Words>)> reply);

} // namespace velmo

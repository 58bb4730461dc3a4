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

/// A call of a protocol as it goes over XPC. The extended type encoding tells what is sent and what
/// is built from it, as with NSXPCInterface.
namespace velmo {

/// The types of the arguments behind the receiver and the selector, and those of the reply block.
struct CallTypes {
    std::vector<std::string> arguments; ///< "q", "B", "@\"NSString\""
    std::optional<std::vector<std::string>> reply;
};

/// Returns the types of a call; absent for a selector that the protocol does not have.
std::optional<CallTypes> typesOf(const Protocol* protocol, std::string_view selector);

using Registers = std::array<std::uint64_t, 6>;

Words encoded(const std::vector<std::string>& types, const Registers& values);

/// Returns the values of a message's words from `first` on. Objects are autoreleased. Absent if the
/// words are of other types, so that the message can't be decoded.
std::optional<Registers> decoded(const std::vector<std::string>& types, const Words& words,
                                 std::size_t first);

/// Makes a block that passes the values of its one call to `reply`. A second call ends the run. If
/// the block is released without a call, `reply` gets nothing.
Block* makeReplyBlock(std::vector<std::string> types,
                      std::function<void(std::optional<Words>)> reply);

} // namespace velmo

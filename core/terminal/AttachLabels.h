#pragma once

#include "core/support/Record.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The texts that the attach client writes to the user's terminal. A terminal obeys what it is
/// sent, and the texts come from another process. So control characters are removed first, and with
/// them the bidirectional controls, which make a text look like a different one.
namespace velmo::PtyAttach {

inline constexpr std::size_t maxLabel = 200; ///< user-perceived characters
inline constexpr std::size_t maxTitle = 120; ///< user-perceived characters

/// What the client tells the user at the end, in English unless the host sends other texts.
/// "{code}" stands for a code; see `fill`.
struct Labels {
    std::string exit = "The program ended (code {code}).";
    std::string detached = "Detached. The session keeps running in Velmo: continue it on your "
                           "phone or with Open on the computer.";
    std::string ended = "This session had already ended.";
    std::string hostGone = "Velmo closed, and the session ended with it.";
    std::string error = "Velmo couldn't connect this window ({code}).";

    static constexpr auto fields =
        std::tuple{field("exit", &Labels::exit), field("detached", &Labels::detached),
                   field("ended", &Labels::ended), field("hostGone", &Labels::hostGone),
                   field("error", &Labels::error)};
    bool operator==(const Labels&) const = default;
};

inline Labels english() {
    return {};
}

/// Returns the label with the code in place of each "{code}". A "{code}" in the code itself stays.
std::string fill(std::string_view label, std::string_view code);

/// Returns the text as valid UTF-8 without control characters and bidirectional controls, cut to
/// `maxLabel`.
std::string sanitizeLabel(std::string_view text);

/// Returns the same, cut to `maxTitle`.
std::string sanitizeTitle(std::string_view text);

/// Returns the control sequence that makes a terminal show the title. Sanitises the title first.
std::string titleSequence(std::string_view title);

} // namespace velmo::PtyAttach

#pragma once

#include "core/support/Record.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Texts that the attach client writes to the user's terminal. They come from another process, and
/// a terminal obeys what it is sent: no control character and no bidirectional control gets out.
namespace velmo::PtyAttach {

inline constexpr std::size_t longestLabel = 200; ///< user-perceived characters
inline constexpr std::size_t longestTitle = 120; ///< user-perceived characters

/// What is said at the end, in English unless the host says otherwise. "{code}" stands for a code;
/// see `fill`.
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

/// Every "{code}" replaced; what the code holds is not searched again.
std::string fill(std::string_view label, std::string_view code);

/// Valid UTF-8 without the scalars that a terminal obeys, cut to `longestLabel`.
std::string sanitizeLabel(std::string_view text);

/// The same, cut to `longestTitle`.
std::string sanitizeTitle(std::string_view text);

/// What makes a terminal show the title, which is sanitised here.
std::string titleSequence(std::string_view title);

} // namespace velmo::PtyAttach

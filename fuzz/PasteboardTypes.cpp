#include "core/clipboard/ClipboardReply.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

/// The input is the type identifiers that other applications put on the pasteboard, a line each.
void checkPasteboardTypes(Input input) {
    using namespace PasteboardPolicy;
    auto types = input.words();
    const bool hidden = isPrivate(types);
    require((watchKind(types) == "concealed") == hidden);
    require((watchKind(types) == "empty") == (!hidden && pick(types) == Content::none));

    const auto reply = ClipboardReply::ofEmpty(1).reporting(types);
    require(reply.types && reply.types->size() == std::min(types.size(), reportedTypesMax));
    for (const std::string& type : *reply.types)
        require(!Text::hasMoreCharactersThan(type, 200));
    require(JsonDocument::parse(encodeJson(reply).value()).has_value());

    for (const std::string_view marker : concealedTypes) {
        types.push_back(Text::lowercased(marker));
        require(isPrivate(types) && pick(types) == Content::none);
        types.pop_back();
    }
}

const Target pasteboardTypesTarget("PasteboardTypes", checkPasteboardTypes);

} // namespace

} // namespace velmo::Fuzz

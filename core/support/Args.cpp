#include "core/support/Args.h"

#include "core/support/Decimal.h"
#include "core/support/Text.h"

#include <string>

namespace velmo::Args {

std::optional<std::int32_t> pid(std::optional<std::string_view> text) {
    return text.and_then([](std::string_view digits) {
        return Decimal::parseUnsigned<std::int32_t>(digits, {.min = 1});
    });
}

std::optional<FileUrl> appPath(std::optional<std::string_view> text,
                               const IsDirectory& isDirectory) {
    if (!text || !text->ends_with(".app") || text->contains('\0') || !Text::isValidUtf8(*text)
        || !isDirectory(*text))
        return std::nullopt;
    return FileUrl{.path = std::string(*text)};
}

} // namespace velmo::Args

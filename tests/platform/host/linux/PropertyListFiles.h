#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace velmo {

inline std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

inline std::string xmlList(std::string_view content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">"
           + std::string(content) + "</plist>\n";
}

/// Returns the same list in the binary form, as libplist writes it.
inline std::string binaryList(std::string_view content) {
    const std::string xml = xmlList(content);
    plist_t list = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &list);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list, &bytes, &length);
    plist_free(list);
    std::string result(bytes, length);
    std::free(bytes);
    return result;
}

} // namespace velmo

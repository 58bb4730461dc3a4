#include "lab/emulated-mac/shims/Machine.h"

#include "lab/emulated-mac/shims/Fault.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace velmo {

namespace {

using namespace std::literals;

constexpr std::array movedFolders = {"/var/"sv, "/usr/bin/pmset"sv, "/Library/"sv};

std::string mac() {
    const auto folder = setting("EMULATED_MAC");
    if (!folder)
        endRun("EMULATED_MAC does not name a folder");
    return *folder;
}

} // namespace

std::optional<std::string> setting(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::optional<std::string> fact(const std::string& name) {
    std::ifstream file(mac() + "/machine/" + name);
    std::string line;
    return std::getline(file, line) ? std::optional(line) : std::nullopt;
}

std::int64_t factOr(const std::string& name, std::int64_t otherwise) {
    const auto text = fact(name);
    return text ? std::strtoll(text->c_str(), nullptr, 10) : otherwise;
}

std::string placeOf(const std::string& path) {
    for (const std::string_view folder : movedFolders) {
        if (path.starts_with(folder))
            return mac() + "/root" + path;
    }
    return path;
}

std::string socketOf(const std::string& service) {
    return mac() + "/mach/" + service;
}

} // namespace velmo

/// SecCode.h, CSCommon.h.

#include "lab/emulated-mac/shims/Security.h"

#include "lab/emulated-mac/shims/CoreFoundation.h"
#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"
#include "lab/emulated-mac/shims/Machine.h"
#include "lab/emulated-mac/shims/Shims.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <vector>

namespace velmo {

Identity ownIdentity() {
    return {.team = setting("EMULATED_TEAM").value_or(""),
            .identifier = setting("EMULATED_IDENTIFIER").value_or("")};
}

namespace {

/// Splits a requirement into tokens. Words and marks are tokens as they stand; the token of a
/// quoted text begins with a quote.
std::optional<std::vector<std::string>> tokensOf(std::string_view text) {
    std::vector<std::string> tokens;
    for (std::size_t i = 0; i < text.size();) {
        const auto isWord = [&](std::size_t at) {
            return at < text.size()
                   && (std::isalnum(static_cast<unsigned char>(text[at])) != 0 || text[at] == '.');
        };
        std::size_t end = i + 1;
        if (text[i] == ' ') {
            i = end;
            continue;
        }
        if (text[i] == '"') {
            end = text.find('"', end);
            if (end == std::string_view::npos)
                return std::nullopt;
            tokens.emplace_back(text.substr(i, end - i));
            i = end + 1;
            continue;
        }
        while (isWord(i) && isWord(end))
            ++end;
        tokens.emplace_back(text.substr(i, end - i));
        i = end;
    }
    return tokens;
}

/// Evaluates a requirement while it reads it. An absent result means that the requirement is
/// malformed.
class Requirement {
public:
    Requirement(std::vector<std::string> tokens, const Identity& identity)
        : tokens_(std::move(tokens)), identity_(identity) {}

    std::optional<bool> evaluate() {
        const auto value = any();
        return at_ == tokens_.size() ? value : std::nullopt;
    }

private:
    bool take(std::string_view token) {
        if (at_ == tokens_.size() || tokens_[at_] != token)
            return false;
        ++at_;
        return true;
    }

    bool take(std::initializer_list<std::string_view> tokens) {
        for (const std::string_view token : tokens) {
            if (!take(token))
                return false;
        }
        return true;
    }

    std::optional<bool> any() {
        auto value = all();
        while (value && take("or")) {
            const auto next = all();
            value = next ? std::optional(*value || *next) : std::nullopt;
        }
        return value;
    }

    std::optional<bool> all() {
        auto value = one();
        while (value && take("and")) {
            const auto next = one();
            value = next ? std::optional(*value && *next) : std::nullopt;
        }
        return value;
    }

    std::optional<bool> one() {
        if (take("!")) {
            const auto value = one();
            return value ? std::optional(!*value) : std::nullopt;
        }
        if (take("(")) {
            const auto value = any();
            return take(")") ? value : std::nullopt;
        }
        if (take("anchor"))
            return take({"apple", "generic"}) ? std::optional(!identity_.team.empty())
                                              : std::nullopt;
        if (take("identifier"))
            return equals(identity_.identifier);
        if (take("certificate"))
            return take({"leaf", "[", "subject.OU", "]", "="}) ? equals(identity_.team)
                                                               : std::nullopt;
        return std::nullopt;
    }

    std::optional<bool> equals(const std::string& fact) {
        if (at_ == tokens_.size() || !tokens_[at_].starts_with('"'))
            return std::nullopt;
        return tokens_[at_++].substr(1) == fact;
    }

    std::vector<std::string> tokens_;
    std::size_t at_ = 0;
    const Identity& identity_;
};

} // namespace

std::optional<bool> satisfies(std::string_view requirement, const Identity& identity) {
    auto tokens = tokensOf(requirement);
    return tokens ? Requirement(std::move(*tokens), identity).evaluate() : std::nullopt;
}

namespace {

constexpr std::uint32_t signingInformation = 1 << 1; // kSecCSSigningInformation

/// Returns the process's own code. Both kinds of code are opaque, and are objects without content
/// here.
std::int32_t copySelf(std::uint32_t /*flags*/, Object** code) {
    *code = makeDictionary();
    return 0;
}

std::int32_t copyStaticCode(const Object* /*code*/, std::uint32_t /*flags*/, Object** staticCode) {
    *staticCode = makeDictionary();
    return 0;
}

/// Returns what the flag asks for, which includes the team. A fact that the signature does not tell
/// has no key.
std::int32_t copyInformation(const Object* /*code*/, std::uint32_t flags, Object** information) {
    auto* const made = makeDictionary();
    const Identity self = ownIdentity();
    if ((flags & signingInformation) != 0 && !self.team.empty())
        made->with("teamid", stringOf(self.team));
    note("SecCodeCopySigningInformation: " + (self.team.empty() ? "no team" : "team " + self.team));
    *information = made;
    return 0;
}

ConstantString teamKey{{&constantString.object}, 0, "teamid", 6};
const Object* teamIdentifierKey = &teamKey;

constexpr auto shims = std::to_array<Shim>({
    {"_SecCodeCopySelf", address<copySelf>},
    {"_SecCodeCopySigningInformation", address<copyInformation>},
    {"_SecCodeCopyStaticCode", address<copyStaticCode>},
    {"_kSecCodeInfoTeamIdentifier", address<&teamIdentifierKey>},
});

} // namespace

Shims securityShims() {
    return shims;
}

} // namespace velmo

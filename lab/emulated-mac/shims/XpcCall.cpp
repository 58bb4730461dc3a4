#include "lab/emulated-mac/shims/XpcCall.h"

#include "lab/emulated-mac/shims/Fault.h"
#include "lab/emulated-mac/shims/Foundation.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <utility>

namespace velmo {

namespace {

/// Reads encodings as the runtime's documentation ("Type Encodings") tells, one after the other,
/// with the offsets between them left out.
class Encodings {
public:
    explicit Encodings(std::string_view text) : text_(text) {}

    /// Returns the next encoding; empty at the end.
    std::string next() {
        const std::size_t begin = at_;
        if (at_ == text_.size())
            return {};
        const char first = text_[at_++];
        if (first == '@' && peek('?')) {
            ++at_;
            if (peek('<'))
                at_ = text_.find('>', at_) + 1;
        } else if (first == '@' && peek('"')) {
            at_ = text_.find('"', at_ + 1) + 1;
        }
        std::string encoding(text_.substr(begin, at_ - begin));
        while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9')
            ++at_;
        return encoding;
    }

private:
    [[nodiscard]] bool peek(char c) const { return at_ < text_.size() && text_[at_] == c; }

    std::string_view text_;
    std::size_t at_ = 0;
};

std::vector<std::string> allOf(std::string_view text) {
    Encodings encodings(text);
    std::vector<std::string> all;
    for (std::string next = encodings.next(); !next.empty(); next = encodings.next())
        all.push_back(next);
    return all;
}

constexpr std::string_view blockStart = "@?<";

CallTypes split(std::string_view extendedTypes) {
    std::vector<std::string> all = allOf(extendedTypes);
    CallTypes types;
    all.erase(all.begin(), all.begin() + 3); // result, receiver, selector
    if (!all.empty() && all.back().starts_with(blockStart)) {
        std::string_view block = all.back();
        block.remove_prefix(blockStart.size());
        block.remove_suffix(1);
        types.reply = allOf(block);
        types.reply->erase(types.reply->begin(), types.reply->begin() + 2); // result, block
        all.pop_back();
    }
    types.arguments = std::move(all);
    return types;
}

constexpr std::string_view stringType = "@\"NSString\"";

std::string encodedOne(std::string_view type, std::uint64_t value) {
    if (type == "q")
        return "q" + std::to_string(static_cast<std::int64_t>(value));
    if (type == "B")
        return (value & 0xFF) != 0 ? "B1" : "B0";
    if (type != stringType)
        endRun("an argument over XPC of type " + std::string(type));
    const auto* const object = reinterpret_cast<const Object*>(value);
    if (object == nullptr)
        return "-";
    if (!isString(object))
        misuse("an object of another class than the protocol names goes over XPC");
    return "@" + textOf(object);
}

std::optional<std::uint64_t> decodedOne(std::string_view type, std::string_view word) {
    if (type == stringType && word == "-")
        return 0;
    if (word.empty() || word.front() != type.front())
        return std::nullopt;
    word.remove_prefix(1);
    if (type == stringType)
        return reinterpret_cast<std::uintptr_t>(autorelease(stringOf(std::string(word))));
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size())
        return std::nullopt;
    return static_cast<std::uint64_t>(number);
}

} // namespace

std::optional<CallTypes> typesOf(const Protocol* protocol, std::string_view selector) {
    const MethodList* const methods = protocol->instanceMethods;
    const auto* const found =
        std::ranges::find_if(*methods, [&](const Method& each) { return each.name == selector; });
    if (found == methods->end())
        return std::nullopt;
    if (protocol->extendedTypes == nullptr)
        misuse("a protocol without extended types goes over XPC");
    return split(protocol->extendedTypes[found - methods->begin()]);
}

Words encoded(const std::vector<std::string>& types, const Registers& values) {
    Words words;
    for (std::size_t i = 0; i < types.size(); ++i)
        words.push_back(encodedOne(types[i], values.at(i)));
    return words;
}

std::optional<Registers> decoded(const std::vector<std::string>& types, const Words& words,
                                 std::size_t first) {
    Registers values{};
    if (words.size() != first + types.size() || types.size() > values.size())
        return std::nullopt;
    for (std::size_t i = 0; i < types.size(); ++i) {
        const auto value = decodedOne(types[i], words[first + i]);
        if (!value)
            return std::nullopt;
        values.at(i) = *value;
    }
    return values;
}

namespace {

struct ReplyBlock : Block {
    struct Content {
        std::vector<std::string> types;
        std::function<void(std::optional<Words>)> reply;
        bool wasCalled = false;
    };

    Content* content;
};

void callReply(ReplyBlock* block, std::uint64_t a, std::uint64_t b, std::uint64_t c,
               std::uint64_t d, std::uint64_t e, std::uint64_t f) {
    if (std::exchange(block->content->wasCalled, true))
        misuse("a reply block is called twice");
    block->content->reply(encoded(block->content->types, {a, b, c, d, e, f}));
}

void disposeReply(Block* block) {
    auto* const content = static_cast<ReplyBlock*>(block)->content;
    if (!content->wasCalled)
        content->reply(std::nullopt);
    delete content;
}

constexpr Block::Descriptor replyDescriptor{
    .reserved = 0, .size = sizeof(ReplyBlock), .copy = nullptr, .dispose = disposeReply};

} // namespace

Block* makeReplyBlock(std::vector<std::string> types,
                      std::function<void(std::optional<Words>)> reply) {
    auto* const block = static_cast<ReplyBlock*>(std::calloc(1, sizeof(ReplyBlock)));
    block->flags = Block::hasCopyDispose;
    block->invoke = reinterpret_cast<void*>(callReply);
    block->descriptor = &replyDescriptor;
    block->content = new ReplyBlock::Content{.types = std::move(types), .reply = std::move(reply)};
    keepOnHeap(block);
    return block;
}

} // namespace velmo

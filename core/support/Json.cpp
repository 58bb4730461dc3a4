#include "core/support/Json.h"

#include "core/support/JsonLiteral.h"

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <string>
#include <utility>
#include <vector>

namespace velmo {

namespace dom = simdjson::dom;

/// Where the members go that a caller asks for.
struct WantedMembers {
    const NameTable& names;
    std::span<JsonPlainValue> found;
};

/// What this file knows of a reference and no other does.
struct JsonParser {
    static dom::element elementOf(const JsonReference& reference) {
        return std::bit_cast<dom::element>(reference.words_);
    }

    static JsonReference referenceTo(const dom::element& element) {
        JsonReference reference;
        reference.words_ = std::bit_cast<decltype(reference.words_)>(element);
        return reference;
    }
};

namespace {

dom::element elementOf(const JsonReference& reference) {
    return JsonParser::elementOf(reference);
}

JsonReference referenceTo(const dom::element& element) {
    return JsonParser::referenceTo(element);
}

template<class T>
std::optional<T> valueOf(simdjson::simdjson_result<T> result) {
    T value;
    if (std::move(result).get(value) != simdjson::SUCCESS)
        return std::nullopt;
    return value;
}

// Only made for elements that were found to be an object or an array.
dom::object objectOf(const JsonReference& reference) {
    return elementOf(reference).get_object().value_unsafe();
}

dom::array arrayOf(const JsonReference& reference) {
    return elementOf(reference).get_array().value_unsafe();
}

/// What takes the place of a numeral that no type of number can represent: an object that names a
/// member twice, which no accepted document can say.
constexpr std::string_view unrepresentable = R"({"":0,"":0})";

bool isUnrepresentable(const dom::element& element) {
    if (!element.is_object())
        return false;
    const dom::object object = element.get_object().value_unsafe();
    return object.size() == 2
           && std::all_of(object.begin(), object.end(),
                          [](const dom::key_value_pair& member) { return member.key.empty(); });
}

JsonPlainValue plainValueOf(const dom::element& element) {
    switch (element.type()) {
    case dom::element_type::STRING:
        return JsonPlainValue(element.get_string().value_unsafe());
    case dom::element_type::INT64:
        return JsonPlainValue(element.get_int64().value_unsafe());
    case dom::element_type::BOOL:
        return JsonPlainValue(element.get_bool().value_unsafe());
    default:
        return {};
    }
}

bool namesOneTwice(const dom::object& object) {
    std::vector<std::string_view> names;
    for (const dom::key_value_pair member : object)
        names.push_back(member.key);
    std::ranges::sort(names);
    return std::ranges::adjacent_find(names) != names.end();
}

/// Counts the objects in which a member is named twice, up to one more than `max`. Two readers that
/// pick different ones of two equal members are how a check is walked round. Members of this very
/// object that are wanted are found in the same walk. Recursion is bounded by the parser's own
/// limit on nesting.
// NOLINTNEXTLINE(misc-no-recursion)
std::size_t countNamingTwice(const dom::element& element, std::size_t max,
                             const WantedMembers* wanted = nullptr) {
    std::size_t count = 0;
    if (element.is_array()) {
        const dom::array array = element.get_array().value_unsafe();
        for (const dom::element each : array) {
            if (count > max)
                break;
            count += countNamingTwice(each, max - count);
        }
        return count;
    }
    if (!element.is_object())
        return 0;
    const dom::object object = element.get_object().value_unsafe();
    std::uint64_t seen = 0;
    bool perhapsTwice = false;
    for (const dom::key_value_pair member : object) {
        const std::size_t slot = NameTable::slotOf(member.key);
        const std::uint64_t bit = std::uint64_t{1} << slot;
        perhapsTwice = perhapsTwice || (seen & bit) != 0;
        seen |= bit;
        if (member.value.is_object() || member.value.is_array())
            count += countNamingTwice(member.value, max - count);
        if (count > max)
            return count;
        if (wanted == nullptr)
            continue;
        if (const auto at = wanted->names.find(member.key, slot); at < wanted->found.size())
            wanted->found[at] = plainValueOf(member.value);
    }
    return count + (perhapsTwice && namesOneTwice(object) ? 1 : 0);
}

} // namespace

JsonKind JsonValue::kind() const {
    switch (elementOf(reference_).type()) {
    case dom::element_type::ARRAY:
        return JsonKind::array;
    case dom::element_type::OBJECT:
        return isUnrepresentable(elementOf(reference_)) ? JsonKind::real : JsonKind::object;
    case dom::element_type::INT64:
    case dom::element_type::UINT64:
        return JsonKind::integer;
    case dom::element_type::DOUBLE:
        return JsonKind::real;
    case dom::element_type::STRING:
        return JsonKind::text;
    case dom::element_type::BOOL:
        return JsonKind::boolean;
    default: // null; newer parsers know further kinds, and return them only if told to
        break;
    }
    return JsonKind::null;
}

std::optional<bool> JsonValue::boolean() const {
    return valueOf(elementOf(reference_).get_bool());
}

std::optional<std::int64_t> JsonValue::integer() const {
    return valueOf(elementOf(reference_).get_int64());
}

std::optional<double> JsonValue::number() const {
    return valueOf(elementOf(reference_).get_double());
}

std::optional<std::string_view> JsonValue::text() const {
    return valueOf(elementOf(reference_).get_string());
}

std::optional<JsonArray> JsonValue::array() const {
    if (!elementOf(reference_).is_array())
        return std::nullopt;
    return JsonArray(reference_);
}

std::optional<JsonObject> JsonValue::object() const {
    if (kind() != JsonKind::object)
        return std::nullopt;
    return JsonObject(reference_);
}

std::vector<JsonValue> JsonArray::elements() const {
    std::vector<JsonValue> result;
    for (const dom::element element : arrayOf(reference_))
        result.emplace_back(referenceTo(element));
    return result;
}

std::optional<JsonValue> JsonObject::member(std::string_view name) const {
    const auto found = valueOf(objectOf(reference_).at_key(name));
    if (!found)
        return std::nullopt;
    return JsonValue(referenceTo(*found));
}

std::vector<JsonMember> JsonObject::members() const {
    std::vector<JsonMember> result;
    for (const dom::key_value_pair member : objectOf(reference_))
        result.push_back({.name = member.key, .value = JsonValue(referenceTo(member.value))});
    return result;
}

std::size_t JsonObject::size() const {
    return objectOf(reference_).size();
}

std::optional<bool> JsonObject::boolean(std::string_view name) const {
    return member(name).and_then(&JsonValue::boolean);
}

std::optional<std::int64_t> JsonObject::integer(std::string_view name) const {
    return member(name).and_then(&JsonValue::integer);
}

std::optional<std::string_view> JsonObject::text(std::string_view name) const {
    return member(name).and_then(&JsonValue::text);
}

std::optional<JsonObject> JsonObject::object(std::string_view name) const {
    return member(name).and_then(&JsonValue::object);
}

/// On the heap because every value points at it. The parser stays with its document for the next.
struct JsonStorage {
    dom::parser parser;
    dom::document document;
};

namespace {

/// What a parser needs takes longer to allocate than a short line to parse, so each thread keeps
/// one for its next line; but not what a long text has made it grow to.
class Spare {
public:
    static constexpr std::size_t maxKept = 16384; ///< bytes of text

    Spare() = default;
    Spare(const Spare&) = delete;
    Spare& operator=(const Spare&) = delete;

    ~Spare() { threadEnds = true; }

    static std::unique_ptr<JsonStorage> take() {
        const bool isKept = !threadEnds && ofThread.storage_;
        return isKept ? std::move(ofThread.storage_) : std::make_unique<JsonStorage>();
    }

    static void giveBack(std::unique_ptr<JsonStorage> storage) {
        if (!threadEnds && storage && storage->parser.capacity() <= maxKept)
            ofThread.storage_ = std::move(storage);
    }

private:
    static thread_local Spare ofThread;
    static thread_local bool threadEnds; ///< a document may outlive what its thread keeps

    std::unique_ptr<JsonStorage> storage_;
};

thread_local Spare Spare::ofThread;
thread_local bool Spare::threadEnds = false;

bool isNumeralCharacter(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

/// Whether the grammar allows the numeral.
bool isNumeral(std::string_view text) {
    const auto takeDigits = [&text] {
        const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(count);
        return count > 0;
    };
    if (text.starts_with('-'))
        text.remove_prefix(1);
    const bool zero = text.starts_with('0');
    if (zero)
        text.remove_prefix(1);
    else if (!takeDigits())
        return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!takeDigits())
            return false;
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('-') || text.starts_with('+'))
            text.remove_prefix(1);
        if (!takeDigits())
            return false;
    }
    return text.empty();
}

struct Marked {
    std::string text;
    std::size_t count = 0; ///< of marks
};

/// Returns whether the parser refused a numeral. Newer parsers report an integer beyond 64 bits as
/// BIGINT_ERROR. Older ones do not define that error.
template<class Error>
bool isOfNumeral(Error error) {
    if constexpr (requires { Error::BIGINT_ERROR; }) {
        if (error == Error::BIGINT_ERROR)
            return true;
    }
    return error == Error::NUMBER_ERROR;
}

/// Puts marks in the place of all numerals that the parser can't represent.
Marked markUnrepresentable(std::string_view text, dom::parser& parser) {
    Marked marked;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == '"') {
            const std::size_t end = endOfLiteral(text, i).value_or(text.size());
            marked.text += text.substr(i, end - i);
            i = end;
            continue;
        }
        const std::string_view rest = text.substr(i);
        const auto* const end = std::ranges::find_if_not(rest, isNumeralCharacter);
        const std::string_view numeral(rest.begin(), end);
        if (isNumeral(numeral)
            && parser.parse(numeral.data(), numeral.size()).error() != simdjson::SUCCESS) {
            marked.text += unrepresentable;
            ++marked.count;
        } else {
            marked.text += numeral.empty() ? rest.substr(0, 1) : numeral;
        }
        i += std::max(numeral.size(), std::size_t{1});
    }
    return marked;
}

} // namespace

std::optional<JsonDocument> JsonDocument::parse(std::string_view text) {
    return parseWith(text, nullptr);
}

std::optional<JsonDocument> JsonDocument::parseAndFind(std::string_view text,
                                                       const NameTable& names,
                                                       std::span<JsonPlainValue> found) {
    const WantedMembers wanted{.names = names, .found = found};
    return parseWith(text, &wanted);
}

std::optional<JsonDocument> JsonDocument::parseWith(std::string_view text,
                                                    const WantedMembers* wanted) {
    // Newer parsers skip the mark; the verdict must not depend on their release. Of no text at all
    // even the address may be missing.
    if (text.empty() || text.starts_with("\xEF\xBB\xBF"))
        return std::nullopt;
    JsonDocument result(Spare::take());
    auto& [parser, document] = *result.storage_;
    auto root = parser.parse_into_document(document, text.data(), text.size());
    Marked marked;
    if (isOfNumeral(root.error())) {
        marked = markUnrepresentable(text, parser);
        root = parser.parse_into_document(document, marked.text.data(), marked.text.size());
    }
    // Where the text itself says what a mark says, there is one more than was put in.
    if (root.error() != simdjson::SUCCESS
        || countNamingTwice(root.value_unsafe(), marked.count, wanted) != marked.count)
        return std::nullopt;
    return result;
}

JsonDocument::JsonDocument(std::unique_ptr<JsonStorage> storage) : storage_(std::move(storage)) {
}

JsonDocument::JsonDocument(JsonDocument&&) noexcept = default;
JsonDocument& JsonDocument::operator=(JsonDocument&&) noexcept = default;

JsonDocument::~JsonDocument() {
    Spare::giveBack(std::move(storage_));
}

JsonValue JsonDocument::root() const {
    return JsonValue(referenceTo(storage_->document.root()));
}

} // namespace velmo

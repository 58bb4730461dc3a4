#include "core/input/Hotkey.h"
#include "core/input/InputDaemonWire.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace velmo::Fuzz {

namespace {

using namespace InputDaemonWire;

void requireAnswer(std::int64_t id, std::int32_t code, std::string_view error) {
    const std::string line = response(id, code, std::string(error));
    const auto answer = JsonDocument::parse(line);
    require(answer && !line.contains('\n'));
    require(answer->object()->member("id").and_then(&JsonValue::integer) == id);
    const auto told = answer->object()->member("error").and_then(&JsonValue::text);
    require(told.has_value() == (code != 0));
    require(!told || *told == Text::repaired(Text::prefix(error, 2000)));
}

/// The input is a request of the host, and also the error text of a response.
void checkInputDaemonLines(Input input) {
    const std::string_view text = input.rest();
    requireAnswer(1, 0, text);
    requireAnswer(1, -1, text);

    requireSpellingIsIgnored(text, InputDaemonWire::parse, maxLine);
    const auto request = InputDaemonWire::parse(text);
    if (!request)
        return;
    require(request->id >= 1 && request->id < std::int64_t{1} << 53);
    if (!request->argv)
        return;
    const auto& argv = *request->argv;
    require(!argv.empty() && argv.size() <= 4 && Text::isOneOf(argv.front(), verbs));
    require(std::ranges::all_of(argv, [](const auto& word) { return word.size() <= 16384; }));
    require(InputDaemonWire::parse(InputDaemonWire::request(request->id, argv).value()) == request);
    for (const std::string& key : releaseKeys(argv).value_or(std::vector<std::string>()))
        require(hasKey(Hotkey::keys, key));
}

const Target inputDaemonLinesTarget("InputDaemonLines", checkInputDaemonLines);

} // namespace

} // namespace velmo::Fuzz

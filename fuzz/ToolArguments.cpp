#include "core/output/ControlCommand.h"
#include "core/support/Args.h"
#include "core/support/Text.h"
#include "fuzz/Fuzz.h"

namespace velmo::Fuzz {

namespace {

void checkToolArguments(Input input) {
    const auto words = input.words();
    if (const auto command = ControlCommand::parse(words)) {
        std::vector<std::string> again{std::string(rawText(command->kind))};
        if (words.size() == 2)
            again.push_back(std::to_string(command->percent));
        require(command->percent >= 0 && command->percent <= 100);
        require(ControlCommand::parse(again) == command);
    }
    for (const std::string& word : words) {
        if (const auto pid = Args::pid(word))
            require(*pid >= 1 && Args::pid(std::to_string(*pid)) == pid);
        if (const auto app = Args::appPath(word, [](std::string_view) { return true; }))
            require(app->path == word && word.ends_with(".app") && Text::isValidUtf8(word));
    }
}

const Target toolArgumentsTarget("ToolArguments", checkToolArguments);

} // namespace

} // namespace velmo::Fuzz

#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"
#include "platform/posix/ChildProcess.h"

#include "lab/instruments/ScriptParts.h"
#include "lab/instruments/TemporaryFolder.h"
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <vector>

/// Texts from a phone end up in lines that a shell or AppleScript reads. Whatever they hold, they
/// must come out of it as they went in, and nothing around them may change.
namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace DevTerminal;

/// Short texts of what means something to a shell or to AppleScript.
rc::Gen<std::string> hostileText() {
    const auto pieces = std::to_array<std::string>(
        {"'",       "\"", "\\",     "$(exit 1)",  "`",
         "${HOME}", "!!", "*",      "?",          "[a]",
         "{a,b}",   "~",  "#",      ";",          "&",
         "|",       "<",  ">",      "(",          ")",
         "=",       "%s", "-n",     " ",          "\t",
         "\n",      "\r", "\x01",   "\x7F",       "a",
         "/",       "é",  "\u2028", "\U0001F44D", "\" & (do shell script \"id\") & \"",
         "'\\''"});
    const std::vector<std::string> choice(pieces.begin(), pieces.end());
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(choice)),
                        [](const std::vector<std::string>& parts) {
                            std::string text;
                            for (const std::string& part : parts)
                                text += part;
                            return text;
                        });
}

RC_GTEST_PROP(Injection, AShellReadsBackEveryQuotedWord, ()) {
    const auto words = *rc::gen::container<std::vector<std::string>>(hostileText());
    std::string line = "printf '<%s>' --";
    std::string expected = "<-->";
    for (const std::string& word : words) {
        line += " " + shellQuote(word);
        expected += "<" + word + ">";
    }
    RC_ASSERT(outputOf("/bin/sh", std::to_array<std::string_view>({"-c", line})) == expected);
}

RC_GTEST_PROP(Injection, AppleScriptReadsBackEveryText, ()) {
    const std::string text = *rc::gen::oneOf(hostileText(), rc::gen::arbitrary<std::string>());
    const ScriptParts parts = readScript(appleScriptString(text));
    RC_ASSERT(parts.around == "\"");
    RC_ASSERT(parts.literals == std::vector{text});
}

RC_GTEST_PROP(Injection, NoRequestChangesTheScriptAroundItsTexts, ()) {
    for (const App app : {App::terminal, App::iterm}) {
        for (const bool exec : {false, true}) {
            const OpenRequest harmless{
                .app = app, .cwd = "/a", .command = Tool{"codex"}, .exec = exec, .toolPath = "/b"};
            OpenRequest hostile = harmless;
            hostile.cwd = *hostileText();
            hostile.toolPath = *hostileText();
            const ScriptParts expected = readScript(openScript(harmless).value());
            const ScriptParts parts = readScript(openScript(hostile).value());
            RC_ASSERT(parts.around == expected.around);
            RC_ASSERT(parts.literals.size() == expected.literals.size());
        }
    }
}

RC_GTEST_PROP(Injection, AToolRunsInTheFolderThatWasAskedFor, ()) {
    const TemporaryFolder temporary;
    const fs::path root = fs::canonical(temporary.path());
    const std::string name = Text::replacedAll(*rc::gen::resize(8, hostileText()), "/", "_") + "x";
    const fs::path folder = root / name;
    fs::create_directory(folder);
    const fs::path tool = root / (name + "-tool");
    std::ofstream(tool) << "#!/bin/sh\npwd\nprintf '%s of %s\\n' $# \"$0\"\n";
    fs::permissions(tool, fs::perms::owner_all);

    const std::string line = shellCommand({.cwd = folder.string(),
                                           .command = Tool{"codex"},
                                           .exec = true,
                                           .toolPath = tool.string()});
    RC_ASSERT(outputOf("/bin/sh", std::to_array<std::string_view>({"-c", line}))
              == folder.string() + "\n0 of " + tool.string() + "\n");
}

} // namespace
} // namespace velmo

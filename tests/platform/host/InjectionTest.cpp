#include "core/support/Text.h"
#include "core/terminal/DevTerminal.h"
#include "lab/instruments/ScriptParts.h"
#include "lab/instruments/TemporaryFolder.h"
#include "platform/posix/ChildProcess.h"
#include "tests/Texts.h"

#include <array>
#include <fstream>

/// Tests texts from a phone in lines that a shell or AppleScript reads. Whatever such a text
/// contains, the reader must get it back unchanged, and the rest of the line must not change.
namespace velmo {
namespace {

namespace fs = std::filesystem;
using namespace DevTerminal;

/// Texts that mean something to a shell or to AppleScript.
const Strings hostile = joined(
    words(R"-(' " \ ` ${HOME} !! * ? [a] {a,b} ~ # ; & | < > ( ) = %s -n a / é '\'' {tty})-"),
    {"", " ", "\t", "\n", "\r", "\x01", "\x7F", "\u2028", "\U0001F44D", "$(exit 1)", "{command}",
     "\" & (do shell script \"id\") & \""});

/// Returns every pair of hostile texts, joined.
Strings hostileTexts() {
    Strings texts;
    for (const std::string& first : hostile) {
        for (const std::string& second : hostile)
            texts.push_back(first + second);
    }
    return texts;
}

std::optional<std::string> outputOfShell(const std::string& line) {
    return outputOf("/bin/sh", std::to_array<std::string_view>({"-c", line}));
}

TEST(Injection, AShellReadsBackEveryQuotedWord) {
    std::string line = "printf '<%s>' --";
    std::string expected = "<-->";
    for (const std::string& word : hostileTexts()) {
        line += " " + shellQuote(word);
        expected += "<" + word + ">";
    }
    EXPECT_EQ(outputOfShell(line), expected);
}

TEST(Injection, AppleScriptReadsBackEveryText) {
    for (const std::string& text : hostileTexts()) {
        const ScriptParts parts = readScript(appleScriptString(text));
        EXPECT_TRUE(parts.around == "\"" && parts.literals == Strings{text}) << text;
    }
}

TEST(Injection, NoRequestChangesTheScriptAroundItsTexts) {
    for (const App app : {App::terminal, App::iterm}) {
        for (const bool exec : {false, true}) {
            OpenRequest request{
                .app = app, .cwd = "/a", .command = Tool{"codex"}, .exec = exec, .toolPath = "/b"};
            const ScriptParts harmless = readScript(openScript(request).value());
            for (const std::string& text : hostileTexts()) {
                request.cwd = text;
                request.toolPath = "x" + text;
                const ScriptParts parts = readScript(openScript(request).value());
                EXPECT_EQ(parts.around, harmless.around) << text;
                EXPECT_EQ(parts.literals.size(), harmless.literals.size()) << text;
            }
        }
    }
}

TEST(Injection, AToolRunsInTheFolderThatWasAskedFor) {
    const TemporaryFolder temporary;
    const fs::path root = fs::canonical(temporary.path());
    for (const std::string& text : hostile) {
        const std::string odd = Text::replacedAll(text, "/", "_") + "x";
        const fs::path folder = root / odd;
        fs::create_directory(folder);
        const fs::path tool = root / (odd + "-tool");
        std::ofstream(tool) << "#!/bin/sh\npwd\nprintf '%s of %s\\n' $# \"$0\"\n";
        fs::permissions(tool, fs::perms::owner_all);
        EXPECT_EQ(outputOfShell(shellCommand({.cwd = folder.string(),
                                              .command = Tool{"codex"},
                                              .exec = true,
                                              .toolPath = tool.string()})),
                  folder.string() + "\n0 of " + tool.string() + "\n");
    }
}

} // namespace
} // namespace velmo

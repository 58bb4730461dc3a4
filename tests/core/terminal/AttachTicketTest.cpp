#include "core/terminal/AttachTicket.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <functional>
#include <set>
#include <string>

namespace velmo {
namespace {

using namespace std::string_literals;
using namespace PtyAttach;
using testing::IsEmpty;

const std::string name = "a-0123456789abcdef0123456789abcdef.json";
const std::string folder = "/private/var/T/velmo-term";
const std::string token = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN_-9";
const std::string session = "s_0123456789abcdef";
const Ticket ticket{.endpoint = folder + "/attach.sock", .token = token, .session = session};

std::string jsonOf(const Ticket& from, const std::string& version = "1") {
    return R"({"v":)" + version + R"(,"endpoint":")" + from.endpoint + R"(","token":")" + from.token
           + R"(","session":")" + from.session + "\"}";
}

/// One folder with one file, both as they should be until a test changes that.
class FakeFiles final : public FileSystem {
public:
    std::optional<std::string> temporary = "/var/T/";
    std::optional<std::string> resolvedTemporary = "/private/var/T";
    std::optional<std::string> resolvedParent = folder;
    std::optional<std::string> folderPath = folder;
    FileInfo folderInfo{FileInfo::Kind::directory, 501, 0040700, 96};
    bool folderIsExamined = true;
    FileInfo fileInfo{FileInfo::Kind::regular, 501, 0100600, 200};
    bool fileIsExamined = true;
    std::optional<Bytes> content;
    bool folderOpens = true;
    bool fileOpens = true;
    bool unlinks = true;
    int unlinked = 0;
    std::multiset<int> open_; ///< descriptors that were not closed
    int closedTooOften = 0;

    FakeFiles() { hold(jsonOf(ticket)); }

    void hold(std::string_view text) {
        content = Bytes(bytesOf(text).begin(), bytesOf(text).end());
    }

    std::uint32_t uid() override { return 501; }

    std::optional<std::string> userTempDir() override { return temporary; }

    std::optional<std::string> realpath(std::string_view path) override {
        return path == temporary ? resolvedTemporary : resolvedParent;
    }

    std::expected<int, OpenError> openDirectory(std::string_view path) override {
        EXPECT_EQ(path, folder);
        return opened(folderOpens, 10);
    }

    std::expected<int, OpenError> open(std::string_view wanted, int directory) override {
        EXPECT_EQ(wanted, name);
        EXPECT_EQ(directory, 10);
        return opened(fileOpens, 11);
    }

    std::optional<FileInfo> fstat(int descriptor) override {
        if (!(descriptor == 10 ? folderIsExamined : fileIsExamined))
            return std::nullopt;
        return descriptor == 10 ? folderInfo : fileInfo;
    }

    std::optional<std::string> pathOf(int /*descriptor*/) override { return folderPath; }

    std::optional<Bytes> read(int descriptor, std::size_t max) override {
        EXPECT_EQ(descriptor, 11);
        if (content && content->size() > max)
            return Bytes(content->begin(), content->begin() + static_cast<std::ptrdiff_t>(max));
        return content;
    }

    void close(int descriptor) override {
        const auto found = open_.find(descriptor);
        if (found == open_.end())
            ++closedTooOften;
        else
            open_.erase(found);
    }

    bool unlink(std::string_view wanted, int directory) override {
        EXPECT_EQ(wanted, name);
        EXPECT_TRUE(open_.contains(directory));
        unlinked += unlinks ? 1 : 0;
        return unlinks;
    }

private:
    std::expected<int, OpenError> opened(bool succeeds, int descriptor) {
        if (!succeeds)
            return std::unexpected(OpenError{2});
        open_.insert(descriptor);
        return descriptor;
    }
};

struct Broken {
    const char* what;
    TicketError error;
    std::function<void(FakeFiles&)> change;
};

const Broken brokenThings[] = {
    {"no temporary folder", TicketError::folder, [](FakeFiles& f) { f.temporary.reset(); }},
    {"empty temporary folder", TicketError::folder, [](FakeFiles& f) { f.temporary = ""; }},
    {"temporary folder unresolved", TicketError::folder,
     [](FakeFiles& f) { f.resolvedTemporary.reset(); }},
    {"temporary folder relative", TicketError::folder,
     [](FakeFiles& f) { f.resolvedTemporary = "private/var/T"; }},
    {"parent unresolved", TicketError::folder, [](FakeFiles& f) { f.resolvedParent.reset(); }},
    {"parent elsewhere", TicketError::folder,
     [](FakeFiles& f) { f.resolvedParent = folder + "/x"; }},
    {"folder does not open", TicketError::folder, [](FakeFiles& f) { f.folderOpens = false; }},
    {"folder moved", TicketError::folder, [](FakeFiles& f) { f.folderPath = "/private/var/U"; }},
    {"folder path unknown", TicketError::folder, [](FakeFiles& f) { f.folderPath.reset(); }},
    {"folder not examined", TicketError::folder, [](FakeFiles& f) { f.folderIsExamined = false; }},
    {"folder is none", TicketError::folder,
     [](FakeFiles& f) { f.folderInfo.kind = FileInfo::Kind::regular; }},
    {"folder of another", TicketError::folder, [](FakeFiles& f) { f.folderInfo.uid = 0; }},
    {"folder open to the group", TicketError::folder,
     [](FakeFiles& f) { f.folderInfo.mode = 0040710; }},
    {"folder open to others", TicketError::folder,
     [](FakeFiles& f) { f.folderInfo.mode = 0040701; }},
    {"file does not open", TicketError::open, [](FakeFiles& f) { f.fileOpens = false; }},
    {"file not examined", TicketError::file, [](FakeFiles& f) { f.fileIsExamined = false; }},
    {"a folder", TicketError::file,
     [](FakeFiles& f) { f.fileInfo.kind = FileInfo::Kind::directory; }},
    {"a FIFO", TicketError::file, [](FakeFiles& f) { f.fileInfo.kind = FileInfo::Kind::other; }},
    {"a link", TicketError::file, [](FakeFiles& f) { f.fileInfo.kind = FileInfo::Kind::symlink; }},
    {"file of another", TicketError::file, [](FakeFiles& f) { f.fileInfo.uid = 502; }},
    {"mode 0640", TicketError::file, [](FakeFiles& f) { f.fileInfo.mode = 0100640; }},
    {"mode 0400", TicketError::file, [](FakeFiles& f) { f.fileInfo.mode = 0100400; }},
    {"set-uid", TicketError::file, [](FakeFiles& f) { f.fileInfo.mode = 0104600; }},
    {"sticky", TicketError::file, [](FakeFiles& f) { f.fileInfo.mode = 0101600; }},
    {"empty", TicketError::file, [](FakeFiles& f) { f.fileInfo.size = 0; }},
    {"513 bytes", TicketError::file, [](FakeFiles& f) { f.fileInfo.size = 513; }},
    {"negative size", TicketError::file, [](FakeFiles& f) { f.fileInfo.size = -1; }},
    {"unreadable", TicketError::file, [](FakeFiles& f) { f.content.reset(); }},
    {"grown", TicketError::file,
     [](FakeFiles& f) { f.hold(jsonOf(ticket) + std::string(513, ' ')); }},
    {"shrunk to nothing", TicketError::json, [](FakeFiles& f) { f.hold(""); }},
    {"no ticket", TicketError::json, [](FakeFiles& f) { f.hold("{}"); }},
    {"foreign endpoint", TicketError::endpoint,
     [](FakeFiles& f) {
         Ticket foreign = ticket;
         foreign.endpoint = "/var/T/velmo-term/attach.sock"; // the same folder, not resolved
         f.hold(jsonOf(foreign));
     }},
    {"not removed", TicketError::unlink, [](FakeFiles& f) { f.unlinks = false; }},
};

TEST(AttachTicket, IsReadRemovedAndEverythingClosed) {
    FakeFiles files;
    files.folderInfo.mode = 0040500; // what the owner may do is the owner's matter
    EXPECT_EQ(readTicket("/var/T/velmo-term/" + name, files), ticket);
    EXPECT_EQ(files.unlinked, 1);
    EXPECT_THAT(files.open_, IsEmpty());
    EXPECT_EQ(files.closedTooOften, 0);
}

TEST(AttachTicket, EachFaultHasItsErrorAndLeavesTheFile) {
    for (const Broken& broken : brokenThings) {
        FakeFiles files;
        broken.change(files);
        const auto result = readTicket("/var/T/velmo-term/" + name, files);
        ASSERT_FALSE(result) << broken.what;
        EXPECT_EQ(result.error(), broken.error) << broken.what;
        EXPECT_EQ(files.unlinked, 0) << broken.what;
        EXPECT_THAT(files.open_, IsEmpty()) << broken.what;
        EXPECT_EQ(files.closedTooOften, 0) << broken.what;
    }
}

TEST(AttachTicket, OfTwoFaultsTheEarlierCheckWins) {
    const auto changesContent = [](const Broken& broken) {
        FakeFiles files;
        broken.change(files);
        return files.content != FakeFiles().content;
    };
    for (const Broken& one : brokenThings) {
        for (const Broken& other : brokenThings) {
            // There is only one content to break.
            if (changesContent(one) && changesContent(other))
                continue;
            FakeFiles files;
            one.change(files);
            other.change(files);
            const auto result = readTicket("/var/T/velmo-term/" + name, files);
            ASSERT_FALSE(result) << one.what << ", " << other.what;
            EXPECT_EQ(result.error(), std::min(one.error, other.error))
                << one.what << ", " << other.what;
        }
    }
}

TEST(AttachTicket, PathsAreJudgedBeforeTheDisk) {
    const std::pair<std::string, TicketError> cases[] = {
        {"", TicketError::arguments},
        {name, TicketError::arguments},
        {folder + "/" + name + "/", TicketError::arguments},
        {folder + "/../" + name, TicketError::arguments},
        {folder + "//" + name, TicketError::arguments},
        {folder + "/" + name + "\n", TicketError::arguments},
        {folder, TicketError::basename},
        {folder + "/a-0123456789ABCDEF0123456789abcdef.json", TicketError::basename},
    };
    for (const auto& [path, error] : cases) {
        FakeFiles files;
        files.temporary.reset();
        EXPECT_EQ(readTicket(path, files).error(), error) << testing::PrintToString(path);
    }
}

TEST(AttachTicket, IdentifiersAreExact) {
    EXPECT_TRUE(isTicketName(name));
    for (const std::string& refused :
         {"b" + name.substr(1), name.substr(1), name + "x", "a-" + std::string(32, 'g') + ".json",
          "a-" + std::string(32, 'A') + ".json", "a-" + std::string(31, 'a') + "x.jso",
          "a-" + std::string(32, 'a') + ".JSON"})
        EXPECT_FALSE(isTicketName(refused)) << refused;
    EXPECT_TRUE(isSessionId(session));
    for (const std::string& refused : {session + "0", session.substr(1), "S_0123456789abcdef"s,
                                       "s_0123456789ABCDEF"s, "s-0123456789abcdef"s})
        EXPECT_FALSE(isSessionId(refused)) << refused;
    EXPECT_TRUE(isToken(token));
    for (const std::string& refused : {token.substr(1), token + "a", std::string(42, 'a') + "=",
                                       std::string(42, 'a') + "\n", std::string(41, 'a') + "é"})
        EXPECT_FALSE(isToken(refused)) << refused;
}

TEST(AttachTicket, ContentIsExact) {
    const std::string good = jsonOf(ticket);
    EXPECT_EQ(parseTicket(good), ticket);
    EXPECT_EQ(parseTicket(good + " \n\t\r"), ticket);
    const auto changed = [&](std::string_view from, std::string_view to) {
        std::string text = good;
        return text.replace(text.find(from), from.size(), to);
    };
    EXPECT_EQ(parseTicket(changed("/attach", "\\/attach")), ticket);
    EXPECT_EQ(parseTicket(changed("\"token\"", "\"\\u0074oken\"")), ticket);
    EXPECT_TRUE(parseTicket(changed(ticket.endpoint, "")));
    EXPECT_TRUE(parseTicket(changed(ticket.endpoint, std::string(5000, 'x'))));

    const std::string refused[] = {
        " " + good,
        "\xEF\xBB\xBF" + good,
        good + "x",
        good + "\0"s,
        "[" + good + "]",
        jsonOf(ticket, "2"),
        jsonOf(ticket, "1.0"),
        jsonOf(ticket, "true"),
        jsonOf(ticket, "\"1\""),
        changed("{", "{\"more\":1,"),
        changed("{", "{\"v\":1,"),
        changed("\"v\":1,", ""),
        changed("\"v\"", "\"V\""),
        changed(token, token + "x"),
        changed(session, "s_0123456789ABCDEF"),
        changed("\"" + ticket.endpoint + "\"", "null"),
        changed("/attach", "\xFF"),
    };
    for (const std::string& text : refused)
        EXPECT_FALSE(parseTicket(text)) << testing::PrintToString(text);
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(parseTicket(good.substr(0, length))) << length;
}

RC_GTEST_PROP(AttachTicket, WhatIsAcceptedObeysItsRules, ()) {
    std::string text = jsonOf(ticket);
    const auto position = *rc::gen::inRange<std::size_t>(0, text.size());
    text[position] = *rc::gen::arbitrary<char>();
    if (const auto parsed = parseTicket(text)) {
        RC_ASSERT(isToken(parsed->token));
        RC_ASSERT(isSessionId(parsed->session));
    }
}

TEST(AttachTicket, FaultsAreToldToTheUser) {
    EXPECT_EQ(message(TicketError::arguments), "bad ticket path");
    EXPECT_EQ(message(TicketError::file), "the ticket file is not a private regular file");
    EXPECT_EQ(message(TicketError::unlink), "the ticket file could not be removed");
}

} // namespace
} // namespace velmo

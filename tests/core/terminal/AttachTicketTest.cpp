#include "core/terminal/AttachTicket.h"

#include "tests/Texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace velmo {
namespace {

using namespace std::string_literals;
using namespace PtyAttach;

const std::string name = "a-0123456789abcdef0123456789abcdef.json";
const std::string privateFolder = "/private/var/T/velmo-term";
const std::string given = "/var/T/velmo-term/"; // leads to the folder by way of a link
const std::string token = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMN_-9";
const std::string session = "s_0123456789abcdef";
const Ticket ticket{.endpoint = privateFolder + "/attach.sock", .token = token, .session = session};
const std::string good = R"({"v":1,"endpoint":")" + ticket.endpoint + R"(","token":")" + token
                         + R"(","session":")" + session + "\"}";

/// One folder with one file, both as they should be until a test changes that.
class Fake final : public FileSystem {
public:
    std::optional<std::string> temporary = "/var/T/";
    std::optional<std::string> resolvedTemporary = "/private/var/T";
    std::optional<std::string> resolvedParent = privateFolder;
    std::optional<std::string> folderPath = privateFolder;
    FileInfo folderInfo{FileInfo::Kind::directory, 501, 0040700, 96};
    FileInfo fileInfo{FileInfo::Kind::regular, 501, 0100600, 200};
    bool folderIsExamined = true, fileIsExamined = true;
    std::optional<std::string> content = good;
    bool folderOpens = true, fileOpens = true, unlinks = true;
    int unlinked = 0;
    std::map<int, int> held; ///< by descriptor, how often it was opened and not yet closed

    std::uint32_t uid() override { return 501; }

    std::optional<std::string> userTempDir() override { return temporary; }

    std::optional<std::string> realpath(std::string_view path) override {
        return path == temporary ? resolvedTemporary : resolvedParent;
    }

    std::expected<int, OpenError> openDirectory(std::string_view path) override {
        EXPECT_EQ(path, privateFolder);
        return opened(folderOpens, 10);
    }

    std::expected<int, OpenError> open(std::string_view wanted, int directory) override {
        EXPECT_EQ(std::pair(wanted, directory), std::pair(std::string_view(name), 10));
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
        return content.transform([&](const std::string& text) {
            const ByteView bytes = bytesOf(text).first(std::min(max, text.size()));
            return Bytes(bytes.begin(), bytes.end());
        });
    }

    void close(int descriptor) override { --held[descriptor]; }

    bool unlink(std::string_view wanted, int directory) override {
        EXPECT_EQ(wanted, name);
        EXPECT_EQ(held[directory], 1);
        unlinked += unlinks ? 1 : 0;
        return unlinks;
    }

private:
    std::expected<int, OpenError> opened(bool succeeds, int descriptor) {
        if (!succeeds)
            return std::unexpected(OpenError{2});
        ++held[descriptor];
        return descriptor;
    }
};

void expectEverythingClosed(const Fake& files) {
    EXPECT_THAT(files.held, testing::Each(testing::Pair(testing::_, 0)));
}

TEST(AttachTicket, IsReadRemovedAndEverythingClosed) {
    for (const std::int64_t size : {1, 512}) {
        Fake files;
        files.folderInfo.mode = 0040500; // what the owner may do is the owner's matter
        files.fileInfo.size = size;
        files.content->resize(512, '\n');
        EXPECT_EQ(readTicket(given + name, files), ticket);
        EXPECT_EQ(files.unlinked, 1);
        expectEverythingClosed(files);
    }
}

TEST(AttachTicket, OfTwoFaultsTheEarlierCheckWinsAndTheFileStays) {
    using enum TicketError;

    struct Broken {
        const char* what;
        TicketError error;
        void (*change)(Fake&);
    };

    const Broken rows[] = {
        {"no temporary folder", folder, [](Fake& f) { f.temporary.reset(); }},
        {"empty temporary folder", folder, [](Fake& f) { f.temporary = ""; }},
        {"temporary unresolved", folder, [](Fake& f) { f.resolvedTemporary.reset(); }},
        {"temporary relative", folder, [](Fake& f) { f.resolvedTemporary = "private/var/T"; }},
        {"parent unresolved", folder, [](Fake& f) { f.resolvedParent.reset(); }},
        {"parent elsewhere", folder, [](Fake& f) { f.resolvedParent = privateFolder + "/x"; }},
        {"folder does not open", folder, [](Fake& f) { f.folderOpens = false; }},
        {"folder moved", folder, [](Fake& f) { f.folderPath = "/private/var/U"; }},
        {"folder path unknown", folder, [](Fake& f) { f.folderPath.reset(); }},
        {"folder not examined", folder, [](Fake& f) { f.folderIsExamined = false; }},
        {"no folder", folder, [](Fake& f) { f.folderInfo.kind = FileInfo::Kind::regular; }},
        {"folder of another", folder, [](Fake& f) { f.folderInfo.uid = 0; }},
        {"open to the group", folder, [](Fake& f) { f.folderInfo.mode = 0040710; }},
        {"open to others", folder, [](Fake& f) { f.folderInfo.mode = 0040701; }},
        {"file does not open", open, [](Fake& f) { f.fileOpens = false; }},
        {"file not examined", file, [](Fake& f) { f.fileIsExamined = false; }},
        {"a folder", file, [](Fake& f) { f.fileInfo.kind = FileInfo::Kind::directory; }},
        {"a FIFO", file, [](Fake& f) { f.fileInfo.kind = FileInfo::Kind::other; }},
        {"a link", file, [](Fake& f) { f.fileInfo.kind = FileInfo::Kind::symlink; }},
        {"file of another", file, [](Fake& f) { f.fileInfo.uid = 502; }},
        {"mode 0640", file, [](Fake& f) { f.fileInfo.mode = 0100640; }},
        {"mode 0400", file, [](Fake& f) { f.fileInfo.mode = 0100400; }},
        {"set-uid", file, [](Fake& f) { f.fileInfo.mode = 0104600; }},
        {"sticky", file, [](Fake& f) { f.fileInfo.mode = 0101600; }},
        {"empty", file, [](Fake& f) { f.fileInfo.size = 0; }},
        {"513 bytes", file, [](Fake& f) { f.fileInfo.size = 513; }},
        {"negative size", file, [](Fake& f) { f.fileInfo.size = -1; }},
        {"unreadable", file, [](Fake& f) { f.content.reset(); }},
        {"grown", file, [](Fake& f) { f.content = good + std::string(513, ' '); }},
        {"shrunk to nothing", json, [](Fake& f) { f.content = ""; }},
        {"no ticket", json, [](Fake& f) { f.content = "{}"; }},
        {"unresolved endpoint", endpoint,
         [](Fake& f) { f.content = changed(good, "/private", ""); }},
        {"not removed", unlink, [](Fake& f) { f.unlinks = false; }},
    };
    for (const Broken& one : rows) {
        for (const Broken& other : rows) {
            // There is only one content to break: the earlier check's fault is put there last.
            const auto [earlier, later] = std::ranges::minmax(one, other, {}, &Broken::error);
            SCOPED_TRACE(earlier.what + ", "s + later.what);
            Fake files;
            later.change(files);
            earlier.change(files);
            EXPECT_EQ(readTicket(given + name, files), std::unexpected(earlier.error));
            EXPECT_EQ(files.unlinked, 0);
            expectEverythingClosed(files);
        }
    }
}

TEST(AttachTicket, PathsAreJudgedBeforeTheDisk) {
    Fake files;
    files.temporary.reset();
    for (const std::string& path : {""s, name, given + name + "/", given + "../" + name,
                                    given + "/" + name, given + name + "\n"})
        EXPECT_EQ(readTicket(path, files), std::unexpected(TicketError::arguments)) << path;
    for (const std::string& path : {privateFolder, given + changed(name, "abc", "ABC")})
        EXPECT_EQ(readTicket(path, files), std::unexpected(TicketError::basename)) << path;
}

TEST(AttachTicket, IdentifiersAreExact) {
    const std::string digits(32, 'a');
    expectVerdicts(isTicketName, {name},
                   {"b" + name.substr(1), name.substr(1), name + "x", changed(name, "abc", "abg"),
                    changed(name, "abc", "ABC"), "a-" + digits + "x.jso", "a-" + digits + ".JSON"});
    expectVerdicts(isSessionId, {session},
                   {session + "0", session.substr(1), "S_0123456789abcdef", "s-0123456789abcdef",
                    "s_0123456789ABCDEF"});
    expectVerdicts(isToken, {token},
                   {token.substr(1), token + "a", changed(token, "-", "="),
                    changed(token, "-", "\n"), changed(token, "-9", "é")});
}

TEST(AttachTicket, ContentIsExact) {
    for (const std::string& same : {good, good + " \n\t\r", changed(good, "/attach", "\\/attach"),
                                    changed(good, "token", "\\u0074oken")})
        EXPECT_EQ(parseTicket(same), ticket) << same;
    expectVerdicts(
        parseTicket,
        {changed(good, ticket.endpoint, ""), changed(good, ticket.endpoint, times(5000, "x"))},
        {" " + good, "\xEF\xBB\xBF" + good, good + "x", good + "\0"s, "[" + good + "]",
         changed(good, ":1", ":2"), changed(good, ":1", ":1.0"), changed(good, ":1", ":true"),
         changed(good, ":1", ":\"1\""), changed(good, "{", "{\"more\":1,"),
         changed(good, "{", "{\"v\":1,"), changed(good, "\"v\":1,", ""), changed(good, "v", "V"),
         changed(good, token, token + "x"), changed(good, "s_", "s-"),
         changed(good, '"' + ticket.endpoint + '"', "null"), changed(good, "/attach", "\xFF")});
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(parseTicket(good.substr(0, length))) << length;
}

TEST(AttachTicket, FaultsAreToldToTheUser) {
    EXPECT_EQ(message(TicketError::arguments), "bad ticket path");
    EXPECT_EQ(message(TicketError::file), "the ticket file is not a private regular file");
    EXPECT_EQ(message(TicketError::unlink), "the ticket file could not be removed");
}

} // namespace
} // namespace velmo

#include "core/terminal/AttachTicket.h"

#include "core/support/Ascii.h"
#include "tests/Texts.h"

#include <set>

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

/// A folder (descriptor 10) with one file (11), both valid until a test changes that.
class Fake final : public FileSystem {
public:
    std::optional<std::string> temporary = "/var/T/";
    std::optional<std::string> resolvedTemporary = "/private/var/T";
    std::optional<std::string> resolvedParent = privateFolder;
    std::optional<std::string> folderPath = privateFolder;
    std::optional<FileInfo> folderInfo = {{FileInfo::Kind::directory, 501, 0040700, 96}};
    std::optional<FileInfo> fileInfo = {{FileInfo::Kind::regular, 501, 0100600, 200}};
    std::optional<std::string> content = good;
    bool folderOpens = true, fileOpens = true, unlinks = true, removed = false;
    std::multiset<int> descriptors; ///< that are open

    std::uint32_t uid() override { return 501; }

    std::optional<std::string> userTempDir() override { return temporary; }

    std::optional<std::string> realpath(std::string_view path) override {
        return path == temporary ? resolvedTemporary : resolvedParent;
    }

    std::expected<int, OpenError> openDirectory(std::string_view path) override {
        return opened(folderOpens && path == privateFolder, 10);
    }

    std::expected<int, OpenError> open(std::string_view wanted, int directory) override {
        return opened(fileOpens && wanted == name && directory == 10, 11);
    }

    std::optional<FileInfo> fstat(int descriptor) override {
        return descriptor == 10 ? folderInfo : fileInfo;
    }

    std::optional<std::string> pathOf(int /*descriptor*/) override { return folderPath; }

    std::optional<Bytes> read(int /*descriptor*/, std::size_t max) override {
        return content.transform([max](const std::string& text) {
            return Bytes(text.begin(), text.begin() + std::ssize(text.substr(0, max)));
        });
    }

    void close(int descriptor) override { EXPECT_TRUE(descriptors.extract(descriptor)); }

    bool unlink(std::string_view wanted, int directory) override {
        removed = unlinks && wanted == name && descriptors.contains(directory);
        return removed;
    }

    std::expected<int, OpenError> opened(bool succeeds, int descriptor) {
        if (!succeeds)
            return std::unexpected(OpenError{2});
        return *descriptors.insert(descriptor);
    }
};

using Outcome = std::expected<Ticket, TicketError>;

/// Reads the ticket and checks that no descriptor is open afterwards, and that the file is gone if
/// the ticket was read.
Outcome read(Fake& files) {
    auto result = readTicket(given + name, files);
    EXPECT_TRUE(files.descriptors.empty());
    EXPECT_EQ(files.removed, result.has_value());
    return result;
}

TEST(AttachTicket, IsReadFromAPrivateFolderAndFileOnly) {
    for (std::uint16_t mode = 0; mode <= 07777; ++mode) {
        Fake folder;
        folder.folderInfo->mode = mode;
        EXPECT_EQ(read(folder).has_value(), (mode & 077) == 0) << mode;
        Fake file;
        file.fileInfo->mode = mode;
        EXPECT_EQ(read(file).has_value(), mode == 0600) << mode;
    }
    for (const std::int64_t size : {-1, 0, 1, 512, 513}) {
        Fake files;
        files.fileInfo->size = size;
        files.content->resize(512, '\n');
        EXPECT_EQ(read(files).has_value(), size == 1 || size == 512) << size;
    }
}

TEST(AttachTicket, ReportsTheEarlierOfTwoFaultsAndKeepsTheFile) {
    using enum TicketError;

    struct Broken {
        TicketError error;
        void (*change)(Fake&);
    };

    const Broken rows[] = {
        {.error = folder, .change = [](Fake& f) { f.temporary.reset(); }},
        {.error = folder, .change = [](Fake& f) { f.temporary = ""; }},
        {.error = folder, .change = [](Fake& f) { f.resolvedTemporary.reset(); }},
        {.error = folder, .change = [](Fake& f) { f.resolvedTemporary = "private/var/T"; }},
        {.error = folder, .change = [](Fake& f) { f.resolvedParent.reset(); }},
        {.error = folder, .change = [](Fake& f) { f.resolvedParent = privateFolder + "/x"; }},
        {.error = folder, .change = [](Fake& f) { f.folderOpens = false; }},
        {.error = folder, .change = [](Fake& f) { f.folderPath = "/private/var/U"; }},
        {.error = folder, .change = [](Fake& f) { f.folderPath.reset(); }},
        {.error = folder, .change = [](Fake& f) { f.folderInfo.reset(); }},
        {.error = folder, .change = [](Fake& f) { f.folderInfo->kind = FileInfo::Kind::regular; }},
        {.error = folder, .change = [](Fake& f) { f.folderInfo->uid = 0; }},
        {.error = open, .change = [](Fake& f) { f.fileOpens = false; }},
        {.error = file, .change = [](Fake& f) { f.fileInfo->kind = FileInfo::Kind::directory; }},
        {.error = file, .change = [](Fake& f) { f.fileInfo->uid = 502; }},
        {.error = file, .change = [](Fake& f) { f.fileInfo.reset(); }},
        {.error = file, .change = [](Fake& f) { f.content.reset(); }},
        {.error = file, .change = [](Fake& f) { f.content->resize(513, ' '); }},
        {.error = json, .change = [](Fake& f) { f.content = "{}"; }},
        {.error = endpoint, .change = [](Fake& f) { f.content = changed(good, "/private", ""); }},
        {.error = unlink, .change = [](Fake& f) { f.unlinks = false; }},
    };
    for (const Broken& one : rows) {
        for (const Broken& other : rows) {
            SCOPED_TRACE(testing::Message() << "rows " << &one - rows << ", " << &other - rows);
            Fake files;
            if (one.error < other.error)
                other.change(files);
            one.change(files); // last, as there is only one content to break
            EXPECT_EQ(read(files), std::unexpected(one.error));
        }
    }
}

TEST(AttachTicket, PathsAreJudgedBeforeTheDisk) {
    Fake files;
    files.temporary.reset();
    for (const std::string& path : {""s, name, given + name + "/", given + "../" + name})
        EXPECT_EQ(readTicket(path, files), std::unexpected(TicketError::arguments)) << path;
    for (const std::string& path : {privateFolder, given + changed(name, "abc", "ABC")})
        EXPECT_EQ(readTicket(path, files), std::unexpected(TicketError::basename)) << path;
}

/// Tries every byte in every place of a text that the rule accepts. In the form, "h" stands for a
/// lower-case hexadecimal digit, "T" for a character of a token, and any other character for
/// itself.
void expectForm(bool (*rule)(std::string_view), const std::string& text, const std::string& form) {
    for (std::size_t i = 0; i < form.size() * 256; ++i) {
        const char expected = form[i / 256];
        const auto byte = static_cast<char>(i);
        std::string other = text;
        other[i / 256] = byte;
        EXPECT_EQ(rule(other), expected == 'T'   ? Ascii::isMadeOfLettersDigitsAnd("-_", {&byte, 1})
                               : expected == 'h' ? Ascii::isLowercaseHex(byte)
                                                 : byte == expected)
            << testing::PrintToString(other);
    }
    EXPECT_FALSE(rule(text.substr(1)) || rule(text + "0") || rule("")) << text;
}

TEST(AttachTicket, EveryByteOfAnIdentifierIsJudged) {
    expectForm(isTicketName, name, "a-" + times(32, "h") + ".json");
    expectForm(isSessionId, session, "s_" + times(16, "h"));
    expectForm(isToken, token, times(43, "T"));
}

TEST(AttachTicket, ContentIsExact) {
    for (const std::string& same : {good, good + " \n\t\r", changed(good, "/a", "\\/\\u0061")})
        EXPECT_EQ(parseTicket(same), ticket) << same;
    expectVerdicts(
        parseTicket,
        {changed(good, ticket.endpoint, ""), changed(good, ticket.endpoint, times(5000, "x"))},
        {" " + good, good + "x", "[" + good + "]", changed(good, ":1", ":2"),
         changed(good, "{", "{\"more\":1,"), changed(good, "\"v\":1,", ""),
         changed(good, token, token + "x"), changed(good, "s_", "s-"),
         changed(good, '"' + ticket.endpoint + '"', "null"), changed(good, "/attach", "\xFF")});
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(parseTicket(good.substr(0, length))) << length;
}

TEST(AttachTicket, FaultsAreToldToTheUser) {
    EXPECT_EQ(message(TicketError::unlink), "the ticket file could not be removed");
}

} // namespace
} // namespace velmo

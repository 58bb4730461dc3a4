#include "core/terminal/AttachTicket.h"

#include "core/support/Ascii.h"
#include "core/support/PathText.h"

#include <algorithm>
#include <utility>

namespace velmo::PtyAttach {

namespace {

constexpr unsigned permissionBits = 07777;
constexpr unsigned ticketMode = 0600;
constexpr unsigned bitsOfOthers = 077;

/// A descriptor that is closed at the end of the scope.
class OpenFile {
public:
    OpenFile(FileSystem& fs, int descriptor) : fs_(fs), descriptor_(descriptor) {}

    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    ~OpenFile() { fs_.close(descriptor_); }

    [[nodiscard]] int get() const { return descriptor_; }

private:
    FileSystem& fs_;
    int descriptor_;
};

bool isHexBetween(std::string_view text, std::string_view prefix, std::size_t digits,
                  std::string_view suffix) {
    return text.size() == prefix.size() + digits + suffix.size() && text.starts_with(prefix)
           && text.ends_with(suffix)
           && std::ranges::all_of(text.substr(prefix.size(), digits), Ascii::isLowercaseHex);
}

bool isPrivateFolder(FileSystem& fs, int descriptor, std::string_view expected) {
    if (fs.pathOf(descriptor) != expected)
        return false;
    const auto info = fs.fstat(descriptor);
    return info && info->kind == FileInfo::Kind::directory && info->uid == fs.uid()
           && (info->mode & bitsOfOthers) == 0;
}

bool isPrivateFile(FileSystem& fs, int descriptor) {
    const auto info = fs.fstat(descriptor);
    return info && info->kind == FileInfo::Kind::regular && info->uid == fs.uid()
           && (info->mode & permissionBits) == ticketMode && info->size >= 1
           && std::cmp_less_equal(info->size, maxTicketBytes);
}

/// Returns the ticket in an open folder. The caller removes the file.
std::expected<Ticket, TicketError> ticketIn(FileSystem& fs, int directory, std::string_view name,
                                            std::string_view folder) {
    const auto opened = fs.open(name, directory);
    if (!opened)
        return std::unexpected(TicketError::open);
    const OpenFile file(fs, *opened);
    if (!isPrivateFile(fs, file.get()))
        return std::unexpected(TicketError::file);
    // Reads one byte more than allowed, to notice a file that has grown since it was examined.
    const auto content = fs.read(file.get(), maxTicketBytes + 1);
    if (!content || content->size() > maxTicketBytes)
        return std::unexpected(TicketError::file);
    auto ticket = parseTicket(textOf(*content));
    if (!ticket)
        return std::unexpected(TicketError::json);
    if (ticket->endpoint != PathText::join(folder, socketName))
        return std::unexpected(TicketError::endpoint);
    return *std::move(ticket);
}

} // namespace

std::string_view message(TicketError error) {
    return rawText(error);
}

std::optional<std::string> expectedFolder(FileSystem& fs) {
    const auto temporary = fs.userTempDir();
    if (!temporary || temporary->empty())
        return std::nullopt;
    const auto resolved = fs.realpath(*temporary);
    if (!resolved || !resolved->starts_with('/'))
        return std::nullopt;
    return PathText::join(*resolved, folderName);
}

bool isTicketName(std::string_view name) {
    return isHexBetween(name, "a-", 32, ".json");
}

bool isToken(std::string_view text) {
    return text.size() == 43 && Ascii::isMadeOfLettersDigitsAnd("-_", text);
}

bool isSessionId(std::string_view text) {
    return isHexBetween(text, "s_", 16, "");
}

std::optional<Ticket> parseTicket(std::string_view json) {
    if (!json.starts_with('{'))
        return std::nullopt;
    auto ticket = decodeRecordExactly<Ticket>(json);
    if (!ticket || !isToken(ticket->token) || !isSessionId(ticket->session))
        return std::nullopt;
    return ticket;
}

std::expected<Ticket, TicketError> readTicket(std::string_view path, FileSystem& fs) {
    if (!PathText::isCleanAbsoluteFile(path))
        return std::unexpected(TicketError::arguments);
    const std::string_view name = PathText::lastComponent(path);
    if (!isTicketName(name))
        return std::unexpected(TicketError::basename);

    const auto folder = expectedFolder(fs);
    if (!folder || fs.realpath(PathText::parent(path)) != folder)
        return std::unexpected(TicketError::folder);
    const auto opened = fs.openDirectory(*folder);
    if (!opened)
        return std::unexpected(TicketError::folder);
    const OpenFile directory(fs, *opened);
    if (!isPrivateFolder(fs, directory.get(), *folder))
        return std::unexpected(TicketError::folder);

    auto ticket = ticketIn(fs, directory.get(), name, *folder);
    if (ticket && !fs.unlink(name, directory.get()))
        return std::unexpected(TicketError::unlink);
    return ticket;
}

} // namespace velmo::PtyAttach

#pragma once

#include "core/support/Bytes.h"
#include "core/support/RawText.h"
#include "core/support/Record.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

/// Tickets: files that let the first process that reads them join a terminal session. A ticket lies
/// in a private folder of its user, under a name that can't be guessed, and its reader removes it.
///
///     a-0123456789abcdef0123456789abcdef.json
///     {"v":1,"endpoint":"/.../velmo-term/attach.sock","token":"...","session":"s_..."}
namespace velmo::PtyAttach {

inline constexpr std::size_t maxTicketBytes = 512;
inline constexpr std::string_view folderName = "velmo-term";
inline constexpr std::string_view socketName = "attach.sock";

struct Ticket {
    std::string endpoint; ///< path of the host's socket
    std::string token;
    std::string session;

    static constexpr auto fields =
        std::tuple{constant("v", 1), field("endpoint", &Ticket::endpoint),
                   field("token", &Ticket::token), field("session", &Ticket::session)};
    bool operator==(const Ticket&) const = default;
};

/// Why a ticket is refused. The checks are made in this order, and the first that fails is
/// reported. The removal of the file is the last, so that a file that fails any other check stays.
enum class TicketError {
    arguments, ///< the path is not clean and absolute, or ends with a slash
    basename,  ///< the name is not a ticket's
    folder,    ///< the folder is not the user's private one, or can't be examined
    open,
    file,     ///< not a private regular file of 1...512 bytes, or it can't be examined or read
    json,     ///< the content is not a ticket
    endpoint, ///< the endpoint is not the socket in the ticket's own folder
    unlink,   ///< the file could not be removed: another reader may have the ticket
};

/// Returns the text that tells the user, in English.
std::string_view message(TicketError error);

struct FileInfo {
    enum class Kind { regular, directory, symlink, other };

    Kind kind = Kind::other;
    std::uint32_t uid = 0;  ///< owner
    std::uint16_t mode = 0; ///< permission and type bits
    std::int64_t size = 0;  ///< bytes

    bool operator==(const FileInfo&) const = default;
};

struct OpenError {
    std::int32_t number = 0; ///< the system's, `errno`

    bool operator==(const OpenError&) const = default;
};

/// Every file operation of the ticket reader. platform/host has the real ones.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Returns the caller's user id.
    [[nodiscard]] virtual std::uint32_t uid() = 0;

    /// Returns the temporary folder that is the user's alone.
    [[nodiscard]] virtual std::optional<std::string> userTempDir() = 0;

    /// Returns the absolute path with every link resolved.
    [[nodiscard]] virtual std::optional<std::string> realpath(std::string_view path) = 0;

    /// Opens a folder and returns its descriptor. A path that ends in a link is refused.
    [[nodiscard]] virtual std::expected<int, OpenError> openDirectory(std::string_view path) = 0;

    /// Opens a name in an open folder for reading and returns the descriptor. A link is refused;
    /// a FIFO or a device does not make the call wait.
    [[nodiscard]] virtual std::expected<int, OpenError> open(std::string_view name,
                                                             int directory) = 0;

    [[nodiscard]] virtual std::optional<FileInfo> fstat(int descriptor) = 0;

    /// Returns the path that a descriptor refers to now, with links resolved.
    [[nodiscard]] virtual std::optional<std::string> pathOf(int descriptor) = 0;

    /// Returns the next `max` bytes, or fewer at the end of the file.
    [[nodiscard]] virtual std::optional<Bytes> read(int descriptor, std::size_t max) = 0;

    virtual void close(int descriptor) = 0;

    /// Removes a name from an open folder. Among several callers at once only one gets true.
    [[nodiscard]] virtual bool unlink(std::string_view name, int directory) = 0;
};

/// Returns the folder of tickets, "velmo-term" in the user's temporary folder, or nothing if the
/// latter is unknown or does not resolve.
std::optional<std::string> expectedFolder(FileSystem& fs);

// Tell whether the text has the form described beside them.
bool isTicketName(std::string_view name); ///< "a-", 32 lower-case hexadecimal digits, ".json"
bool isToken(std::string_view text);      ///< 43 ASCII letters, digits, "-" or "_"
bool isSessionId(std::string_view text);  ///< "s_" and 16 lower-case hexadecimal digits

/// Reads the content of a ticket of any size. The endpoint may be any text here. White space may
/// follow the object but not precede it.
std::optional<Ticket> parseTicket(std::string_view json);

/// Reads and removes a ticket. Refuses a file that another user could have put there: the file must
/// be private, and is opened through the descriptor of a folder that has proved to be the user's
/// private one. However many readers there are, at most one gets the ticket.
std::expected<Ticket, TicketError> readTicket(std::string_view path, FileSystem& fs);

} // namespace velmo::PtyAttach

namespace velmo {

template<>
inline constexpr auto rawTexts<PtyAttach::TicketError> = std::to_array<std::string_view>({
    "bad ticket path",
    "bad ticket name",
    "the ticket is not in Velmo's private folder",
    "the ticket file could not be opened",
    "the ticket file is not a private regular file",
    "bad ticket content",
    "bad ticket endpoint",
    "the ticket file could not be removed",
});

} // namespace velmo

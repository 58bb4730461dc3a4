#pragma once

#include "core/support/Bytes.h"
#include "core/support/Record.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

/// Tickets: files that let whoever reads them join a terminal session, once. A ticket lies in a
/// private folder of its user, under a name that can't be guessed, and is removed as it is read.
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

/// Each names the one check that failed; the first in this order wins, and with any of them but
/// perhaps `unlink` the file is still there.
enum class TicketError { arguments, basename, folder, open, file, json, endpoint, unlink };

/// For the user, in English.
std::string_view message(TicketError error);

struct FileInfo {
    enum class Kind { regular, directory, symlink, other };

    Kind kind = Kind::other;
    std::uint32_t uid = 0;  ///< owner
    std::uint16_t mode = 0; ///< permission and type bits
    std::int64_t size = 0;  ///< bytes

    bool operator==(const FileInfo&) const = default;
};

/// The system's error number.
struct OpenError {
    std::int32_t number = 0;

    bool operator==(const OpenError&) const = default;
};

/// Every file operation of the ticket reader. The real ones: platform/host.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Of the caller.
    [[nodiscard]] virtual std::uint32_t uid() = 0;

    /// The temporary folder that is the user's alone.
    [[nodiscard]] virtual std::optional<std::string> userTempDir() = 0;

    /// Absolute, every link resolved.
    [[nodiscard]] virtual std::optional<std::string> realpath(std::string_view path) = 0;

    /// A descriptor of a folder, which the path must name without a link at its end.
    [[nodiscard]] virtual std::expected<int, OpenError> openDirectory(std::string_view path) = 0;

    /// A descriptor for reading a name in a folder. A link is not followed; a FIFO or device does
    /// not make it wait.
    [[nodiscard]] virtual std::expected<int, OpenError> open(std::string_view name,
                                                             int directory) = 0;

    [[nodiscard]] virtual std::optional<FileInfo> fstat(int descriptor) = 0;

    /// The path that a descriptor refers to now, links resolved.
    [[nodiscard]] virtual std::optional<std::string> pathOf(int descriptor) = 0;

    /// The next bytes: fewer than `max` only at the end of the file.
    [[nodiscard]] virtual std::optional<Bytes> read(int descriptor, std::size_t max) = 0;

    virtual void close(int descriptor) = 0;

    /// Whether a name was removed from a folder: of two callers one is told so.
    [[nodiscard]] virtual bool unlink(std::string_view name, int directory) = 0;
};

/// The folder of tickets, "velmo-term" in the user's temporary folder. Absent when that is unknown
/// or does not resolve.
std::optional<std::string> expectedFolder(FileSystem& fs);

bool isTicketName(std::string_view name); ///< "a-", 32 lower-case hexadecimal digits, ".json"
bool isToken(std::string_view text);      ///< 43 ASCII letters, digits, "-" or "_"
bool isSessionId(std::string_view text);  ///< "s_" and 16 lower-case hexadecimal digits

/// The endpoint may be any text here. Blanks may follow the object but not precede it. Has no
/// limit of its own on the size.
std::optional<Ticket> parseTicket(std::string_view json);

/// Reads and removes a ticket. Nothing is believed that somebody else could have put there: the
/// file is reached through the descriptor of a folder that was found to be the private one, and is
/// itself private. Of any number of readers at most one gets the ticket. A failure to look at the
/// folder is `folder`; to look at the opened file, or to read it, `file`.
std::expected<Ticket, TicketError> readTicket(std::string_view path, FileSystem& fs);

} // namespace velmo::PtyAttach

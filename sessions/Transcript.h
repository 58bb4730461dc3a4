#pragma once

#include "core/support/Bytes.h"
#include "sessions/OutputLog.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <utility>

namespace velmo {

/// A file to which a terminal session's output is written. The destructor closes it.
class TranscriptFile {
public:
    virtual ~TranscriptFile() = default;

    /// Returns the number of bytes in the file.
    [[nodiscard]] virtual std::uint64_t size() const = 0;

    /// Writes behind what the file contains. Returns false if not all was written.
    [[nodiscard]] virtual bool append(ByteView output) = 0;

    /// Gives the file the name with ".1" behind it, in place of an earlier file of that name, and
    /// goes on in a new, empty file. Returns false if that can't be done.
    [[nodiscard]] virtual bool turn() = 0;
};

/// Opens the files of transcripts.
class TranscriptFiles {
public:
    /// Why a file is refused.
    enum class Fault {
        unusable, ///< it can't be made or opened, is too long, or no plain file of the user's own
        busy,     ///< another session writes to it
    };

    virtual ~TranscriptFiles() = default;

    /// Opens the file with this absolute path, or makes it, for this user alone. A file that exists
    /// is continued.
    [[nodiscard]] virtual std::expected<std::unique_ptr<TranscriptFile>, Fault>
    open(const std::string& path) = 0;
};

/// What a terminal session has shown: the program's output, byte for byte. The last 8 MiB or more
/// of it are kept in two files, of which neither is longer than that.
class Transcript {
public:
    static constexpr std::uint64_t maxFile = std::uint64_t{8} << 20; ///< bytes
    static_assert(maxFile >= OutputLog::maxRead);

    explicit Transcript(std::unique_ptr<TranscriptFile> file) : file_(std::move(file)) {}

    /// Adds output, of at most `OutputLog::maxRead` bytes. Returns false if it can't be written,
    /// after which the transcript is of no further use.
    [[nodiscard]] bool add(ByteView output) {
        const bool fits = file_->size() + output.size() <= maxFile;
        return (fits || file_->turn()) && file_->append(output);
    }

private:
    std::unique_ptr<TranscriptFile> file_;
};

} // namespace velmo

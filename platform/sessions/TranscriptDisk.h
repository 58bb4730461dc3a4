#pragma once

#include "sessions/Transcript.h"

namespace velmo {

/// The files of transcripts on disk. Links are not followed at a file's own name. A file is locked
/// while it is written, so that two sessions never share one.
class TranscriptDisk final : public TranscriptFiles {
public:
    [[nodiscard]] std::expected<std::unique_ptr<TranscriptFile>, Fault>
    open(const std::string& path) override;
};

} // namespace velmo

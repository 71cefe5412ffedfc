#pragma once

#include "attachments/AttachmentLimits.h"
#include "attachments/ReaderAnswer.h"
#include "attachments/StopFlag.h"

#include <QString>
#include <chrono>

namespace morvane {

/// Has files read by the reader program, a process of its own for each: decoders of pictures and documents
/// are large, and what a hostile file does to them ends with that process. Any thread, several at once.
class ReaderProcess {
public:
    enum class Job {
        picture,     ///< Make a picture fit for a model that sees.
        icon,        ///< A picture's pixels, tiny.
        thumbnail,   ///< The same, small.
        preview,     ///< The same, large.
        document,    ///< The text of a PDF.
        recognition, ///< The text that a picture shows.
    };

    /// `program` is a path. The program itself keeps to the limits of AttachmentLimits.h; `limit` holds for
    /// whatever is at that path.
    explicit ReaderProcess(const QString &program,
                           std::chrono::milliseconds limit = attachmentLimits::readerTime);

    /// The program learns nothing of the user but the language; the file comes as an open descriptor. Blocks
    /// until the program has ended. Nothing if there is no such program, if it crashed, did not end in time
    /// or answered something else than one whole answer, or if `stop` was raised, which kills it.
    std::optional<ReaderAnswer> read(Job job, const QByteArray &file, const StopFlag &stop) const;

private:
    QByteArray m_program;
    std::chrono::milliseconds m_limit;
};

} // namespace morvane

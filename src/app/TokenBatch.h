#pragma once

#include <QString>

namespace morvane {

class Transcript;

/// Gathers streamed tokens and gives them to the transcript in batches, so that the views are not updated for
/// each token. Main thread.
class TokenBatch {
public:
    /// Characters that make a batch.
    static constexpr qsizetype batchLength = 200;

    explicit TokenBatch(Transcript &transcript) : m_transcript(transcript) {}

    void add(const QString &token);
    /// Gives on what is left.
    void flush();

private:
    Transcript &m_transcript;
    QString m_buffer;
};

} // namespace morvane

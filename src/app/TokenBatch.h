#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

class Transcript;

/// Gathers streamed tokens and gives them to the transcript in batches, so that the views are not updated for
/// each token. What comes when the transcript shows another conversation is dropped. Main thread.
class TokenBatch {
public:
    /// Characters that make a batch.
    static constexpr qsizetype batchLength = 200;

    explicit TokenBatch(Transcript &transcript);

    void add(const QString &token);
    /// Gives on what is left.
    void flush();

private:
    Transcript &m_transcript;
    QUuid m_answer; ///< The message by which the conversation is known.
    QString m_buffer;
};

} // namespace morvane

#pragma once

#include "model/AITool.h"

#include <QByteArrayView>
#include <QStringList>

namespace morvane {

/// Puts one streamed answer of a model together, fed line by line. One for each turn; any one thread at a
/// time.
class StreamParser {
public:
    enum class Progress { goesOn, ended };

    virtual ~StreamParser() = default;

    /// Takes one line of the body and appends the pieces of visible text that it brings to `pieces`. A line
    /// that is no data, or no JSON object of the expected form, changes nothing. Throws AIServiceError::Api
    /// for an error that the provider reports within the stream.
    virtual Progress feed(QByteArrayView line, QStringList &pieces) = 0;

    /// The body is over: appends what becomes of a character whose rest never came to `pieces`.
    virtual void end(QStringList &pieces) = 0;

    /// The turn's result, once, after the last line and end(). Throws AIServiceError if the answer is empty,
    /// cut off, blocked or malformed.
    virtual AITurnResult finish() = 0;
};

} // namespace morvane

#pragma once

#include "providers/AIServiceError.h"
#include "providers/StreamParser.h"

#include <QByteArrayView>
#include <QStringList>
#include <cstdlib>

namespace morvane {

/// Feeds the input line by line, as a stream would come, and ends the turn. Whatever the bytes are, the only
/// ways out are a result whose text is that of the pieces, and an AIServiceError.
inline void fuzzStreamParser(StreamParser &parser, QByteArrayView input)
{
    QStringList pieces;
    try {
        while (!input.isEmpty()) {
            const qsizetype end = input.indexOf('\n');
            const QByteArrayView line = end < 0 ? input : input.first(end);
            input = end < 0 ? QByteArrayView() : input.sliced(end + 1);
            if (parser.feed(line, pieces) == StreamParser::Progress::ended)
                break;
        }
        parser.end(pieces);
        for (const QString &piece : pieces)
            if (!piece.isValidUtf16())
                std::abort();
        const AITurnResult result = parser.finish();
        if (result.text != pieces.join(QString()) || (result.text.isEmpty() && result.toolCalls.isEmpty()))
            std::abort();
    } catch (const AIServiceError &error) {
        if (error.errorDescription().isEmpty())
            std::abort();
    }
}

} // namespace morvane

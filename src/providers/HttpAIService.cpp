#include "providers/HttpAIService.h"

#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "providers/AIServiceError.h"
#include "providers/DiscardBody.h"
#include "providers/GeminiRequestBody.h"
#include "providers/GeminiStreamParser.h"
#include "providers/Log.h"
#include "providers/OpenAIRequestBody.h"
#include "providers/OpenAIStreamParser.h"
#include "providers/ProviderRequest.h"
#include "providers/RetryingRequest.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Enough for every error that a provider explains.
constexpr qsizetype maximumErrorBytes = 1024 * 1024;

/// No honest answer comes near: some half a million tokens with the wordiest of frames.
constexpr qint64 maximumStreamBytes = 256 * 1024 * 1024;

/// From this size on, parsing takes too long for the main thread.
constexpr qsizetype offMainBytes = 128 * 1024;

QString allowanceResets(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return u"The free allowance resets at midnight Pacific Time."_s;
    case ProviderID::groq:
        return u"The free allowance resets at midnight UTC."_s;
    default:
        return u"The free allowance resets daily."_s;
    }
}

/// The lines of a body, each with a line feed; at most `maximumErrorBytes` of them.
Task<QString> readErrorBody(LineReader lines)
{
    QByteArray body;
    try {
        while (const auto line = co_await lines.next()) {
            body.append(*line).append('\n');
            if (body.size() > maximumErrorBytes)
                break;
        }
    } catch (const TransportError &error) {
        if (error.kind() != TransportError::Kind::tooLarge)
            throw;
    }
    body.truncate(maximumErrorBytes);
    co_return QString::fromUtf8(body);
}

struct Fed {
    StreamParser::Progress progress;
    QStringList pieces;
};

Task<Fed> feedOffMain(std::shared_ptr<StreamParser> parser, QByteArray line)
{
    co_return co_await runOffMain([parser = std::move(parser), line = std::move(line)] {
        Fed fed;
        fed.progress = parser->feed(line, fed.pieces);
        return fed;
    });
}

/// Feeds the body to the parser and the pieces to `onToken`; gives the number of bytes.
/// `lines` belongs to the awaiter.
Task<qint64> readStream(LineReader *lines, std::shared_ptr<StreamParser> parser,
                        AIService::TokenCallback onToken)
{
    Fed fed{StreamParser::Progress::goesOn, {}};
    qint64 bytes = 0;
    while (fed.progress == StreamParser::Progress::goesOn) {
        const auto line = co_await lines->next();
        if (!line)
            break;
        bytes += line->size();
        if (bytes > maximumStreamBytes)
            throw TransportError(TransportError::Kind::tooLarge);
        if (line->size() < offMainBytes)
            fed.progress = parser->feed(*line, fed.pieces);
        else
            fed = co_await feedOffMain(parser, *line);
        for (const QString &piece : std::as_const(fed.pieces))
            onToken(piece);
        fed.pieces.clear();
    }
    parser->end(fed.pieces);
    for (const QString &piece : std::as_const(fed.pieces))
        onToken(piece);
    co_return bytes;
}

} // namespace

HttpAIService::HttpAIService(HttpClient &client, Endpoints endpoints)
    : m_client(client), m_endpoints(std::move(endpoints))
{
}

Task<AITurnResult> HttpAIService::runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                                TokenCallback onToken)
{
    HttpRequest request = openAIRequest(config, m_endpoints);
    const QString resets = allowanceResets(config.provider);
    request.body = co_await runOffMain(
        [context = std::move(context), config = std::move(config)] { return openAIBody(context, config); });
    co_return co_await runTurn(std::move(request), std::make_shared<OpenAIStreamParser>(), resets,
                               std::move(onToken));
}

Task<AITurnResult> HttpAIService::runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                                TokenCallback onToken)
{
    HttpRequest request = geminiRequest(config, m_endpoints);
    request.body = co_await runOffMain([context = std::move(context), config = std::move(config)] {
        return geminiRequestBody(context, config);
    });
    co_return co_await runTurn(std::move(request), std::make_shared<GeminiStreamParser>(),
                               allowanceResets(ProviderID::gemini), std::move(onToken));
}

Task<AITurnResult> HttpAIService::runTurn(HttpRequest request, std::shared_ptr<StreamParser> parser,
                                          QString resets, TokenCallback onToken)
{
    HttpResponse response = co_await streamRequest(&m_client, std::move(request));
    LineReader lines = response.lines();
    if (!response.isSuccess()) {
        qCWarning(providersLog) << "a request was refused: status" << response.status();
        const QString body = co_await readErrorBody(std::move(lines));
        if (response.status() == 429)
            throw AIServiceError(AIServiceError::RateLimited{resets});
        throw AIServiceError(AIServiceError::Http{response.status(), body});
    }
    const qint64 bytes = co_await readStream(&lines, parser, std::move(onToken));
    // The end of the body follows the end marker. Waiting for it in the background keeps the connection.
    const TaskContext context = co_await currentContext();
    context.scheduler->spawn(discardBody(std::move(lines)));
    if (bytes < offMainBytes)
        co_return parser->finish();
    co_return co_await runOffMain([parser] { return parser->finish(); });
}

} // namespace morvane

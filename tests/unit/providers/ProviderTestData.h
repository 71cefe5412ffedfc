#pragma once

#include "base/Json.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"
#include "providers/AIServiceError.h"
#include "providers/StreamParser.h"

#include <gtest/gtest.h>

namespace morvane {

/// The JSON value of a text that must be valid.
inline boost::json::value jsonOf(QByteArrayView text)
{
    auto value = parseJson(text);
    EXPECT_TRUE(value) << QByteArrayView(text).toByteArray().constData();
    return value ? *value : boost::json::value();
}

inline SharedJsonObject objectOf(QByteArrayView text)
{
    return SharedJsonObject(jsonOf(text).as_object());
}

inline ChatAttachment attachment(AttachmentKind kind, const QString &filename,
                                 const QString &extractedText = {})
{
    ChatAttachment result;
    result.kind = kind;
    result.filename = filename;
    result.extractedText = extractedText;
    return result;
}

inline ChatAttachment image(const QString &filename, const QByteArray &bytes, const QString &mimeType)
{
    ChatAttachment result = attachment(AttachmentKind::image, filename);
    result.data = bytes;
    result.mimeType = mimeType;
    return result;
}

inline APIMessage userMessage(const QString &text, const QList<ChatAttachment> &attachments = {})
{
    return APIMessage{APIMessage::User{text, attachments}};
}

inline AIConfiguration configuration(ProviderID provider, const QString &model = QStringLiteral("m"))
{
    AIConfiguration config;
    config.provider = provider;
    config.model = model;
    return config;
}

/// Feeds the lines of a whole body until the parser ends; gives all pieces.
inline QStringList feedAll(StreamParser &parser, const QList<QByteArray> &lines)
{
    QStringList pieces;
    for (const QByteArray &line : lines)
        if (parser.feed(line, pieces) == StreamParser::Progress::ended)
            break;
    parser.end(pieces);
    return pieces;
}

/// The message of the AIServiceError::Api that `function` throws; a test failure for anything else.
template <class Function> QString apiErrorOf(Function &&function)
{
    try {
        function();
    } catch (const AIServiceError &error) {
        if (const auto *api = std::get_if<AIServiceError::Api>(&error.reason()))
            return api->message;
        ADD_FAILURE() << "another AIServiceError: " << error.what();
        return {};
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

template <class Function> bool throwsBlocked(Function &&function)
{
    try {
        function();
    } catch (const AIServiceError &error) {
        return std::holds_alternative<AIServiceError::Blocked>(error.reason());
    }
    return false;
}

} // namespace morvane

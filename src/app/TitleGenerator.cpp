#include "app/TitleGenerator.h"

#include "app/Log.h"
#include "app/RequestConfiguration.h"
#include "app/Workspace.h"
#include "async/Scheduler.h"
#include "base/Text.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype quotedLength = 600;
constexpr qsizetype titleLength = 60;

bool isDirection(QChar unit)
{
    return unit == u'\u061c' || unit == u'\u200e' || unit == u'\u200f' ||
           (unit >= u'\u202a' && unit <= u'\u202e') || (unit >= u'\u2066' && unit <= u'\u2069');
}

/// Without what a terminal, a window's list or a screen reader would act upon. Line ends stay.
QString withoutControls(QStringView text)
{
    QString kept;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text[i];
        const bool isEscape = unit == u'\x1b' && i + 1 < text.size() && text[i + 1] == u'[';
        if (isEscape) {
            i += 2;
            while (i < text.size() && (text[i] < u'@' || text[i] > u'~'))
                ++i;
        } else if (unit == u'\t') {
            kept += u' ';
        } else if (unit.isSpace() || !(isDirection(unit) || unit.category() == QChar::Other_Control)) {
            kept += unit;
        }
    }
    return kept;
}

QString cleanedTitle(const QString &reply)
{
    // Sixty characters and what may stand around them lie well within this.
    constexpr qsizetype longestReply = 16'384;
    const QStringView body = QStringView(reply).trimmed();
    QString title = trimmed(withoutControls(body.first(qMin(body.size(), longestReply))));
    title.remove(u'"');
    return firstCharacters(singleLine(title), titleLength);
}

QString firstTextOf(Role role, const QList<ChatMessage> &messages)
{
    for (const ChatMessage &message : messages)
        if (message.role == role)
            return message.text;
    return {};
}

} // namespace

TitleGenerator::TitleGenerator(Scheduler &scheduler, TurnRunner &turns, Workspace &workspace,
                               const RequestConfiguration &configuration)
    : m_scheduler(scheduler), m_turns(turns), m_workspace(workspace), m_configuration(configuration)
{
}

void TitleGenerator::maybeGenerateConversationTitle()
{
    const auto id = m_workspace.conversations.currentID();
    if (!id || m_titleGeneratedFor == id)
        return;
    m_titleGeneratedFor = id;
    const QList<ChatMessage> &messages = m_workspace.transcript.messages();
    const QString firstMessage = firstTextOf(Role::user, messages);
    if (firstMessage.isEmpty())
        return;
    m_scheduler.spawn(
        generateTitle(*id, firstMessage, firstTextOf(Role::assistant, messages), m_configuration.build()));
}

Task<void> TitleGenerator::generateTitle(QUuid id, QString firstMessage, QString reply,
                                         AIConfiguration config)
{
    const QString title = co_await askForTitle(firstMessage, reply, std::move(config));
    if (title.isEmpty() || !m_workspace.conversations.rename(id, title))
        co_return;
    m_workspace.conversations.save(m_workspace.transcript.messages());
    m_workspace.status.announceProgress(u"Conversation summarized as: "_s + title + u'.');
}

Task<QString> TitleGenerator::askForTitle(QString firstMessage, QString reply, AIConfiguration config)
{
    config.systemPrompt = u"Generate a very short title (3 to 6 words) that summarizes the "
                          "conversation. Reply with only the title "
                          "text. No quotes, no ending period."_s;
    config.temperature = 0.3;
    config.maxTokens = 60;
    config.tools.clear();
    const QString request = u"First message: "_s + firstCharacters(firstMessage, quotedLength) +
                            u"\nReply: "_s + firstCharacters(reply, quotedLength) + u"\nTitle:"_s;
    QString title;
    try {
        const AITurnResult turn =
            co_await m_turns.runTurn({{APIMessage::User{request, {}}}}, config, [](const QString &) {});
        title = cleanedTitle(turn.text);
    } catch (...) {
        // The provisional title stays; a missing title is nothing to trouble the user with.
        qCInfo(appLog) << "no title:" << kindOfCurrentFailure();
    }
    // Keeps a provider's error text from becoming a title.
    if (title.toLower().contains("error"_L1))
        co_return QString();
    co_return title;
}

} // namespace morvane

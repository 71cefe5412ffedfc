// The half of AppModel that opens, saves and forgets conversations.

#include "app/AppModel.h"

#include "app/ContextTrimming.h"
#include "async/Scheduler.h"
#include "base/Uuid.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString sessionKey = u"currentConversationID"_s;

} // namespace

QString AppModel::titleOf(QUuid id) const
{
    const auto found = std::find_if(m_conversations.begin(), m_conversations.end(),
                                    [id](const ConversationMeta &meta) { return meta.id == id; });
    return found == m_conversations.end() ? QString() : found->title;
}

void AppModel::setConversations(QList<ConversationMeta> conversations)
{
    m_conversations = std::move(conversations);
    Q_EMIT conversationsChanged();
}

Task<void> AppModel::reloadConversations()
{
    QList<ConversationMeta> conversations;
    int changesSeen = 0;
    do {
        changesSeen = m_storeChanges;
        conversations = co_await m_services.conversations.list();
    } while (changesSeen != m_storeChanges);
    setConversations(std::move(conversations));
}

Task<void> AppModel::restore()
{
    const int navigation = m_navigation;
    co_await reloadConversations();
    const auto id = uuidFromText(settings().value(sessionKey).toString());
    const bool listed = id && std::any_of(m_conversations.begin(), m_conversations.end(),
                                          [&id](const ConversationMeta &meta) { return meta.id == *id; });
    if (listed && navigation == m_navigation) {
        const auto file = co_await m_services.conversations.load(*id);
        if (navigation == m_navigation) {
            m_currentConversationID = *id;
            m_currentTitle = titleOf(*id);
            const QList<ChatMessage> saved = file ? file->messages : QList<ChatMessage>();
            m_context = apiContext(saved);
            transcript().reset(saved);
            Q_EMIT currentConversationChanged();
        }
    }
    Q_EMIT restored();
}

void AppModel::saveCurrentConversation()
{
    if (messages().isEmpty())
        return;
    if (!m_currentConversationID) {
        m_currentConversationID = newUuid();
        settings().setValue(sessionKey, uuidText(*m_currentConversationID));
        Q_EMIT currentConversationChanged();
    }
    ++m_storeChanges;
    const ConversationMeta meta =
        m_services.conversations.save(*m_currentConversationID, m_currentTitle, messages());
    const auto found =
        std::find_if(m_conversations.begin(), m_conversations.end(),
                     [&meta](const ConversationMeta &candidate) { return candidate.id == meta.id; });
    if (found != m_conversations.end())
        *found = meta;
    else
        m_conversations.prepend(meta);
    Q_EMIT conversationsChanged();
}

void AppModel::clearConversation()
{
    ++m_navigation;
    transcript().reset({});
    m_context.clear();
    activity().clear();
    setBusy(false);
    status().setStatusText(u"Ready"_s);
    m_currentConversationID.reset();
    m_currentTitle.clear();
    settings().removeValue(sessionKey);
    Q_EMIT currentConversationChanged();
}

void AppModel::newConversation()
{
    cancelCurrentTask();
    m_localModel.cancelTasks();
    m_installPending = false;
    gate().resolvePermission(false, false);
    saveCurrentConversation();
    clearConversation();
    m_titleGeneratedFor.reset();
    m_services.scheduler.spawn(reloadConversations());
    status().announceProgress(u"New conversation started."_s);
}

void AppModel::openConversation(QUuid id)
{
    if (m_currentConversationID == id || m_isBusy || m_installPending)
        return;
    cancelCurrentTask();
    saveCurrentConversation();
    ++m_navigation;
    m_services.scheduler.spawn(open(id));
}

Task<void> AppModel::open(QUuid id)
{
    const int navigation = m_navigation;
    const auto file = co_await m_services.conversations.load(id);
    if (navigation != m_navigation)
        co_return;
    const QList<ChatMessage> saved = file ? file->messages : QList<ChatMessage>();
    activity().clear();
    m_context = apiContext(saved);
    m_currentConversationID = id;
    m_currentTitle = titleOf(id);
    transcript().reset(saved);
    setBusy(false);
    status().setStatusText(u"Ready"_s);
    settings().setValue(sessionKey, uuidText(id));
    Q_EMIT currentConversationChanged();
    m_services.scheduler.spawn(reloadConversations());
    status().announceProgress(
        u"Opened %1."_s.arg(m_currentTitle.isEmpty() ? u"the conversation"_s : m_currentTitle));
}

void AppModel::deleteConversation(QUuid id)
{
    ++m_storeChanges;
    m_services.conversations.remove(id);
    QList<ConversationMeta> remaining = m_conversations;
    remaining.removeIf([id](const ConversationMeta &meta) { return meta.id == id; });
    setConversations(std::move(remaining));
    m_services.scheduler.spawn(reloadConversations());
    if (m_currentConversationID == id) {
        cancelCurrentTask();
        gate().resolvePermission(false, false);
        m_installPending = false;
        clearConversation();
    }
    status().announceProgress(u"Conversation deleted."_s);
}

} // namespace morvane

#include "store/ConversationStore.h"

#include "async/OneShot.h"
#include "base/ReferenceDate.h"
#include "store/ConversationFiles.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

template <class T> Task<T> answerOf(OneShot<T> answer)
{
    co_return co_await answer.wait();
}

} // namespace

ConversationStore::ConversationStore(QString folder)
    : m_files(std::make_unique<ConversationFiles>(std::move(folder)))
{
    m_disk.setMaxThreadCount(1);
    m_disk.start([this] { m_files->prepareFolder(); });
}

ConversationStore::~ConversationStore()
{
    m_disk.waitForDone();
}

Task<QList<ConversationMeta>> ConversationStore::list()
{
    OneShot<QList<ConversationMeta>> answer;
    m_disk.start([this, answer]() mutable { answer.resume(m_files->list()); });
    return answerOf(answer);
}

ConversationMeta ConversationStore::save(QUuid id, QString title, QList<ChatMessage> messages)
{
    const double now = referenceDateNow();
    ConversationMeta meta{.id = id,
                          .title = title.isEmpty() ? u"Untitled"_s : title,
                          .updatedAt = now,
                          .messageCount = messages.size()};
    m_disk.start([this, id, title = std::move(title), messages = std::move(messages), now] {
        m_files->save(id, title, messages, now);
    });
    return meta;
}

void ConversationStore::remove(QUuid id)
{
    m_disk.start([this, id] { m_files->remove(id); });
}

Task<std::optional<ConversationFile>> ConversationStore::load(QUuid id)
{
    OneShot<std::optional<ConversationFile>> answer;
    m_disk.start([this, id, answer]() mutable { answer.resume(m_files->load(id)); });
    return answerOf(std::move(answer));
}

} // namespace morvane

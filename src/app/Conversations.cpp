#include "app/Conversations.h"

#include "async/CheckCancelled.h"
#include "async/Scheduler.h"
#include "base/Overloaded.h"
#include "base/Uuid.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"

#include <QSet>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString sessionKey = u"currentConversationID"_s;

/// As the list tells it.
QString shownTitle(const QString &title)
{
    return title.isEmpty() ? u"Untitled"_s : title;
}

} // namespace

Conversations::Conversations(Scheduler &scheduler, ConversationStore &store, SettingsStore &settings)
    : m_scheduler(scheduler), m_store(store), m_settings(settings)
{
}

bool Conversations::isReady() const
{
    return std::visit(Overloaded{[](const None &) { return true; }, [](const Restoring &) { return false; },
                                 [](const Opening &) { return false; }, [](const Open &) { return true; }},
                      m_phase);
}

std::optional<QUuid> Conversations::currentID() const
{
    using ID = std::optional<QUuid>;
    return std::visit(Overloaded{[](const None &) { return ID(); }, [](const Restoring &) { return ID(); },
                                 [](const Opening &opening) { return ID(opening.id); },
                                 [](const Open &open) { return ID(open.id); }},
                      m_phase);
}

QString Conversations::currentTitle() const
{
    return std::visit(Overloaded{[](const None &none) { return none.title; },
                                 [](const Restoring &) { return QString(); },
                                 [](const Opening &opening) { return opening.title.value_or(QString()); },
                                 [](const Open &open) { return open.title; }},
                      m_phase);
}

void Conversations::setPhase(Phase phase)
{
    const auto previous = currentID();
    std::visit(Overloaded{[](None &) {}, [](Restoring &restoring) { restoring.reading.cancel(); },
                          [](Opening &opening) { opening.reading.cancel(); }, [](Open &) {}},
               m_phase);
    m_phase = std::move(phase);
    if (currentID() != previous)
        Q_EMIT currentChanged();
}

void Conversations::restore()
{
    m_reading = Reading::current;
    const auto last = uuidFromText(m_settings.value(sessionKey).toString());
    setPhase(Restoring{last, m_scheduler.spawn(readLast())});
}

Task<void> Conversations::readLast()
{
    co_await readList();
    co_await checkCancelled();
    const auto last = std::get<Restoring>(m_phase).last;
    if (!last || rowOf(*last) < 0) {
        setPhase(None{});
        Q_EMIT settled();
        co_return;
    }
    const auto file = co_await m_store.load(*last);
    co_await checkCancelled();
    arrive(*last, titleOf(*last), file ? file->messages : QList<ChatMessage>());
    Q_EMIT settled();
}

bool Conversations::isCurrent(QUuid id) const
{
    const auto *restoring = std::get_if<Restoring>(&m_phase);
    return restoring ? restoring->last == id : currentID() == id;
}

void Conversations::open(QUuid id)
{
    const auto title = m_listKnown ? std::optional(titleOf(id)) : std::nullopt;
    m_settings.setValue(sessionKey, uuidText(id));
    setPhase(Opening{id, title, Renamed::no, m_scheduler.spawn(readOpening(id))});
}

Task<void> Conversations::readOpening(QUuid id)
{
    const auto file = co_await m_store.load(id);
    co_await checkCancelled();
    const auto [title, renamed] = [this, &file] {
        const auto &opening = std::get<Opening>(m_phase);
        return std::pair(opening.title.value_or(file ? shownTitle(file->title) : QString()), opening.renamed);
    }();
    const QList<ChatMessage> messages = file ? file->messages : QList<ChatMessage>();
    arrive(id, title, messages);
    if (renamed == Renamed::yes)
        save(messages);
    reload();
    Q_EMIT opened();
    Q_EMIT settled();
}

void Conversations::arrive(QUuid id, const QString &title, const QList<ChatMessage> &messages)
{
    const bool isAnother = currentID() != id;
    m_phase = Open{id, title};
    Q_EMIT arrived(messages);
    if (isAnother)
        Q_EMIT currentChanged();
}

void Conversations::begin()
{
    m_settings.removeValue(sessionKey);
    setPhase(None{});
}

void Conversations::remove(QUuid id)
{
    m_store.remove(id);
    if (const qsizetype row = rowOf(id); row >= 0) {
        m_list.removeAt(row);
        Q_EMIT rowsRemoved(row, row);
    }
    reload();
    if (isCurrent(id))
        begin();
}

void Conversations::setProvisionalTitle(const QString &title)
{
    std::visit(Overloaded{[&title](None &none) { none.title = title; }, [](Restoring &) {}, [](Opening &) {},
                          [&title](Open &open) { open.title = title; }},
               m_phase);
}

bool Conversations::rename(QUuid id, const QString &title)
{
    if (currentID() != id)
        return false;
    std::visit(Overloaded{[](None &) {}, [](Restoring &) {},
                          [&title](Opening &opening) {
                              opening.title = title;
                              opening.renamed = Renamed::yes;
                          },
                          [&title](Open &open) { open.title = title; }},
               m_phase);
    return true;
}

void Conversations::save(const QList<ChatMessage> &messages)
{
    if (messages.isEmpty())
        return;
    const Phase phase = m_phase; // which the first save changes
    std::visit(Overloaded{[this, &messages](const None &none) {
                              const QUuid id = newUuid();
                              m_settings.setValue(sessionKey, uuidText(id));
                              write(id, none.title, messages);
                              setPhase(Open{id, none.title});
                          },
                          [](const Restoring &) {}, [](const Opening &) {},
                          [this, &messages](const Open &open) { write(open.id, open.title, messages); }},
               phase);
}

void Conversations::write(QUuid id, const QString &title, const QList<ChatMessage> &messages)
{
    listChanges();
    const ConversationMeta meta = m_store.save(id, title, messages);
    const qsizetype row = rowOf(id);
    if (row >= 0) {
        m_list[row] = meta;
        Q_EMIT rowChanged(row);
    } else {
        m_list.prepend(meta);
        Q_EMIT rowsInserted(0, 0);
    }
}

void Conversations::listChanges()
{
    if (m_reading == Reading::current)
        m_reading = Reading::outdated;
}

void Conversations::reload()
{
    listChanges();
    if (m_reading != Reading::none)
        return;
    m_reading = Reading::current;
    m_scheduler.spawn(readList());
}

Task<void> Conversations::readList()
{
    QList<ConversationMeta> listed = co_await m_store.list();
    while (m_reading == Reading::outdated) {
        m_reading = Reading::current;
        listed = co_await m_store.list();
    }
    m_reading = Reading::none;
    m_listKnown = true;
    takeList(listed);
}

void Conversations::takeList(const QList<ConversationMeta> &listed)
{
    removeAllBut(listed);
    QSet<QUuid> known;
    for (const ConversationMeta &meta : std::as_const(m_list))
        known.insert(meta.id);
    // Row by row; everything in front of `row` stands as it is listed.
    for (qsizetype row = 0; row < listed.size(); ++row) {
        const ConversationMeta &meta = listed.at(row);
        const qsizetype from = known.contains(meta.id) ? rowOf(meta.id, row) : -1;
        if (from < 0) {
            qsizetype last = row;
            while (last + 1 < listed.size() && !known.contains(listed.at(last + 1).id))
                ++last;
            m_list = m_list.first(row) + listed.mid(row, last - row + 1) + m_list.mid(row);
            Q_EMIT rowsInserted(row, last);
            row = last;
            continue;
        }
        if (from != row) {
            m_list.move(from, row);
            Q_EMIT rowMoved(from, row);
        }
        if (m_list.at(row) != meta) {
            m_list[row] = meta;
            Q_EMIT rowChanged(row);
        }
    }
    // Two files may tell the same identifier, and one of them may be gone.
    if (const qsizetype size = m_list.size(); size > listed.size()) {
        m_list = listed;
        Q_EMIT rowsRemoved(listed.size(), size - 1);
    }
}

void Conversations::removeAllBut(const QList<ConversationMeta> &listed)
{
    QSet<QUuid> wanted;
    for (const ConversationMeta &meta : listed)
        wanted.insert(meta.id);
    for (qsizetype last = m_list.size() - 1; last >= 0; --last) {
        if (wanted.contains(m_list.at(last).id))
            continue;
        qsizetype first = last;
        while (first > 0 && !wanted.contains(m_list.at(first - 1).id))
            --first;
        m_list.remove(first, last - first + 1);
        Q_EMIT rowsRemoved(first, last);
        last = first;
    }
}

qsizetype Conversations::rowOf(QUuid id, qsizetype from) const
{
    const auto found = std::find_if(m_list.begin() + from, m_list.end(),
                                    [id](const ConversationMeta &meta) { return meta.id == id; });
    return found == m_list.end() ? -1 : found - m_list.begin();
}

QString Conversations::titleOf(QUuid id) const
{
    const qsizetype row = rowOf(id);
    return row < 0 ? QString() : m_list.at(row).title;
}

} // namespace morvane

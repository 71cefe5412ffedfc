#include "ui/window/ConversationListModel.h"

#include "app/Conversations.h"
#include "base/LabelText.h"
#include "base/ReferenceDate.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Characters of a title. Ours are far shorter, those of a file that someone else wrote may not be.
constexpr qsizetype longestTitle = 300;

QString dateText(const ConversationMeta &meta)
{
    return QLocale().toString(dateTimeFromReferenceDate(meta.updatedAt).toLocalTime(), u"MMM d, h:mm AP"_s);
}

QString countText(const ConversationMeta &meta)
{
    return u"%1 messages"_s.arg(meta.messageCount);
}

} // namespace

ConversationListModel::ConversationListModel(const Conversations &conversations, QObject *parent)
    : QAbstractListModel(parent), m_conversations(conversations), m_shown(conversations.list())
{
    connect(&conversations, &Conversations::rowsInserted, this, &ConversationListModel::takeInserted);
    connect(&conversations, &Conversations::rowsRemoved, this, &ConversationListModel::takeRemoved);
    connect(&conversations, &Conversations::rowMoved, this, &ConversationListModel::takeMoved);
    connect(&conversations, &Conversations::rowChanged, this, &ConversationListModel::takeChanged);
}

void ConversationListModel::takeInserted(qsizetype first, qsizetype last)
{
    beginInsertRows({}, int(first), int(last));
    m_shown = m_conversations.list();
    endInsertRows();
}

void ConversationListModel::takeRemoved(qsizetype first, qsizetype last)
{
    beginRemoveRows({}, int(first), int(last));
    m_shown = m_conversations.list();
    endRemoveRows();
}

void ConversationListModel::takeMoved(qsizetype from, qsizetype to)
{
    // The toolkit counts the destination with the row still in its place.
    beginMoveRows({}, int(from), int(from), {}, int(to > from ? to + 1 : to));
    m_shown = m_conversations.list();
    endMoveRows();
}

void ConversationListModel::takeChanged(qsizetype row)
{
    m_shown = m_conversations.list();
    Q_EMIT dataChanged(index(int(row)), index(int(row)));
}

int ConversationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_shown.size());
}

int ConversationListModel::currentRow() const
{
    for (qsizetype row = 0; row < m_shown.size(); ++row)
        if (m_shown.at(row).id == m_conversations.currentID())
            return int(row);
    return -1;
}

QVariant ConversationListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const ConversationMeta &meta = conversation(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return labelText(meta.title, longestTitle);
    case detailRole:
        return QString(dateText(meta) + u" · "_s + countText(meta));
    case Qt::AccessibleTextRole:
        return u"Open %1, updated %2, %3"_s.arg(labelText(meta.title, longestTitle), dateText(meta),
                                                countText(meta));
    default:
        return {};
    }
}

} // namespace morvane

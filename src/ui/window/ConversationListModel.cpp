#include "ui/window/ConversationListModel.h"

#include "app/AppModel.h"
#include "base/ReferenceDate.h"
#include "ui/controls/LabelText.h"

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

ConversationListModel::ConversationListModel(AppModel &model, QObject *parent)
    : QAbstractListModel(parent), m_model(model)
{
    connect(&model, &AppModel::conversationsChanged, this, [this] {
        beginResetModel();
        endResetModel();
    });
}

int ConversationListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_model.conversations().size());
}

const ConversationMeta &ConversationListModel::conversation(int row) const
{
    return m_model.conversations().at(row);
}

int ConversationListModel::currentRow() const
{
    const auto &conversations = m_model.conversations();
    for (qsizetype row = 0; row < conversations.size(); ++row)
        if (conversations.at(row).id == m_model.currentConversationID())
            return static_cast<int>(row);
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

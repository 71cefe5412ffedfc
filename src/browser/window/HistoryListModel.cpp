#include "browser/window/HistoryListModel.h"

#include "base/ReferenceDate.h"
#include "browser/pages/PageText.h"

#include <QLocale>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QDateTime timeOf(const BrowserHistoryEntry &entry)
{
    return dateTimeFromReferenceDate(entry.visitedAt).toLocalTime();
}

QString headingOf(QDate day, QDate today)
{
    if (day == today)
        return u"Today"_s;
    if (day == today.addDays(-1))
        return u"Yesterday"_s;
    return QLocale::system().toString(day, QLocale::LongFormat);
}

QString shortTime(const BrowserHistoryEntry &entry)
{
    return QLocale::system().toString(timeOf(entry).time(), QLocale::ShortFormat);
}

} // namespace

HistoryListModel::HistoryListModel(Icons icons, QObject *parent)
    : QAbstractListModel(parent), m_icons(std::move(icons))
{
}

void HistoryListModel::setEntries(const QList<BrowserHistoryEntry> &entries, QDate today)
{
    beginResetModel();
    m_rows.clear();
    QString heading;
    for (const BrowserHistoryEntry &entry : entries) {
        const QString day = headingOf(timeOf(entry).date(), today);
        if (day != heading || m_rows.isEmpty())
            m_rows.append({.heading = day, .entry = {}});
        heading = day;
        m_rows.append({.heading = {}, .entry = entry});
    }
    m_entryCount = entries.size();
    endResetModel();
}

std::optional<BrowserHistoryEntry> HistoryListModel::entry(const QModelIndex &index) const
{
    if (!index.isValid() || index.row() >= m_rows.size() || !m_rows.at(index.row()).heading.isEmpty())
        return std::nullopt;
    return m_rows.at(index.row()).entry;
}

int HistoryListModel::rowOf(QUuid id) const
{
    const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(), [id](const Row &row) {
        return row.heading.isEmpty() && row.entry.id == id;
    });
    return found == m_rows.cend() ? -1 : static_cast<int>(found - m_rows.cbegin());
}

int HistoryListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant HistoryListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    const bool isHeading = !row.heading.isEmpty();
    if (role == isHeadingRole)
        return isHeading;
    if (isHeading)
        return role == Qt::DisplayRole || role == Qt::AccessibleTextRole ? row.heading : QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return pageName(row.entry.title, row.entry.host);
    case detailRole:
        return QString(pageText(row.entry.host) + u" · "_s + shortTime(row.entry));
    case Qt::DecorationRole:
        return m_icons(row.entry.host);
    case Qt::AccessibleTextRole:
        return QString(pageName(row.entry.title, row.entry.host) + u", visited "_s + shortTime(row.entry));
    case Qt::AccessibleDescriptionRole:
        return u"Open this page"_s;
    default:
        return {};
    }
}

} // namespace morvane

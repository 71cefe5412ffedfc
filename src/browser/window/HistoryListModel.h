#pragma once

#include "browser/history/BrowserHistoryEntry.h"

#include <QAbstractListModel>
#include <QDate>
#include <QImage>
#include <QList>
#include <functional>
#include <optional>

namespace morvane {

/// The rows of the history sheet: a heading for each day, and the entries of that day below it.
class HistoryListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role {
        isHeadingRole = Qt::UserRole,
        detailRole, ///< Host and time.
    };

    /// The icon of a host, or a null image.
    using Icons = std::function<QImage(const QString &host)>;

    explicit HistoryListModel(Icons icons, QObject *parent = nullptr);

    /// Shows these, newest first; `today` is the user's.
    void setEntries(const QList<BrowserHistoryEntry> &entries, QDate today);
    /// How many entries there are.
    qsizetype entryCount() const { return m_entryCount; }
    /// The entry of a row; none for a heading.
    std::optional<BrowserHistoryEntry> entry(const QModelIndex &index) const;
    /// The row of an entry, or -1.
    int rowOf(QUuid id) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Row {
        QString heading; ///< Empty in front of an entry.
        BrowserHistoryEntry entry;
    };

    Icons m_icons;
    QList<Row> m_rows;
    qsizetype m_entryCount = 0;
};

} // namespace morvane

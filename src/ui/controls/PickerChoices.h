#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

namespace morvane {

/// One row of a MenuPicker.
struct PickerChoice {
    /// Whether a search leaves out the row where it does not fit.
    enum class Search { filtered, always };

    QString text;
    QString tag;    ///< Tells the row apart from others.
    QString detail; ///< A word or two at the end of the row; may be empty.
    Search search = Search::filtered;

    bool operator==(const PickerChoice &) const = default;
};

/// The rows of a MenuPicker.
class PickerChoices : public QAbstractListModel {
    Q_OBJECT
public:
    enum DataRole { tagRole = Qt::UserRole, detailRole };

    using QAbstractListModel::QAbstractListModel;

    void setChoices(const QList<PickerChoice> &choices);
    const QList<PickerChoice> &choices() const { return m_choices; }
    /// The row with this tag, -1 if there is none.
    int rowOf(const QString &tag) const;
    /// Whether the row stays in a search for `text`, whatever its case.
    bool fits(int row, const QString &text) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QList<PickerChoice> m_choices;
};

} // namespace morvane

#pragma once

#include "ui/controls/PickerChoices.h"

#include <QComboBox>

class QLabel;

namespace morvane {

/// One choice out of a list that opens on demand. Keys open the list instead of changing the choice unseen;
/// in the open list, typing leaves the rows that contain what was typed. Lists of thousands of rows open at
/// once. The wheel never changes the choice.
class MenuPicker : public QComboBox {
    Q_OBJECT
public:
    explicit MenuPicker(const QString &accessibleName, QWidget *parent = nullptr);

    void setChoices(const QList<PickerChoice> &choices);
    /// Shows the choice with this tag, or none; without `chosen`.
    void select(const QString &tag);

    /// What has been typed to find a row; empty while the list is closed.
    const QString &searchText() const { return m_search; }

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// The user chose a row, be it the one that is chosen already.
    void chosen(const QString &tag);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool searchKey(const QKeyEvent &event);
    void setSearch(const QString &search);
    void applySearch();

    PickerChoices *m_choices;
    QLabel *m_searchLine;
    QString m_search;
};

} // namespace morvane

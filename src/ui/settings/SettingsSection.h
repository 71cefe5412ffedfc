#pragma once

#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"

#include <QVBoxLayout>
#include <QWidget>

namespace morvane {

/// One group of the settings: a bold heading on a card with what belongs to it. One group for assistive
/// technology too.
class SettingsSection : public QWidget {
    Q_OBJECT
public:
    explicit SettingsSection(const QString &heading, QWidget *parent = nullptr);

protected:
    QVBoxLayout *column() const { return m_column; }
    void setSectionHeading(const QString &heading);
    NoteLabel *addNote(const QString &text, NoteLabel::Tone tone = NoteLabel::Tone::secondary);
    /// A little air before what follows.
    void addGap();

    void paintEvent(QPaintEvent *event) override;

private:
    HeadingLabel *m_heading;
    QVBoxLayout *m_column;
};

} // namespace morvane

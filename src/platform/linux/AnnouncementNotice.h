#pragma once

#include <QAccessible>
#include <QAccessibleObject>
#include <QObject>
#include <QString>

namespace morvane {

/// A text that appears in the accessibility tree as a notification of the program, without a widget: screen
/// readers that know no announcements read notifications out when they come into view.
///
/// One object carries one text for good, so that a reader that asks late still finds the text it was told of.
class AnnouncementNotice : public QObject {
    Q_OBJECT
public:
    /// `text` must be free of what the bus cannot carry (spokenPieces).
    explicit AnnouncementNotice(QString text, QObject *parent = nullptr);

    const QString &text() const { return m_text; }

    /// Tells the screen readers that the notice has come into view.
    void show();

    /// Lets Qt find the accessible side of notices; called once before the first notice is shown.
    static void installAccessibility();

private:
    QString m_text;
};

} // namespace morvane

#pragma once

#include "browser/history/BrowserBookmark.h"

#include <QList>
#include <QSet>
#include <QWidget>

class QToolButton;

namespace morvane {

class BrowserMenuActions;
class BrowsingRecords;
class ScrollStrip;

/// The bookmarks, each a button that opens it, with a menu that removes it. Not shown when there are none.
class BookmarksBar : public QWidget {
    Q_OBJECT
public:
    /// Both outlive the bar.
    BookmarksBar(BrowsingRecords &records, BrowserMenuActions &actions, QWidget *parent = nullptr);

    /// Shows icons that have been fetched since.
    void updateIcons();

private:
    void update();
    void showIcon(const BrowserBookmark &bookmark, QToolButton &button);
    QToolButton *makeButton(const BrowserBookmark &bookmark);
    void openMenu(const BrowserBookmark &bookmark, const QToolButton &button);

    BrowsingRecords &m_records;
    BrowserMenuActions &m_actions;
    ScrollStrip *m_strip;
    QList<BrowserBookmark> m_shown;
    QList<QToolButton *> m_buttons;
    QSet<QUuid> m_withIcon; ///< The bookmarks whose sites have shown theirs.
};

} // namespace morvane

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

/// The bookmarks, each a button that opens it, with a menu that removes it. Not shown when there are none. Of
/// very many those further on get their buttons when the user comes near.
class BookmarksBar : public QWidget {
    Q_OBJECT
public:
    /// Both outlive the bar.
    BookmarksBar(BrowsingRecords &records, BrowserMenuActions &actions, QWidget *parent = nullptr);

    /// Shows icons that have been fetched since.
    void updateIcons();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();
    void makeMore();
    void showIcon(const BrowserBookmark &bookmark, QToolButton &button);
    QToolButton *makeButton(const BrowserBookmark &bookmark);
    void openMenu(const BrowserBookmark &bookmark, const QToolButton &button);

    static constexpr qsizetype batch = 50;

    BrowsingRecords &m_records;
    BrowserMenuActions &m_actions;
    ScrollStrip *m_strip;
    QList<BrowserBookmark> m_shown; ///< The first of all.
    qsizetype m_mostShown = batch;
    QList<QToolButton *> m_buttons;
    QSet<QUuid> m_withIcon; ///< The bookmarks whose sites have shown theirs.
};

} // namespace morvane

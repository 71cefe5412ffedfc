#include "browser/window/BookmarksBar.h"

#include "browser/pages/PageText.h"
#include "browser/window/BrowserMenuActions.h"
#include "browser/window/BrowsingRecords.h"
#include "browser/window/ScrollStrip.h"
#include "browser/window/ToolButton.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/DescribedMenuItem.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/MenuKey.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// In characters of the font.
constexpr int widestButton = 24;
constexpr QSize largestIcon{64, 64};

} // namespace

BookmarksBar::BookmarksBar(BrowsingRecords &records, BrowserMenuActions &actions, QWidget *parent)
    : QWidget(parent), m_records(records), m_actions(actions), m_strip(new ScrollStrip)
{
    setAccessibleRole(this, QAccessible::ToolBar);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 0, 8, 4);
    row->addWidget(m_strip);
    m_strip->row()->addStretch(1);
    connect(&records, &BrowsingRecords::bookmarksChanged, this, &BookmarksBar::update);
    const QScrollBar *bar = m_strip->horizontalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this, [this, bar](int value) {
        if (value > 0 && value >= bar->maximum() - bar->pageStep())
            makeMore();
    });
    update();
}

void BookmarksBar::makeMore()
{
    if (m_shown.size() == m_records.bookmarks().size())
        return;
    m_mostShown = m_shown.size() + batch;
    update();
}

void BookmarksBar::update()
{
    const QList<BrowserBookmark> &bookmarks = m_records.bookmarks();
    QSet<QUuid> known;
    for (const BrowserBookmark &bookmark : bookmarks)
        known.insert(bookmark.id);
    for (qsizetype index = m_shown.size() - 1; index >= 0; --index) {
        if (known.contains(m_shown.at(index).id))
            continue;
        const bool hadFocus = m_buttons.at(index)->hasFocus();
        m_shown.removeAt(index);
        delete m_buttons.takeAt(index);
        if (hadFocus && !m_buttons.isEmpty())
            m_buttons.at(std::min(index, m_buttons.size() - 1))->setFocus(Qt::OtherFocusReason);
    }
    // New ones are only ever added behind those that are there.
    const qsizetype count = std::min(bookmarks.size(), m_mostShown);
    for (qsizetype index = m_shown.size(); index < count; ++index) {
        m_shown.append(bookmarks.at(index));
        m_buttons.append(makeButton(bookmarks.at(index)));
        m_strip->row()->insertWidget(static_cast<int>(index), m_buttons.last());
    }
    setAccessibleName(u"Bookmarks, %1 items"_s.arg(bookmarks.size()));
    setVisible(!bookmarks.isEmpty());
}

QToolButton *BookmarksBar::makeButton(const BrowserBookmark &bookmark)
{
    const QString title = pageName(bookmark.title, bookmark.url);
    QToolButton *button = toolButton(Symbol::globe, u"Open bookmark "_s + title);
    QString shown = button->fontMetrics().elidedText(title, Qt::ElideRight,
                                                     button->fontMetrics().averageCharWidth() * widestButton);
    button->setText(u' ' + shown.replace(u'&', u"&&"_s)); // a little apart from the icon
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    showIcon(bookmark, *button);
    setHoverText(button,
                 u"<qt>%1<br>%2</qt>"_s.arg(title.toHtmlEscaped(), pageText(bookmark.url).toHtmlEscaped()));
    button->setContextMenuPolicy(Qt::CustomContextMenu);
    button->installEventFilter(this);
    connect(button, &QToolButton::clicked, this, [this, url = bookmark.url] { m_actions.open(url); });
    connect(button, &QToolButton::customContextMenuRequested, this,
            [this, bookmark, button] { openMenu(bookmark, *button); });
    return button;
}

bool BookmarksBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !isMenuKey(*static_cast<QKeyEvent *>(event)))
        return QWidget::eventFilter(watched, event);
    Q_EMIT static_cast<QWidget *>(watched)->customContextMenuRequested({});
    return true;
}

void BookmarksBar::openMenu(const BrowserBookmark &bookmark, const QToolButton &button)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *remove =
        menu->addAction(u"Remove bookmark "_s + pageName(bookmark.title, bookmark.url).replace(u'&', u"&&"_s),
                        this, [this, id = bookmark.id] { m_records.removeBookmark(id); });
    describeMenuItem(*menu, *remove, u"Remove this bookmark"_s);
    menu->popup(button.mapToGlobal(button.rect().bottomLeft()));
    menu->setActiveAction(remove);
}

void BookmarksBar::updateIcons()
{
    for (qsizetype index = 0; index < m_shown.size(); ++index)
        if (!m_withIcon.contains(m_shown.at(index).id))
            showIcon(m_shown.at(index), *m_buttons.at(index));
}

void BookmarksBar::showIcon(const BrowserBookmark &bookmark, QToolButton &button)
{
    const QImage icon = m_records.bookmarkFavicon(bookmark);
    if (icon.isNull())
        return;
    m_withIcon.insert(bookmark.id);
    // The toolkit makes icons smaller, but never larger.
    const QImage large = icon.scaled(largestIcon, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    button.setIcon(QIcon(QPixmap::fromImage(large)));
}

} // namespace morvane

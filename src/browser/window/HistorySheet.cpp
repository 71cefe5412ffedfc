#include "browser/window/HistorySheet.h"

#include "browser/window/BrowserMenuActions.h"
#include "browser/window/BrowsingRecords.h"
#include "browser/window/HistoryListModel.h"
#include "browser/window/HistoryRowDelegate.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/MenuKey.h"

#include <QClipboard>
#include <QDate>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// In characters and lines of the font.
constexpr int usualWidth = 70;
constexpr int usualHeight = 32;

} // namespace

HistorySheet::HistorySheet(BrowsingRecords &records, BrowserMenuActions &actions, QWidget *parent)
    : QDialog(parent), m_records(records), m_actions(actions),
      m_rows(new HistoryListModel([&records](const QString &host) { return records.favicon(host); }, this)),
      m_query(new QLineEdit), m_results(new QLabel), m_list(new QListView)
{
    setWindowTitle(u"History"_s);
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    m_query->setPlaceholderText(u"Search history"_s);
    m_query->setAccessibleName(u"Search history"_s);
    m_query->setAccessibleDescription(u"Filter by title or address"_s);
    m_results->setObjectName(u"results"_s);
    m_results->setForegroundRole(QPalette::PlaceholderText);
    m_list->setModel(m_rows);
    m_list->setItemDelegate(new HistoryRowDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setMouseTracking(true);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->installEventFilter(this);
    m_query->installEventFilter(this);

    auto *clear = new QPushButton(u"Clear"_s);
    clear->setAutoDefault(false);
    clear->setAccessibleName(u"Clear browsing options"_s);
    auto *choices = new QMenu(clear);
    choices->addAction(u"Clear History…"_s, &actions, &BrowserMenuActions::confirmClearHistory);
    choices->addAction(u"Clear Browsing Data…"_s, &actions, &BrowserMenuActions::confirmClearBrowsingData);
    clear->setMenu(choices);
    auto *done = new QPushButton(u"Done"_s);
    done->setAutoDefault(false);

    auto *head = new QHBoxLayout;
    head->addWidget(new HeadingLabel(u"History"_s, HeadingLabel::Level::title), 1);
    head->addWidget(m_results);
    head->addWidget(clear);
    auto *foot = new QHBoxLayout;
    foot->addStretch(1);
    foot->addWidget(done);
    auto *column = new QVBoxLayout(this);
    column->addLayout(head);
    column->addWidget(m_query);
    column->addWidget(m_list, 1);
    column->addLayout(foot);

    connect(m_query, &QLineEdit::textChanged, this, &HistorySheet::update);
    connect(&records.history(), &HistoryStore::changed, this, &HistorySheet::update);
    connect(m_list, &QListView::clicked, this, &HistorySheet::openRow);
    connect(m_list, &QListView::customContextMenuRequested, this, &HistorySheet::openMenu);
    connect(done, &QPushButton::clicked, this, &HistorySheet::close);
    resize(fontMetrics().averageCharWidth() * usualWidth, fontMetrics().lineSpacing() * usualHeight);
    if (parent)
        resize(size().boundedTo(parent->size()));
    update();
    m_query->setFocus();
}

void HistorySheet::update()
{
    const auto current = m_rows->entry(m_list->currentIndex());
    const int row = m_list->currentIndex().row();
    m_rows->setEntries(m_records.history().search(m_query->text()), QDate::currentDate());
    // What the keyboard is on stays; of one that is gone, its neighbour takes the place.
    if (current) {
        const int found = m_rows->rowOf(current->id);
        m_list->setCurrentIndex(m_rows->index(found >= 0 ? found : std::min(row, m_rows->rowCount() - 1), 0));
    }
    const QString count = QString::number(m_rows->entryCount());
    m_results->setText(count + u" results"_s);
    m_list->setAccessibleName(u"Browsing history, %1 items"_s.arg(count));
    setAccessibleName(m_list->accessibleName());
}

void HistorySheet::openRow(const QModelIndex &index)
{
    const auto entry = m_rows->entry(index);
    if (!entry)
        return;
    m_actions.open(entry->url);
    close();
}

void HistorySheet::deleteRow(const QModelIndex &index)
{
    if (const auto entry = m_rows->entry(index))
        m_records.history().remove(entry->id);
}

void HistorySheet::openMenu(const QPoint &position)
{
    const auto entry = m_rows->entry(m_list->indexAt(position));
    if (!entry)
        return;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *copy = menu->addAction(u"Copy Link"_s, this,
                                    [url = entry->url] { QGuiApplication::clipboard()->setText(url); });
    menu->addAction(u"Delete"_s, this, [this, id = entry->id] { m_records.history().remove(id); });
    menu->popup(m_list->viewport()->mapToGlobal(position));
    menu->setActiveAction(copy);
}

bool HistorySheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const auto *pressed = static_cast<QKeyEvent *>(event);
    const int key = pressed->key();
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (watched == m_query && key == Qt::Key_Down && m_rows->rowCount() > 0) {
        m_list->setFocus(Qt::TabFocusReason);
        m_list->setCurrentIndex(m_rows->index(std::max(0, m_list->currentIndex().row()), 0));
        return true;
    }
    if (watched != m_list || (!isReturn && key != Qt::Key_Delete && !isMenuKey(*pressed)))
        return QDialog::eventFilter(watched, event);
    const QModelIndex index = m_list->currentIndex();
    if (isReturn)
        openRow(index);
    else if (key == Qt::Key_Delete)
        deleteRow(index);
    else
        openMenu(m_list->visualRect(index).center());
    return true;
}

} // namespace morvane

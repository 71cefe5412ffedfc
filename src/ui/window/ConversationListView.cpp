#include "ui/window/ConversationListView.h"
#include "base/LabelText.h"
#include "ui/controls/HoverText.h"

#include "app/AppModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/ConversationDelegate.h"
#include "ui/window/ConversationList.h"
#include "ui/window/ConversationListModel.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>
#include <QStylePainter>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int smallestWidth = 160;
constexpr qreal buttonRadius = 6;

/// Stands on a ground of its own, since its symbol and the mark of its focus are not seen on a selected row.
class DeleteButton : public QToolButton {
public:
    using QToolButton::QToolButton;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStylePainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ThemeColors::fromPalette(palette()).window);
        painter.drawRoundedRect(rect(), buttonRadius, buttonRadius);
        QStyleOptionToolButton option;
        initStyleOption(&option);
        option.state.setFlag(QStyle::State_HasFocus, false);
        painter.drawComplexControl(QStyle::CC_ToolButton, option);
        if (hasFocus())
            MorvaneStyle::drawFocusRing(painter, QRectF(rect()).adjusted(2, 2, -2, -2), buttonRadius,
                                        palette());
    }
};

} // namespace

ConversationListView::ConversationListView(AppModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_rows(new ConversationListModel(model.conversations(), this)),
      m_list(new ConversationList), m_empty(new QLabel(u"No saved conversations yet."_s)),
      m_delete(new DeleteButton)
{
    auto *title = new QLabel(u"Conversations"_s);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    title->setContentsMargins(14, 12, 8, 4);
    title->setBuddy(m_list);

    m_list->setModel(m_rows);
    m_list->setItemDelegate(new ConversationDelegate(m_list));
    m_list->setAccessibleName(u"Conversations"_s);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setTabKeyNavigation(false);
    m_list->setSelectionMode(QAbstractItemView::NoSelection); // by the user: selected is what is open
    m_list->viewport()->setAutoFillBackground(false);
    m_list->installEventFilter(this);
    m_list->viewport()->installEventFilter(this);

    m_empty->setAccessibleName(u"No saved conversations yet. They are saved automatically."_s);
    m_empty->setWordWrap(true);
    m_empty->setAlignment(Qt::AlignTop);
    m_empty->setContentsMargins(14, 4, 8, 4);

    m_delete->setIcon(symbolIcon(Symbol::trash));
    m_delete->setAutoRaise(true);
    m_delete->setFocusPolicy(Qt::TabFocus);
    m_delete->installEventFilter(this);
    m_delete->hide();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(title);
    column->addWidget(m_empty, 1);
    column->addWidget(m_list, 1);
    m_delete->setParent(this); // only now, so that Tab reaches it after the list

    connect(m_list, &QListView::clicked, this, [this](const QModelIndex &row) {
        openRow(row);
        Q_EMIT openedByMouse();
    });
    connect(m_list, &ConversationList::openRequested, this, &ConversationListView::openRow);
    connect(m_list, &QListView::entered, this, &ConversationListView::moveButtonToPointer);
    connect(m_list, &QListView::customContextMenuRequested, this, &ConversationListView::openMenu);
    connect(m_list->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this] { moveButton(m_list->currentIndex()); });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ConversationListView::moveButton);
    connect(m_delete, &QToolButton::clicked, this, [this] { deleteRow(m_buttonRow); });
    connect(m_rows, &QAbstractItemModel::rowsInserted, this, &ConversationListView::takeInserted);
    connect(m_rows, &QAbstractItemModel::rowsRemoved, this, &ConversationListView::takeRemoved);
    connect(m_rows, &QAbstractItemModel::rowsMoved, this, &ConversationListView::keepButton);
    connect(m_rows, &QAbstractItemModel::dataChanged, this, &ConversationListView::keepButton);
    connect(&model.conversations(), &Conversations::currentChanged, this,
            &ConversationListView::selectOpenConversation);
    showListOrNote();
    selectOpenConversation();
}

QSize ConversationListView::minimumSizeHint() const
{
    // Large type must not cut the heading, nor what a row tells.
    const int rows = ConversationDelegate::minimumWidth(m_list->font());
    return QWidget::minimumSizeHint().expandedTo({std::max(smallestWidth, rows), 0});
}

QSize ConversationListView::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 28, 400};
}

void ConversationListView::showListOrNote()
{
    const bool empty = m_rows->rowCount() == 0;
    m_empty->setVisible(empty);
    m_list->setVisible(!empty);
}

void ConversationListView::takeInserted()
{
    showListOrNote();
    // The row of the current conversation may have come only now.
    if (m_list->selectionModel()->selectedIndexes().isEmpty())
        selectOpenConversation();
    keepButton();
}

void ConversationListView::takeRemoved()
{
    const bool hadFocus = m_list->hasFocus() || m_delete->hasFocus();
    showListOrNote();
    keepButton();
    if (hadFocus && !m_list->isHidden()) {
        if (!m_list->currentIndex().isValid())
            m_list->setCurrentIndex(m_rows->index(0));
        m_list->setFocus();
    }
}

void ConversationListView::keepButton()
{
    moveButton(m_buttonRow);
}

void ConversationListView::selectOpenConversation()
{
    const int row = m_rows->currentRow();
    if (row < 0)
        m_list->clearSelection();
    else
        m_list->selectionModel()->select(m_rows->index(row, 0), QItemSelectionModel::ClearAndSelect);
    moveButton(m_list->currentIndex());
}

void ConversationListView::openRow(const QModelIndex &index)
{
    if (index.isValid())
        m_model.openConversation(m_rows->conversation(index.row()).id);
}

void ConversationListView::deleteRow(const QModelIndex &index)
{
    if (index.isValid())
        m_model.deleteConversation(m_rows->conversation(index.row()).id);
}

void ConversationListView::openMenu(const QPoint &position)
{
    const QModelIndex index = m_list->indexAt(position);
    if (!index.isValid())
        return;
    const QUuid id = m_rows->conversation(index.row()).id;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(u"Open"_s, this, [this, id] { m_model.openConversation(id); });
    menu->addAction(symbolIcon(Symbol::trash), u"Delete"_s, this,
                    [this, id] { m_model.deleteConversation(id); });
    menu->popup(m_list->viewport()->mapToGlobal(position));
}

void ConversationListView::moveButton(const QModelIndex &wanted)
{
    const QModelIndex index =
        wanted.isValid() ? wanted : m_list->selectionModel()->selectedIndexes().value(0);
    m_buttonRow = index;
    const QRect row = index.isValid() ? m_list->visualRect(index) : QRect();
    if (!row.isValid() || !m_list->viewport()->rect().intersects(row)) {
        // The toolkit would go on to what comes behind the list.
        if (m_delete->hasFocus())
            m_list->setFocus(Qt::OtherFocusReason);
        m_delete->hide();
        return;
    }
    const QString label = u"Delete "_s + labelText(m_rows->conversation(index.row()).title);
    m_delete->setAccessibleName(label);
    setHoverText(m_delete, label);
    const int side = ConversationDelegate::buttonPlace - 4;
    const QPoint place(row.right() - side - 6, row.center().y() - side / 2);
    m_delete->setGeometry(QRect(m_list->viewport()->mapTo(this, place), QSize(side, side)));
    m_delete->raise();
    m_delete->show();
}

void ConversationListView::moveButtonToPointer(const QModelIndex &row)
{
    // Whoever is about to press it with the keyboard means the row on which it was reached.
    if (!m_delete->hasFocus())
        moveButton(row);
}

bool ConversationListView::takeKey(const QKeyEvent &key)
{
    switch (key.key()) {
    case Qt::Key_Delete:
        // A key that is held down must not go through the list.
        if (!key.isAutoRepeat() && key.modifiers() == Qt::NoModifier)
            deleteRow(m_list->currentIndex());
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!key.isAutoRepeat())
            openRow(m_list->currentIndex());
        return true;
    default:
        return false;
    }
}

void ConversationListView::takeFocus()
{
    if (!m_list->currentIndex().isValid() && m_rows->rowCount() > 0)
        m_list->setCurrentIndex(m_rows->index(std::max(m_rows->currentRow(), 0), 0));
}

void ConversationListView::leaveFocus(Qt::FocusReason reason)
{
    // The current row calls itself focused to assistive technology, so there is none without the focus. A
    // menu and another window give the focus back to the row that had it.
    const QWidget *focus = QApplication::focusWidget();
    if (focus != m_list && focus != m_delete && reason != Qt::PopupFocusReason &&
        reason != Qt::ActiveWindowFocusReason)
        m_list->selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
}

bool ConversationListView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (takeKey(*key))
            return true;
        // The toolkit would look for a title; a letter is the beginning of a message.
        if (!key->text().isEmpty() && key->text().at(0).isPrint()) {
            event->ignore();
            return true;
        }
    }
    if (watched == m_list && event->type() == QEvent::FocusIn)
        takeFocus();
    if ((watched == m_list || watched == m_delete) && event->type() == QEvent::FocusOut)
        leaveFocus(static_cast<QFocusEvent *>(event)->reason());
    // A row is higher where the list is narrow.
    if (watched == m_list->viewport() && event->type() == QEvent::Resize)
        Q_EMIT m_list->itemDelegate()->sizeHintChanged({});
    if (watched == m_list->viewport() && (event->type() == QEvent::Leave || event->type() == QEvent::Resize))
        moveButtonToPointer(m_list->currentIndex());
    return QWidget::eventFilter(watched, event);
}

void ConversationListView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ThemeColors::fromPalette(palette()).border);
    painter.drawLine(width() - 1, 0, width() - 1, height());
}

} // namespace morvane

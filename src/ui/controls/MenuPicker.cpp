#include "ui/controls/MenuPicker.h"

#include "ui/controls/MenuPickerAccessible.h"
#include "ui/controls/PickerDelegate.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int mostVisibleRows = 14;
constexpr int leastCharacters = 12;
constexpr int searchMargin = 8;

bool isPrintable(const QKeyEvent &event)
{
    return !event.text().isEmpty() && event.text().front().isPrint() &&
           !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

QAccessibleInterface *createInterface(const QString &, QObject *object)
{
    auto *picker = qobject_cast<MenuPicker *>(object);
    return picker ? new MenuPickerAccessible(picker) : nullptr;
}

} // namespace

MenuPicker::MenuPicker(const QString &accessibleName, QWidget *parent)
    : QComboBox(parent), m_choices(new PickerChoices(this)), m_searchLine(new QLabel)
{
    QAccessible::installFactory(&createInterface);
    setAccessibleName(accessibleName);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(leastCharacters);
    setMaxVisibleItems(mostVisibleRows);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);

    auto *list = new QListView;
    list->setUniformItemSizes(true);
    list->setTextElideMode(Qt::ElideMiddle);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setView(list);
    setModel(m_choices);
    setItemDelegate(new PickerDelegate(*this));
    list->installEventFilter(this);

    m_searchLine->setTextFormat(Qt::PlainText);
    m_searchLine->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_searchLine->setContentsMargins(searchMargin, searchMargin / 2, searchMargin, searchMargin / 2);
    if (auto *box = qobject_cast<QBoxLayout *>(list->parentWidget()->layout()))
        box->insertWidget(0, m_searchLine);
    connect(this, &QComboBox::activated, this, [this](int row) {
        if (row >= 0 && row < m_choices->rowCount())
            Q_EMIT chosen(m_choices->choices().at(row).tag);
    });
}

void MenuPicker::setChoices(const QList<PickerChoice> &choices)
{
    if (choices == m_choices->choices())
        return;
    const QSignalBlocker blocker(this);
    m_choices->setChoices(choices);
    setCurrentIndex(-1);
    if (view()->isVisible())
        QComboBox::showPopup();
    applySearch();
}

void MenuPicker::select(const QString &tag)
{
    const QSignalBlocker blocker(this);
    setCurrentIndex(m_choices->rowOf(tag));
    if (view()->isVisible() && m_search.isEmpty())
        view()->setCurrentIndex(m_choices->index(currentIndex()));
}

void MenuPicker::showPopup()
{
    setSearch({});
    QComboBox::showPopup();
}

void MenuPicker::hidePopup()
{
    QComboBox::hidePopup();
    setSearch({});
}

void MenuPicker::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_Space:
        showPopup();
        return;
    default:
        break;
    }
    if (isPrintable(*event)) {
        showPopup();
        searchKey(*event);
        return;
    }
    QComboBox::keyPressEvent(event);
}

void MenuPicker::wheelEvent(QWheelEvent *event)
{
    // After a choice the picker keeps the focus; scrolling the column must not make another one.
    event->ignore();
}

void MenuPicker::changeEvent(QEvent *event)
{
    QComboBox::changeEvent(event);
    // The list is a window of its own and takes no part in the picker's font.
    if (event->type() == QEvent::FontChange)
        view()->setFont(font());
}

bool MenuPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != view())
        return QComboBox::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress && searchKey(*static_cast<QKeyEvent *>(event)))
        return true;
    // The list closes on this event already, before the key itself comes.
    if (event->type() == QEvent::ShortcutOverride && !m_search.isEmpty() &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QComboBox::eventFilter(watched, event);
}

bool MenuPicker::searchKey(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Escape && !m_search.isEmpty()) {
        setSearch({});
        return true;
    }
    if (event.key() == Qt::Key_Backspace) {
        setSearch(m_search.chopped(std::min<qsizetype>(1, m_search.size())));
        return true;
    }
    if (!isPrintable(event))
        return false;
    setSearch(m_search + event.text());
    return true;
}

void MenuPicker::setSearch(const QString &search)
{
    m_search = search;
    m_searchLine->setText(search.isEmpty() ? u"Type to search"_s : u"Search: "_s + search);
    // The line is not in the accessible tree, the list is.
    view()->setAccessibleName(m_searchLine->text());
    m_searchLine->setVisible(!search.isEmpty() || m_choices->rowCount() > mostVisibleRows);
    applySearch();
}

void MenuPicker::applySearch()
{
    auto *list = static_cast<QListView *>(view());
    int first = -1;
    for (int row = 0; row < m_choices->rowCount(); ++row) {
        const bool fits = m_choices->fits(row, m_search);
        if (list->isRowHidden(row) == fits)
            list->setRowHidden(row, !fits);
        if (fits && first < 0)
            first = row;
    }
    if (m_search.isEmpty() || first < 0)
        return;
    list->setCurrentIndex(m_choices->index(first));
    list->scrollToTop();
}

} // namespace morvane

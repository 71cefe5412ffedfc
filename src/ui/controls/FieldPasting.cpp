#include "ui/controls/FieldPasting.h"

#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "platform/Announcer.h"
#include "ui/controls/LineFieldMenu.h"
#include "ui/controls/LinePastePlace.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolTip>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QClipboard &clipboard()
{
    return *QGuiApplication::clipboard();
}

bool isEditable(const QLineEdit *line)
{
    return line != nullptr && line->isEnabled() && !line->isReadOnly();
}

QString textFor(PasteFailure failure)
{
    switch (failure) {
    case PasteFailure::silent:
        return u"Nothing was pasted. The program that you copied from does not answer."_s;
    case PasteFailure::tooSlow:
        return u"Nothing was pasted. The program that you copied from is too slow."_s;
    case PasteFailure::tooLarge:
        return u"Nothing was pasted. What you copied is too large."_s;
    }
    std::unreachable();
}

/// The line that `widget` is or, as a field for a number, has, and takes keys and opens a menu for.
QLineEdit *lineOf(QWidget *widget)
{
    if (qobject_cast<QAbstractSpinBox *>(widget))
        return widget->findChild<QLineEdit *>();
    return qobject_cast<QLineEdit *>(widget);
}

bool isSelectionKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Insert && key.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier);
}

} // namespace

FieldPasting::FieldPasting(Scheduler &scheduler, PasteSource &source, Announcer &announcer)
    : m_scheduler(scheduler), m_source(source), m_announcer(announcer)
{
    connect(&clipboard(), &QClipboard::changed, this, [this](QClipboard::Mode mode) {
        if (auto *const current = std::get_if<Asking>(&m_phase); current && current->mode == mode)
            current->isOutdated = true;
    });
    QCoreApplication::instance()->installEventFilter(this);
}

bool FieldPasting::isForeign(QClipboard::Mode mode) const
{
    if (!m_source.isReachable())
        return false;
    return mode == QClipboard::Selection ? clipboard().supportsSelection() && !clipboard().ownsSelection()
                                         : !clipboard().ownsClipboard();
}

std::optional<QClipboard::Mode> FieldPasting::foreign(const QMimeData *data) const
{
    for (const auto mode : {QClipboard::Clipboard, QClipboard::Selection})
        if (isForeign(mode) && clipboard().mimeData(mode) == data)
            return mode;
    return std::nullopt;
}

bool FieldPasting::isAwaited(const QWidget &field) const
{
    const Asking *const current = asking();
    return current && current->place->field() == &field;
}

bool FieldPasting::isFor(const std::shared_ptr<PastePlace> &place) const
{
    const Asking *const current = asking();
    return current && current->place == place;
}

void FieldPasting::begin(std::shared_ptr<PastePlace> place, QClipboard::Mode mode)
{
    const Asking *const current = asking();
    if (current && current->place->field() == place->field() && current->mode == mode && !current->isOutdated)
        return;
    await({place, mode});
    m_scheduler.spawn(ask(this, std::move(place), mode));
}

void FieldPasting::begin(std::shared_ptr<PastePlace> place, const QStringList &pieces)
{
    await({place, std::nullopt});
    m_scheduler.spawn(join(this, std::move(place), pieces));
}

void FieldPasting::await(Asking wish)
{
    const Asking *const current = asking();
    QWidget *const before = current ? current->place->field() : nullptr;
    m_phase = Idle();
    if (before)
        Q_EMIT ended(before, End::dropped);
    m_phase = std::move(wish);
}

void FieldPasting::paste(QLineEdit &line, int at)
{
    auto place = std::make_shared<LinePastePlace>(line, at);
    if (isForeign(QClipboard::Clipboard))
        return begin(std::move(place), QClipboard::Clipboard);
    PasteContent content;
    content.text = clipboard().text();
    place->insert(content);
}

void FieldPasting::drop(const QWidget &field)
{
    if (!isAwaited(field))
        return;
    QWidget *const dropped = asking()->place->field();
    m_phase = Idle();
    Q_EMIT ended(dropped, End::dropped);
}

void FieldPasting::announce(const QString &text)
{
    m_announcer.announce(text);
}

Task<void> FieldPasting::join(QPointer<FieldPasting> self, std::shared_ptr<PastePlace> place,
                              QStringList pieces)
{
    PasteContent content;
    content.text = co_await runOffMain([pieces = std::move(pieces)] {
        return pieces.size() == 1 ? pieces.constFirst() : pieces.join(QString()); // one alone is shared
    });
    co_await place->prepare(content);
    if (self && self->isFor(place))
        self->take(place, content);
}

Task<void> FieldPasting::ask(QPointer<FieldPasting> self, std::shared_ptr<PastePlace> place,
                             QClipboard::Mode mode)
{
    const auto selection =
        mode == QClipboard::Selection ? PasteSource::Selection::primary : PasteSource::Selection::clipboard;
    const Answer answer = co_await self->m_source.read(selection);
    if (answer && self && self->isFor(place))
        co_await place->prepare(*answer);
    if (self && self->isFor(place))
        self->take(place, answer);
}

void FieldPasting::take(const std::shared_ptr<PastePlace> &place, const Answer &answer)
{
    m_phase = Idle();
    QPointer<QWidget> field = place->field();
    if (!field)
        return;
    if (!answer) {
        fail(*field, answer.error());
        return;
    }
    place->insert(*answer);
    if (field)
        Q_EMIT ended(field, answer->isEmpty() ? End::nothing : End::inserted);
}

void FieldPasting::fail(QWidget &field, PasteFailure failure)
{
    const QString why = textFor(failure);
    QToolTip::showText(field.mapToGlobal(field.rect().bottomLeft()), why, &field);
    announce(why);
    Q_EMIT ended(&field, End::failed);
}

bool FieldPasting::pasteInto(QLineEdit &line, QClipboard::Mode mode)
{
    if (!isForeign(mode))
        return false;
    begin(std::make_shared<LinePastePlace>(line), mode);
    return true;
}

bool FieldPasting::takeKey(QObject &watched, QKeyEvent &key)
{
    auto *const widget = qobject_cast<QWidget *>(&watched);
    if (!widget)
        return false;
    auto *const line = lineOf(widget);
    const QWidget &field = line ? *line : *widget;
    if (key.key() == Qt::Key_Escape && isAwaited(field)) {
        key.accept(); // also as a shortcut of the window
        if (key.type() == QEvent::KeyPress)
            drop(field);
        return true;
    }
    if (key.type() != QEvent::KeyPress || !isEditable(line))
        return false;
    if (isSelectionKey(key))
        return pasteInto(*line, QClipboard::Selection);
    return key.matches(QKeySequence::Paste) && pasteInto(*line, QClipboard::Clipboard);
}

bool FieldPasting::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        return takeKey(*watched, *static_cast<QKeyEvent *>(event));
    case QEvent::MouseButtonRelease: {
        auto *const line = qobject_cast<QLineEdit *>(watched);
        if (static_cast<QMouseEvent *>(event)->button() != Qt::MiddleButton || !isEditable(line))
            return false;
        line->deselect();
        return pasteInto(*line, QClipboard::Selection);
    }
    case QEvent::ContextMenu: {
        // The toolkit's own menu asks what could be pasted before it opens.
        auto *const widget = qobject_cast<QWidget *>(watched);
        auto *const line = lineOf(widget);
        if (!isEditable(line) || widget->contextMenuPolicy() != Qt::DefaultContextMenu ||
            !isForeign(QClipboard::Clipboard))
            return false;
        LineFieldMenu::open(*line, *static_cast<QContextMenuEvent *>(event));
        return true;
    }
    default:
        return false;
    }
}

} // namespace morvane

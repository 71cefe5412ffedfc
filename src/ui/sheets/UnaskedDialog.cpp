#include "ui/sheets/UnaskedDialog.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>

namespace morvane {

namespace {

bool isModifier(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Shift || key.key() == Qt::Key_Control || key.key() == Qt::Key_Alt ||
           key.key() == Qt::Key_AltGr || key.key() == Qt::Key_Meta || key.key() == Qt::Key_CapsLock;
}

/// Sees all that is pressed in a dialog, wherever in it.
class AnswerFilter : public QObject {
public:
    AnswerFilter(QDialog &dialog, SteadyNow now) : QObject(&dialog), m_dialog(dialog), m_guard(std::move(now))
    {
        m_guard.restart();
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
        if (!isKey && event->type() != QEvent::MouseButtonPress &&
            event->type() != QEvent::MouseButtonDblClick)
            return false;
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (!widget || widget->window() != &m_dialog)
            return false;
        if (isKey && isModifier(*static_cast<QKeyEvent *>(event)))
            return false;
        if (m_guard.takesInput())
            return false;
        event->accept(); // or the key would be a shortcut, such as that of a button
        return true;
    }

private:
    const QDialog &m_dialog;
    AnswerGuard m_guard;
};

/// Whether the widget is in `window`, or in a dialog of it, or of that.
bool belongsTo(const QWidget *widget, const QWidget &window)
{
    while (widget && widget != &window)
        widget = widget->parentWidget();
    return widget != nullptr;
}

/// Leads the user on to a dialog, or to the one that this asks in its turn, from the window that it holds.
/// Modality alone does not: a press beside the dialog leaves the keyboard with the window, where it does
/// nothing.
class LeadingFilter : public QObject {
public:
    explicit LeadingFilter(QDialog &dialog) : QObject(&dialog), m_dialog(dialog)
    {
        dialog.parentWidget()->window()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::WindowActivate && m_dialog.isVisible())
            QMetaObject::invokeMethod(this, &LeadingFilter::lead, Qt::QueuedConnection);
        return false;
    }

private:
    void lead()
    {
        QDialog *first = firstToAnswer();
        QWidget *modal = QApplication::activeModalWidget();
        if (first)
            (belongsTo(modal, *first) ? modal : first)->activateWindow();
    }

    /// Of several the newest is seen, and holds those below it. One that is not modal is held by those that
    /// are.
    QDialog *firstToAnswer() const
    {
        QDialog *first = nullptr;
        const auto dialogs =
            m_dialog.parentWidget()->window()->findChildren<QDialog *>(Qt::FindDirectChildrenOnly);
        for (QDialog *dialog : dialogs)
            if (dialog->isVisible() && (!first || dialog->isModal() || !first->isModal()))
                first = dialog;
        return first;
    }

    QDialog &m_dialog;
};

/// Holds the window of a dialog as a modal one does, but that it can be closed, as the program's end does.
/// Real modality cannot be had here: the toolkit asks for the keyboard itself whenever it shows a modal
/// window.
class HoldingFilter : public QObject {
public:
    explicit HoldingFilter(QDialog &dialog) : QObject(&dialog), m_dialog(dialog)
    {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (!widget || widget->window() != m_dialog.parentWidget()->window() || !m_dialog.isVisible())
            return false;
        switch (event->type()) {
        case QEvent::DragEnter:
            event->ignore();
            return true;
        case QEvent::ShortcutOverride:
            event->accept(); // or it would be a shortcut
            return true;
        case QEvent::KeyPress:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
            return true;
        default:
            return false;
        }
    }

private:
    QDialog &m_dialog;
};

} // namespace

bool openUnasked(QDialog &dialog)
{
    new LeadingFilter(dialog);
    const bool staysElsewhere = !belongsTo(QApplication::activeWindow(), *dialog.parentWidget()->window());
    if (!staysElsewhere) {
        dialog.open();
        return false;
    }
    dialog.setWindowModality(Qt::NonModal);
    dialog.setAttribute(Qt::WA_ShowWithoutActivating);
    dialog.setResult(QDialog::Rejected);
    new HoldingFilter(dialog);
    dialog.show();
    return true;
}

void guardAnswers(QDialog &dialog, SteadyNow now)
{
    new AnswerFilter(dialog, std::move(now));
}

} // namespace morvane

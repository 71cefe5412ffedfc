#include "browser/window/URLField.h"

#include <QDropEvent>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

namespace morvane {

URLField::URLField(QWidget *parent) : SelectingTextField(parent)
{
    setAccessibleName(u"Address bar"_s);
    setAccessibleDescription(u"Enter a web address or search term"_s);
    setPlaceholderText(u"Search Google or enter address"_s);
    // An address is read from its beginning, where the site is, whatever script it goes on in.
    setLayoutDirection(Qt::LeftToRight);
    setMinimumWidth(fontMetrics().averageCharWidth() * 12);
    // What assistive technology writes is the user's, too, which the toolkit does not think.
    connect(this, &QLineEdit::textChanged, this, [this] { setModified(true); });
}

void URLField::showAddress(const QString &address)
{
    m_address = address;
    if (!hasFocus() || !isModified())
        showPageAddress();
}

void URLField::showPageAddress()
{
    if (text() != m_address)
        setText(m_address);
    setModified(false);
    if (hasFocus())
        selectAll();
    else
        setCursorPosition(0);
}

bool URLField::event(QEvent *event)
{
    // Or Escape would end what the agent does.
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return SelectingTextField::event(event);
}

void URLField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // The field takes no more than so many characters of an address.
        const QString entry = isModified() ? text() : m_address;
        setModified(false); // what is written is on its way; the page's address comes next
        Q_EMIT entered(entry);
    } else if (event->key() == Qt::Key_Escape) {
        const bool isWritten = isModified();
        showPageAddress();
        if (!isWritten)
            Q_EMIT left();
    } else {
        SelectingTextField::keyPressEvent(event);
    }
}

void URLField::focusOutEvent(QFocusEvent *event)
{
    SelectingTextField::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        showPageAddress();
}

void URLField::dropEvent(QDropEvent *event)
{
    // What comes from elsewhere takes the address's place, not one in its middle, and stays until it is
    // opened.
    if (event->source() != this) {
        setFocus(Qt::OtherFocusReason);
        clear();
    }
    SelectingTextField::dropEvent(event);
}

} // namespace morvane

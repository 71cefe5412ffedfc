#include "ui/conversation/RowActions.h"

#include "platform/Announcer.h"

#include <QClipboard>
#include <QGuiApplication>

namespace morvane {

QStringList RowActions::names(const ConversationItem &item) const
{
    if (item.kind == ConversationItem::Kind::activityHeader) {
        return {};
    }
    QStringList names{QLatin1String(copyName)};
    if (m_content.isReadable(item)) {
        names += QLatin1String(readAgainName);
    }
    return names;
}

QString RowActions::hint(const ConversationItem &item) const
{
    switch (names(item).size()) {
    case 0:
        return {};
    case 1:
        return QStringLiteral("Accessibility action: copy.");
    default:
        return QStringLiteral("Accessibility actions: copy, read again.");
    }
}

void RowActions::perform(const QString &name, const ConversationItem &item) const
{
    if (!names(item).contains(name)) {
        return;
    }
    if (name == QLatin1String(copyName)) {
        copy(item);
    } else {
        readAgain(item);
    }
}

void RowActions::copy(const ConversationItem &item) const
{
    QGuiApplication::clipboard()->setText(m_content.copyText(item));
}

void RowActions::readAgain(const ConversationItem &item) const
{
    const QString text = m_content.copyText(item);
    m_announcer.announce(text.isEmpty() ? QStringLiteral("There is no text to read.") : text);
}

} // namespace morvane

#include "ui/conversation/RowActions.h"

#include "platform/Announcer.h"

#include <QClipboard>
#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace morvane {

QStringList RowActions::names(const ConversationItem &item) const
{
    if (item.kind == ConversationItem::Kind::activityHeader)
        return {};
    QStringList names{QLatin1String(copyName)};
    if (m_content.isReadable(item))
        names += QLatin1String(readAgainName);
    return names;
}

QString RowActions::hint(const ConversationItem &item) const
{
    switch (names(item).size()) {
    case 0:
        return {};
    case 1:
        return u"Accessibility action: copy."_s;
    default:
        return u"Accessibility actions: copy, read again."_s;
    }
}

void RowActions::perform(const QString &name, const ConversationItem &item) const
{
    if (!names(item).contains(name))
        return;
    if (name == QLatin1String(copyName))
        copy(item);
    else
        readAgain(item);
}

void RowActions::copy(const ConversationItem &item) const
{
    QGuiApplication::clipboard()->setText(m_content.copyText(item));
}

void RowActions::readAgain(const ConversationItem &item) const
{
    const QString text = m_content.copyText(item);
    m_announcer.announce(text.isEmpty() ? u"There is no text to read."_s : text);
}

} // namespace morvane

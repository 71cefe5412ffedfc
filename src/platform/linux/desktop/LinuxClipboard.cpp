#include "platform/linux/desktop/LinuxClipboard.h"

#include "platform/linux/desktop/XSelectionReader.h"

#include <QClipboard>
#include <QGuiApplication>

namespace morvane {

void LinuxClipboard::setText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

std::optional<QString> LinuxClipboard::text(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return std::nullopt;
    XSelectionReader reader(*display, "CLIPBOARD", m_patience, stop);
    for (const char *target : {"UTF8_STRING", "text/plain;charset=utf-8"}) {
        if (const auto bytes = reader.read(target))
            return QString::fromUtf8(*bytes);
        // Under its other names a text is no smaller, and its owner may still be waiting to send the rest.
        if (reader.ownerIsSilent() || reader.ownerIsSlow() || reader.isTooLarge())
            return std::nullopt;
    }
    if (const auto bytes = reader.read("STRING"))
        return QString::fromLatin1(*bytes);
    return std::nullopt;
}

} // namespace morvane

#include "platform/linux/desktop/LinuxClipboard.h"

#include "platform/linux/desktop/XSelectionReader.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A text that counts how often it is asked for.
class CountedText final : public QMimeData {
public:
    CountedText(QString text, std::shared_ptr<std::atomic<int>> readings)
        : m_text(std::move(text)), m_readings(std::move(readings))
    {
    }

    QStringList formats() const override { return {u"text/plain"_s}; }

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType) const override
    {
        if (!hasFormat(mimeType))
            return {};
        ++*m_readings;
        return m_text;
    }

private:
    const QString m_text;
    const std::shared_ptr<std::atomic<int>> m_readings;
};

} // namespace

void LinuxClipboard::setText(const QString &text)
{
    // The application deletes it.
    QGuiApplication::clipboard()->setMimeData(new CountedText(text, m_readings));
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

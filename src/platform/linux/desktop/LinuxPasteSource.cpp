#include "platform/linux/desktop/LinuxPasteSource.h"

#include "async/OffMain.h"
#include "platform/DisplaySilent.h"
#include "platform/Log.h"
#include "platform/linux/desktop/XSelectionReader.h"

#include <QGuiApplication>
#include <QList>
#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Answer = std::expected<PasteContent, PasteFailure>;

constexpr std::array unicodeForms{"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"};
constexpr auto latinForm = "STRING";
constexpr std::array pictureForms{"png", "jpeg", "webp", "gif", "tiff", "bmp"};

/// Bytes of a list of files. Thousands fit in, and reading it takes milliseconds.
constexpr qsizetype mostAddresses = 1'000'000;

/// The questions to one owner, of which the first that fails ends all.
class Questions {
public:
    Questions(const XDisplay &display, std::string_view selection, std::chrono::milliseconds patience)
        : m_display(display), m_reader(display, selection, patience)
    {
    }

    Answer ask()
    {
        learnForms();
        PasteContent content;
        content.uriList = read("text/uri-list");
        if (content.uriList.size() > mostAddresses)
            content.uriList.clear(); // then it is text
        content.text = readText();
        if (!hasText())
            readPicture(content);
        if (m_failure)
            return std::unexpected(*m_failure);
        return content;
    }

private:
    void learnForms()
    {
        const QByteArray atoms = bytes("TARGETS");
        m_forms.resize(atoms.size() / qsizetype(sizeof(xcb_atom_t)));
        if (!m_forms.isEmpty())
            std::memcpy(m_forms.data(), atoms.constData(),
                        static_cast<size_t>(m_forms.size()) * sizeof(xcb_atom_t));
    }

    bool has(std::string_view form) const { return m_forms.contains(m_display.atom(form)); }
    bool hasText() const
    {
        return has(latinForm) ||
               std::any_of(unicodeForms.begin(), unicodeForms.end(), [this](auto form) { return has(form); });
    }

    QByteArray read(std::string_view form) { return has(form) ? bytes(form) : QByteArray(); }

    QByteArray bytes(std::string_view form)
    {
        if (m_failure)
            return {};
        const auto answer = m_reader.read(form);
        if (m_reader.ownerIsSilent())
            m_failure = PasteFailure::silent;
        else if (m_reader.ownerIsSlow())
            m_failure = PasteFailure::tooSlow;
        else if (m_reader.isTooLarge())
            m_failure = PasteFailure::tooLarge;
        return answer.value_or(QByteArray());
    }

    QString readText()
    {
        QString text;
        const auto *const form =
            std::find_if(unicodeForms.begin(), unicodeForms.end(), [this](auto name) { return has(name); });
        if (form != unicodeForms.end())
            text = QString::fromUtf8(bytes(*form));
        else
            text = QString::fromLatin1(read(latinForm));
        if (text.contains(u'\r'))
            text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
        return text;
    }

    void readPicture(PasteContent &content)
    {
        for (const char *const format : pictureForms) {
            content.picture = read(std::string("image/") + format);
            if (content.picture.isEmpty())
                continue;
            content.pictureFormat = QString::fromLatin1(format);
            return;
        }
    }

    const XDisplay &m_display;
    XSelectionReader m_reader;
    QList<xcb_atom_t> m_forms;
    std::optional<PasteFailure> m_failure;
};

} // namespace

bool LinuxPasteSource::isReachable() const
{
    return QGuiApplication::platformName() == "xcb"_L1;
}

Task<Answer> LinuxPasteSource::read(Selection selection)
{
    return runOffMain([patience = m_patience, selection]() -> Answer {
        try {
            if (const auto display = XDisplay::open())
                return Questions(*display, selection == Selection::clipboard ? "CLIPBOARD" : "PRIMARY",
                                 patience)
                    .ask();
        } catch (const DisplaySilent &) {
            qCWarning(platformLog) << "nothing is pasted: the display does not answer";
        }
        return std::unexpected(PasteFailure::silent);
    });
}

} // namespace morvane

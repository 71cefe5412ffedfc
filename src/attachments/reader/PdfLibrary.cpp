#include "attachments/reader/PdfLibrary.h"

#include "base/InstalledFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <array>
#include <poppler-global.h>
#include <poppler-qt6.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr auto systemData = "/usr/share/poppler"_L1;

/// Those that every reader of documents is expected to have, those that offices write with, and one that
/// nobody has.
constexpr std::array families{"Helvetica",         "Times",          "Courier", "ArialMT",
                              "TimesNewRomanPSMT", "CourierNewPSMT", "Calibri", "Cambria",
                              "Georgia",           "Verdana",        "Unknown"};
constexpr std::array styles{"", "-Bold", "-Italic", "-BoldItalic"};

/// The least that is a document with these fonts. The library reads its data with any, and keeps them as long
/// as one is open.
QByteArray smallDocument()
{
    QByteArray fonts;
    for (const char *family : families)
        for (const char *style : styles)
            fonts += QByteArray("/") + family + style + "<</Type/Font/Subtype/TrueType/BaseFont/" + family +
                     style + ">>";
    return "%PDF-1.4\n"
           "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
           "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
           "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]/Resources<</Font<<" +
           fonts +
           ">>>>>>endobj\n"
           "trailer<</Root 1 0 R>>\n";
}

} // namespace

PdfLibrary::PdfLibrary() : m_data(InstalledFiles::aroundHelper().libraryData(u"poppler"_s))
{
    if (QFileInfo::exists(m_data))
        poppler::set_data_dir(QFile::encodeName(m_data).toStdString());
    else
        m_data = systemData;
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
    m_document = Poppler::Document::loadFromData(smallDocument());
}

PdfLibrary::~PdfLibrary() = default;

void PdfLibrary::addData(DataFiles &files) const
{
    files.addFolder(QFile::encodeName(m_data));
    // The search also reads what the system knows of its fonts, which is kept for searches to come.
    QStringList substitutes;
    for (const Poppler::FontInfo &font : m_document->fonts())
        substitutes.append(font.file());
    substitutes.removeDuplicates();
    for (const QString &path : std::as_const(substitutes))
        files.add(QFile::encodeName(path));
}

} // namespace morvane

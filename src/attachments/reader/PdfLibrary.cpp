#include "attachments/reader/PdfLibrary.h"

#include <poppler-qt6.h>

namespace morvane {
namespace {

/// The least that is a document. The library reads its data with any, and keeps them as long as one is open.
constexpr auto emptyDocument = "%PDF-1.4\n"
                               "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
                               "2 0 obj<</Type/Pages/Kids[]/Count 0>>endobj\n"
                               "trailer<</Root 1 0 R>>\n";

} // namespace

PdfLibrary::PdfLibrary()
{
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
    m_document = Poppler::Document::loadFromData(emptyDocument);
}

PdfLibrary::~PdfLibrary() = default;

void PdfLibrary::addData(DataFiles &files)
{
    files.addFolder("/usr/share/poppler");
}

} // namespace morvane

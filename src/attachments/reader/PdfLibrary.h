#pragma once

#include "attachments/reader/DataFiles.h"

#include <QString>
#include <memory>

namespace Poppler {
class Document;
}

namespace morvane {

/// What the library for PDFs reads of its data when the first document is opened and forgets with the last.
/// While an object lives, documents can be opened in a process that reaches no paths, and pages rendered once
/// `addData` was called.
class PdfLibrary {
public:
    PdfLibrary();
    ~PdfLibrary();

    /// What documents name and do not bring: encodings of East Asian texts, and the system's substitutes for
    /// fonts. Takes some 10 ms.
    void addData(DataFiles &files) const;

private:
    QString m_data; ///< The folder of its data.
    std::unique_ptr<Poppler::Document> m_document;
};

} // namespace morvane

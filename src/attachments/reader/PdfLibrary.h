#pragma once

#include "attachments/reader/DataFiles.h"

#include <memory>

namespace Poppler {
class Document;
}

namespace morvane {

/// What the library for PDFs reads of its data when the first document is opened and forgets with the last.
/// While an object lives, documents can be opened in a process that reaches no paths.
class PdfLibrary {
public:
    PdfLibrary();
    ~PdfLibrary();

    /// The data that documents without tables of their own name: encodings of East Asian texts.
    static void addData(DataFiles &files);

private:
    std::unique_ptr<Poppler::Document> m_document;
};

} // namespace morvane

#pragma once

#include "attachments/reader/DataFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace morvane {

/// What the text recognition knows of languages: English, and those of the user's locale, as far as the
/// system has their data.
struct RecognitionData {
    std::string folder;
    std::string languages; ///< As the library takes them: "eng" or "deu+eng".

    /// Nothing without English. To be called where paths can be opened, or those of `addTo` at least.
    static std::optional<RecognitionData> find();
    /// What lies in this folder, likewise.
    static std::optional<RecognitionData> in(const QByteArray &folder);

    /// Where the system has none, `find` then finds what a bundle brings along.
    static void addTo(DataFiles &files);

    /// The folder of what a bundle brings along. There is none where the system has it.
    static QByteArray broughtAlong();

    /// Reads one file whole; the library calls it. Any thread, several at once.
    static bool read(const char *path, std::vector<char> *content);
};

} // namespace morvane
